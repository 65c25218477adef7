#include "cli/commands/ArchiveCommands.h"

#include <filesystem>
#include <string>

#include <CLI/CLI.hpp>

#include "app/archive/ArchiveExport.h"
#include "app/archive/ArchiveImport.h"
#include "app/files/FileTransfer.h"
#include "app/session/StoreSession.h"
#include "app/Refusal.h"
#include "cli/input/CommandFiles.h"
#include "cli/output/ProgressLine.h"
#include "cli/output/Terminal.h"

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
  const bool standardOutput = CommandFiles::isStandardStream(file);
  std::error_code error;
  if (!force && !standardOutput && std::filesystem::exists(file, error)) {
    throw Refusal(file + " exists already; run `quillmont export " + file + " --force` to replace it");
  }
  StoreSession session;
  ProgressLine progress;
  ArchiveExport::Exported exported;
  if (standardOutput) {
    exported = ArchiveExport::document(session, progress.report());
    progress.show({Progress::Stage::writing, exported.document.size()});
    CommandFiles::write(file, exported.document);
  } else {
    exported = ArchiveExport::toFile(session, file, progress.report());
  }
  progress.clear();
  Terminal::message("Exported " + counted(exported.workEntries, "work entry", "work entries") + ", " +
                    counted(exported.bookings, "booking", "bookings") + ", " +
                    counted(exported.schedules, "schedule", "schedules") + " and " +
                    counted(exported.settingsRecords, "settings record", "settings records") +
                    (standardOutput ? "." : " to " + file + "."));
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

// The file's text, read with the progress line saying so.
std::string readDocument(const std::string& file, ProgressLine& progress) {
  progress.show({Progress::Stage::reading});
  return CommandFiles::read(file, FileTransfer::maximumArchiveBytes);
}

void importArchive(const ImportOptions& options) {
  ProgressLine progress(options.file);
  const TimeBankArchive archive =
      ArchiveImport::decode(readDocument(options.file, progress), options.file, progress.report());
  progress.show({Progress::Stage::merging});  // opening the store takes a moment too
  StoreSession session;
  const auto result = ArchiveImport::merge(session, archive, options.dryRun, progress.report());
  progress.clear();
  printResult(result, options.dryRun);
}

void importLegacy(const ImportOptions& options) {
  ProgressLine progress(options.file);
  auto legacy = ArchiveImport::decodeLegacy(readDocument(options.file, progress), options.file, progress.report());
  const std::size_t repeated = legacy.repeated;
  progress.show({Progress::Stage::merging});
  StoreSession session;
  const auto result = ArchiveImport::merge(session, std::move(legacy), options.dryRun, progress.report());
  progress.clear();
  if (repeated > 0) {
    Terminal::warning(counted(repeated, "entry repeats", "entries repeat") +
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
