#include "app/housekeeping/Diagnosis.h"

#include <cstdlib>
#include <exception>

#include "app/session/StoreSession.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/ContainerDirectories.h"

namespace quillmont {

bool Diagnosis::healthy() const {
  if (!storeExists) return true;
  return store && store->integrity == "ok";
}

Diagnosis Diagnosis::examine() {
  Diagnosis diagnosis;
  const char* home = std::getenv("QUILLMONT_HOME");
  diagnosis.dataHome = ContainerDirectories::dataHome();
  diagnosis.dataHomeFromEnvironment = home != nullptr && *home != '\0';
  diagnosis.entitlements = ProcessEntitlements::source();
  if (diagnosis.entitlements == ProcessEntitlements::Source::overridden) {
    diagnosis.entitlementsFile = ProcessEntitlements::overridePath();
  }
  diagnosis.appGroupUsable = RuntimeEntitlements::hasUsableAppGroup();
  const UserDefaults widgetDefaults = WidgetSnapshotStore::sharedDefaults();
  diagnosis.widgetSnapshotFile = widgetDefaults.fileFor(AppConstants::widgetSnapshotKey);
  diagnosis.widgetSnapshotExists = widgetDefaults.data(AppConstants::widgetSnapshotKey).has_value();
  diagnosis.widgetShowsSetUpMessage = !WidgetSnapshotStore::load(widgetDefaults).isConfigured;
  diagnosis.cloudEntitled = RuntimeEntitlements::hasRequiredCloudKitEntitlements();

  diagnosis.storePath = StoreSession::storePath();
  std::error_code missing;
  diagnosis.storeExists = std::filesystem::exists(diagnosis.storePath, missing);
  if (!diagnosis.storeExists) return diagnosis;
  try {
    StoreSession session;
    Store store;
    const auto& url = session.container()->url();
    store.location = url ? url->string() : std::string("in memory");
    store.readOnly = session.container()->isReadOnly();
    store.integrity = session.container()->integrityCheck();
    ModelContext& context = session.context();
    const auto adjustments = context.fetch<BalanceAdjustment>();
    for (const auto& adjustment : adjustments) store.migrated = store.migrated || ManualLedgerMigration::isCarryover(*adjustment);
    store.workEntries = context.fetch<WorkEntry>().size();
    store.bookings = adjustments.size();
    store.schedules = context.fetch<WorkSchedule>().size();
    store.settingsRecords = context.fetch<TimeBankSettings>().size();
    store.setUpComplete = session.settings().hasCompletedOnboarding();
    store.timeZone = session.calendar().timeZoneIdentifier();
    store.calendar = session.calendar().identifier();
    diagnosis.store = std::move(store);
  } catch (const std::exception& error) {
    diagnosis.storeError = error.what();
  }
  return diagnosis;
}

}  // namespace quillmont
