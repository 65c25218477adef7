#include "cli/HousekeepingCommands.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "app/text/Display.h"
#include "cli/JsonOutput.h"
#include "app/session/StoreSession.h"
#include "cli/SyncCommands.h"
#include "cli/Terminal.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/ContainerDirectories.h"
#include "platform/foundation/ProcessEntitlements.h"

namespace quillmont::HousekeepingCommands {
namespace {

void erase(bool confirmed) {
  if (!confirmed) {
    throw CommandFailure("erase deletes every booking, work entry, schedule and setting; "
                         "run `quillmont erase --yes` to do it");
  }
  StoreSession session;
  session.journal("erase");
  DataStoreMaintenance::eraseAll(session.context());
  Terminal::message("Erased every record.");
}

void undo(bool dryRun) {
  StoreSession session;
  const Display display(session.calendar());
  const auto last = session.container()->lastUndoableAction();
  if (!last) throw CommandFailure("Nothing to undo.");
  if (dryRun) {
    Terminal::print("The last change: " + last->name + " (" + display.dateTime(last->at) + ").");
    return;
  }
  const auto undone = session.container()->undoLastAction();
  if (!undone) throw CommandFailure("Nothing to undo.");
  Terminal::message("Undid " + undone->name + " (" + display.dateTime(undone->at) + ").");
}

// What doctor found, a labelled line each, printed as text or as a JSON
// object whose keys are the labels in camel case ("Data home": "dataHome").
struct Diagnosis {
  std::vector<std::pair<std::string, std::string>> rows;

  void row(std::string_view label, const std::string& value) { rows.emplace_back(label, value); }

  static std::string key(std::string_view label) {
    std::string result;
    bool upper = false;
    for (const char c : label) {
      if (c == ' ' || c == '-') {
        upper = true;
      } else {
        result += upper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c)))
                        : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        upper = false;
      }
    }
    return result;
  }

  void print(bool json, bool healthy) const {
    if (!json) {
      for (const auto& [label, value] : rows) {
        Terminal::print(Terminal::styled(label, Terminal::Style::dim) + std::string(20 - label.size(), ' ') + value);
      }
      return;
    }
    JsonOutput::print([&](JsonWriter& writer) {
      writer.beginObject();
      for (const auto& [label, value] : rows) {
        writer.key(key(label));
        writer.string(value);
      }
      writer.key("healthy");
      writer.boolean(healthy);
      writer.endObject();
    });
  }
};

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void doctor(bool json) {
  Diagnosis diagnosis;
  const char* home = std::getenv("QUILLMONT_HOME");
  diagnosis.row("Data home", ContainerDirectories::dataHome().string() +
                       (home != nullptr && *home != '\0' ? " (from QUILLMONT_HOME)" : ""));
  switch (ProcessEntitlements::source()) {
    case ProcessEntitlements::Source::builtIn:
      diagnosis.row("Entitlements", "built into quillmont");
      break;
    case ProcessEntitlements::Source::overridden:
      diagnosis.row("Entitlements", "from " + ProcessEntitlements::overridePath()->string() + " (QUILLMONT_ENTITLEMENTS)");
      break;
    case ProcessEntitlements::Source::none:
      diagnosis.row("Entitlements", "none");
      break;
  }
  const bool group = RuntimeEntitlements::hasUsableAppGroup();
  diagnosis.row("Application group", group ? std::string(AppConstants::appGroupIdentifier) + ": shared with the widget"
                                 : "not usable: the store is private to this program");
  const UserDefaults widgetDefaults = WidgetSnapshotStore::sharedDefaults();
  const WidgetSnapshot snapshot = WidgetSnapshotStore::load(widgetDefaults);
  diagnosis.row("Widget snapshot", widgetDefaults.fileFor(AppConstants::widgetSnapshotKey).string() +
                             (widgetDefaults.data(AppConstants::widgetSnapshotKey)
                                  ? (snapshot.isConfigured ? "" : " (shows the set-up message)")
                                  : " (none yet)"));
  diagnosis.row("Folder sync", Terminal::escaped(SyncCommands::summary()));
  diagnosis.row("Cloud sync", std::string(RuntimeEntitlements::hasRequiredCloudKitEntitlements() ? "entitled" : "not entitled") +
                        " (stores are never synchronised here)");

  // A diagnosis changes nothing: where there is no store yet, say so and
  // create none (nor its folders).
  const std::filesystem::path storePath = StoreSession::storePath();
  std::error_code missing;
  if (!std::filesystem::exists(storePath, missing)) {
    diagnosis.row("Store", storePath.string() + " (none yet: set-up or the first booking creates it)");
    diagnosis.print(json, true);
    return;
  }
  bool healthy = true;
  try {
    StoreSession session;
    const auto& url = session.container()->url();
    diagnosis.row("Store", (url ? url->string() : std::string("in memory")) +
                     (session.container()->isReadOnly() ? " (read-only: it can be read but not changed)" : ""));
    const std::string integrity = session.container()->integrityCheck();
    healthy = integrity == "ok";
    diagnosis.row("Integrity", healthy ? "ok" : integrity);
    ModelContext& context = session.context();
    const auto adjustments = context.fetch<BalanceAdjustment>();
    bool migrated = false;
    for (const auto& adjustment : adjustments) migrated = migrated || ManualLedgerMigration::isCarryover(*adjustment);
    diagnosis.row("Records", counted(context.fetch<WorkEntry>().size(), "work entry", "work entries") + ", " +
                       counted(adjustments.size(), "booking", "bookings") + ", " +
                       counted(context.fetch<WorkSchedule>().size(), "schedule", "schedules") + ", " +
                       counted(context.fetch<TimeBankSettings>().size(), "settings record", "settings records"));
    diagnosis.row("Set-up", session.settings().hasCompletedOnboarding() ? "complete" : "not complete");
    diagnosis.row("Ledger", migrated ? "manual ledger (migrated)" : "not migrated yet");
    diagnosis.row("Calendar", session.calendar().timeZoneIdentifier() + ", " + session.calendar().identifier());
  } catch (const std::exception& error) {
    diagnosis.row("Store", std::string("cannot be opened: ") + error.what());
    healthy = false;
  }
  diagnosis.print(json, healthy);
  if (!healthy) throw CommandFailure("the store needs attention (see above)");
}

}  // namespace

void install(CommandSet& commands) {
  auto confirmed = std::make_shared<bool>(false);
  CLI::App* eraseCommand = commands.add(commands.root(), "erase", "Delete every record of the store",
                                        [confirmed] { erase(*confirmed); });
  eraseCommand->add_flag("--yes", *confirmed, "Confirm that everything is to be deleted");
  auto dryRun = std::make_shared<bool>(false);
  CLI::App* undoCommand = commands.add(commands.root(), "undo", "Take back the last change made on the command line",
                                       [dryRun] { undo(*dryRun); });
  undoCommand->add_flag("--dry-run", *dryRun, "Only say what would be taken back");
  undoCommand->footer("Bookings, work, the timer, settings, schedules, categories and erase can be taken back, the "
                      "last one first, as long as their records have not changed since; imports and the widget's "
                      "buttons cannot.");
  auto json = std::make_shared<bool>(false);
  commands
      .add(commands.root(), "doctor", "Show where the data lives, what is allowed and whether the store is sound",
           [json] { doctor(*json); })
      ->add_flag("--json", *json, "Print a JSON object instead of text");
}

}  // namespace quillmont::HousekeepingCommands
