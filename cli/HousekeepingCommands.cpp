#include "cli/HousekeepingCommands.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "cli/Display.h"
#include "cli/StoreSession.h"
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
  DataStoreMaintenance::eraseAll(session.context());
  Terminal::message("Erased every record.");
}

void row(std::string_view label, const std::string& value) {
  Terminal::print(Terminal::styled(label, Terminal::Style::dim) + std::string(20 - label.size(), ' ') + value);
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void doctor() {
  const char* home = std::getenv("QUILLMONT_HOME");
  row("Data home", ContainerDirectories::dataHome().string() +
                       (home != nullptr && *home != '\0' ? " (from QUILLMONT_HOME)" : ""));
  switch (ProcessEntitlements::source()) {
    case ProcessEntitlements::Source::builtIn:
      row("Entitlements", "built into quillmont");
      break;
    case ProcessEntitlements::Source::overridden:
      row("Entitlements", "from " + ProcessEntitlements::overridePath()->string() + " (QUILLMONT_ENTITLEMENTS)");
      break;
    case ProcessEntitlements::Source::none:
      row("Entitlements", "none");
      break;
  }
  const bool group = RuntimeEntitlements::hasUsableAppGroup();
  row("Application group", group ? std::string(AppConstants::appGroupIdentifier) + ": shared with the widget"
                                 : "not usable: the store is private to this program");
  const UserDefaults widgetDefaults = WidgetSnapshotStore::sharedDefaults();
  const WidgetSnapshot snapshot = WidgetSnapshotStore::load(widgetDefaults);
  row("Widget snapshot", widgetDefaults.fileFor(AppConstants::widgetSnapshotKey).string() +
                             (widgetDefaults.data(AppConstants::widgetSnapshotKey)
                                  ? (snapshot.isConfigured ? "" : " (shows the set-up message)")
                                  : " (none yet)"));
  row("Cloud sync", std::string(RuntimeEntitlements::hasRequiredCloudKitEntitlements() ? "entitled" : "not entitled") +
                        " (stores are never synchronised here)");

  // A diagnosis changes nothing: where there is no store yet, say so and
  // create none (nor its folders).
  const std::filesystem::path storePath = StoreSession::storePath();
  std::error_code missing;
  if (!std::filesystem::exists(storePath, missing)) {
    row("Store", storePath.string() + " (none yet: set-up or the first booking creates it)");
    return;
  }
  bool healthy = true;
  try {
    StoreSession session;
    const auto& url = session.container()->url();
    row("Store", (url ? url->string() : std::string("in memory")) +
                     (session.container()->isReadOnly() ? " (read-only: it can be read but not changed)" : ""));
    const std::string integrity = session.container()->integrityCheck();
    healthy = integrity == "ok";
    row("Integrity", healthy ? "ok" : integrity);
    ModelContext& context = session.context();
    const auto adjustments = context.fetch<BalanceAdjustment>();
    bool migrated = false;
    for (const auto& adjustment : adjustments) migrated = migrated || ManualLedgerMigration::isCarryover(*adjustment);
    row("Records", counted(context.fetch<WorkEntry>().size(), "work entry", "work entries") + ", " +
                       counted(adjustments.size(), "booking", "bookings") + ", " +
                       counted(context.fetch<WorkSchedule>().size(), "schedule", "schedules") + ", " +
                       counted(context.fetch<TimeBankSettings>().size(), "settings record", "settings records"));
    row("Set-up", session.settings().hasCompletedOnboarding() ? "complete" : "not complete");
    row("Ledger", migrated ? "manual ledger (migrated)" : "not migrated yet");
    row("Calendar", session.calendar().timeZoneIdentifier() + ", " + session.calendar().identifier());
  } catch (const std::exception& error) {
    row("Store", std::string("cannot be opened: ") + error.what());
    healthy = false;
  }
  if (!healthy) throw CommandFailure("the store needs attention (see above)");
}

}  // namespace

void install(CommandSet& commands) {
  auto confirmed = std::make_shared<bool>(false);
  CLI::App* eraseCommand = commands.add(commands.root(), "erase", "Delete every record of the store",
                                        [confirmed] { erase(*confirmed); });
  eraseCommand->add_flag("--yes", *confirmed, "Confirm that everything is to be deleted");
  commands.add(commands.root(), "doctor", "Show where the data lives, what is allowed and whether the store is sound",
               [] { doctor(); });
}

}  // namespace quillmont::HousekeepingCommands
