#include "cli/ArchiveCommands.h"

#include <filesystem>

#include <string>
#include <unordered_set>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "app/files/FileTransfer.h"
#include "cli/ProgressLine.h"
#include "app/session/StoreSession.h"
#include "cli/Terminal.h"
#include "core/archive/LegacyPrototypeImport.h"
#include "core/archive/TimeBankArchive.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont::ArchiveCommands {
namespace {

struct ImportOptions {
  std::string file;
  bool dryRun = false;
};

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void exportArchive(const std::string& file, bool force) {
  std::error_code error;
  if (!force && !FileTransfer::isStandardStream(file) && std::filesystem::exists(file, error)) {
    throw CommandFailure(file + " exists already; run `quillmont export " + file + " --force` to replace it");
  }
  StoreSession session;
  ProgressLine progress;
  progress.show("Reading the store...");
  ModelContext& context = session.context();
  const auto entries = context.fetch<WorkEntry>();
  const auto adjustments = context.fetch<BalanceAdjustment>();
  const auto schedules = context.fetch<WorkSchedule>();
  const auto settings = context.fetch<TimeBankSettings>();
  progress.show("Encoding " + counted(entries.size() + adjustments.size() + schedules.size() + settings.size(),
                                      "record...", "records..."));
  std::string document = TimeBankArchive(session.now(), entries, adjustments, schedules, settings).encodedJSON();
  document += '\n';
  progress.show("Writing " + ProgressLine::size(document.size()) + "...");
  FileTransfer::write(file, document);
  progress.clear();
  Terminal::message("Exported " + counted(entries.size(), "work entry", "work entries") + ", " +
                    counted(adjustments.size(), "booking", "bookings") + ", " +
                    counted(schedules.size(), "schedule", "schedules") + " and " +
                    counted(settings.size(), "settings record", "settings records") +
                    (FileTransfer::isStandardStream(file) ? "." : " to " + file + "."));
}

// Merges into the store, or with `dryRun` only counts what a merge would do.
TimeBankArchiveMergeResult merge(const TimeBankArchive& archive, StoreSession& session, bool dryRun) {
  return dryRun ? archive.mergePreview(session.context(), session.now())
                : archive.merge(session.context(), session.now());
}

void printResult(const TimeBankArchiveMergeResult& result, bool dryRun) {
  if (dryRun) {
    Terminal::print("Dry run, nothing saved: would insert " + std::to_string(result.inserted) + ", update " +
                    std::to_string(result.updated) + " and leave " + std::to_string(result.unchanged) +
                    " unchanged (" + counted(static_cast<std::size_t>(result.total()), "record", "records") + ").");
  } else {
    Terminal::print("Inserted " + std::to_string(result.inserted) + ", updated " + std::to_string(result.updated) +
                    ", unchanged " + std::to_string(result.unchanged) + " (" +
                    counted(static_cast<std::size_t>(result.total()), "record", "records") + ").");
  }
}

// Decoding failures name the file; the archive's own refusals speak for themselves.
template <class Decode>
auto decoded(const std::string& file, Decode decode) {
  try {
    return decode();
  } catch (const JsonDecodingError& error) {
    throw CommandFailure("cannot import " + file + ": it is not a readable archive (" + error.what() + ")");
  }
}

void importArchive(const ImportOptions& options) {
  ProgressLine progress;
  // The text is let go as it is decoded, before the store is read.
  const TimeBankArchive archive = [&] {
    progress.show("Reading " + options.file + "...");
    std::string bytes = FileTransfer::read(options.file, FileTransfer::maximumArchiveBytes);
    progress.show("Decoding " + ProgressLine::size(bytes.size()) + "...");
    return decoded(options.file, [&] { return TimeBankArchive::decodeJSON(std::move(bytes)); });
  }();
  progress.show("Merging...");
  StoreSession session;
  const auto result = merge(archive, session, options.dryRun);
  progress.clear();
  printResult(result, options.dryRun);
}

void importLegacy(const ImportOptions& options) {
  ProgressLine progress;
  progress.show("Reading " + options.file + "...");
  const std::string bytes = FileTransfer::read(options.file, FileTransfer::maximumArchiveBytes);
  progress.show("Decoding " + ProgressLine::size(bytes.size()) + "...");
  const auto entries = decoded(options.file, [&] { return LegacyPrototypeImport::decode(bytes); });

  // Each entry becomes a manual booking with the entry's identifier, made
  // and changed at the entry's date; the first of repeated identifiers wins.
  TimeBankArchive archive;
  std::unordered_set<UUID> seen;
  for (const auto& entry : entries) {
    if (!seen.insert(entry.id).second) continue;
    archive.balanceAdjustments.push_back(
        {entry.id, entry.date, entry.minutes, entry.note, "manual", entry.date, entry.date});
  }
  progress.show("Merging...");
  StoreSession session;
  archive.exportedAt = session.now();
  archive.validate();
  const auto result = merge(archive, session, options.dryRun);
  progress.clear();
  if (seen.size() != entries.size()) {
    Terminal::warning(counted(entries.size() - seen.size(), "entry repeats", "entries repeat") +
                      " an identifier seen before; the first was kept.");
  }
  printResult(result, options.dryRun);
}

void addImportOptions(CLI::App& command, ImportOptions& options, const char* what) {
  command.add_option("FILE", options.file, std::string(what) + " (\"-\" reads standard input)")->required();
  command.add_flag("--dry-run", options.dryRun, "Show what would change and save nothing");
}

}  // namespace

void install(CommandSet& commands) {
  CLI::App& root = commands.root();
  auto file = std::make_shared<std::string>();
  auto force = std::make_shared<bool>(false);
  CLI::App* exportCommand = commands.add(root, "export", "Write every record as a JSON archive",
                                         [file, force] { exportArchive(*file, *force); });
  exportCommand->add_option("FILE", *file, "Where to write it (\"-\" or none: standard output)");
  exportCommand->add_flag("--force", *force, "Replace FILE when it exists");

  auto importOptions = std::make_shared<ImportOptions>();
  CLI::App* importCommand = commands.add(root, "import", "Merge a JSON archive into the store (last writer wins)",
                                         [importOptions] { importArchive(*importOptions); });
  addImportOptions(*importCommand, *importOptions, "The archive");

  auto legacyOptions = std::make_shared<ImportOptions>();
  CLI::App* legacyCommand =
      commands.add(root, "import-legacy", "Bring in the balance entries of the legacy prototype's file",
                   [legacyOptions] { importLegacy(*legacyOptions); });
  addImportOptions(*legacyCommand, *legacyOptions, "The legacy file");
}

}  // namespace quillmont::ArchiveCommands
