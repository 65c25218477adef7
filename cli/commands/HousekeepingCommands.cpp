#include "cli/commands/HousekeepingCommands.h"

#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/housekeeping/Diagnosis.h"
#include "app/housekeeping/Housekeeping.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/Refusal.h"
#include "cli/output/JsonOutput.h"
#include "cli/commands/SyncCommands.h"
#include "cli/output/Terminal.h"
#include "core/persistence/AppConstants.h"

namespace quillmont::HousekeepingCommands {
namespace {

void erase(bool confirmed) {
  if (!confirmed) {
    throw Refusal("erase deletes every booking, work entry, schedule and setting; "
                         "run `quillmont erase --yes` to do it");
  }
  StoreSession session;
  Housekeeping::eraseAll(session);
  Terminal::message("Erased every record.");
}

void undo(bool dryRun) {
  StoreSession session;
  const Display display(session.calendar());
  if (dryRun) {
    const auto last = Housekeeping::lastChange(session);
    Terminal::print("The last change: " + last.name + " (" + display.dateTime(last.at) + ").");
    return;
  }
  const auto undone = Housekeeping::undo(session);
  Terminal::message("Undid " + undone.name + " (" + display.dateTime(undone.at) + ").");
}

// What doctor found, a labelled line each, printed as text or as a JSON
// object whose keys are the labels in camel case ("Data home": "dataHome").
struct Rows {
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
  const Diagnosis found = Diagnosis::examine();
  Rows rows;
  rows.row("Data home", found.dataHome.string() + (found.dataHomeFromEnvironment ? " (from QUILLMONT_HOME)" : ""));
  switch (found.entitlements) {
    case ProcessEntitlements::Source::builtIn:
      rows.row("Entitlements", "built into quillmont");
      break;
    case ProcessEntitlements::Source::overridden:
      rows.row("Entitlements",
               "from " + (found.entitlementsFile ? found.entitlementsFile->string() : std::string()) +
                   " (QUILLMONT_ENTITLEMENTS)");
      break;
    case ProcessEntitlements::Source::none:
      rows.row("Entitlements", "none");
      break;
  }
  rows.row("Application group", found.appGroupUsable
                                    ? std::string(AppConstants::appGroupIdentifier) + ": shared with the widget"
                                    : "not usable: the store is private to this program");
  rows.row("Widget snapshot", found.widgetSnapshotFile.string() +
                                  (found.widgetSnapshotExists
                                       ? (found.widgetShowsSetUpMessage ? " (shows the set-up message)" : "")
                                       : " (none yet)"));
  rows.row("Folder sync", Terminal::escaped(SyncCommands::summary()));
  rows.row("Cloud sync", std::string(found.cloudEntitled ? "entitled" : "not entitled") +
                             " (stores are never synchronised here)");
  if (!found.storeExists) {
    rows.row("Store", found.storePath.string() + " (none yet: set-up or the first booking creates it)");
    rows.print(json, true);
    return;
  }
  if (const auto& store = found.store) {
    rows.row("Store", store->location + (store->readOnly ? " (read-only: it can be read but not changed)" : ""));
    rows.row("Integrity", store->integrity);
    rows.row("Records", counted(store->workEntries, "work entry", "work entries") + ", " +
                            counted(store->bookings, "booking", "bookings") + ", " +
                            counted(store->schedules, "schedule", "schedules") + ", " +
                            counted(store->settingsRecords, "settings record", "settings records"));
    rows.row("Set-up", store->setUpComplete ? "complete" : "not complete");
    rows.row("Ledger", store->migrated ? "manual ledger (migrated)" : "not migrated yet");
    rows.row("Calendar", store->timeZone + ", " + store->calendar);
  } else {
    rows.row("Store", "cannot be opened: " + found.storeError);
  }
  rows.print(json, found.healthy());
  if (!found.healthy()) throw Refusal("the store needs attention (see above)");
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
