#include "app/session/StoreSession.h"

#include <exception>
#include <utility>

#include "core/engine/DataStoreMaintenance.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "core/persistence/AppConstants.h"
#include "core/widgetstate/WidgetSnapshotBuilder.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/ContainerDirectories.h"
#include "platform/widgets/WidgetCenter.h"

namespace quillmont {
namespace {

StoreSession::WarningHandler& warningHandler() {
  static StoreSession::WarningHandler handler;
  return handler;
}

void warn(const std::string& text) noexcept {
  try {
    if (warningHandler()) warningHandler()(text);
  } catch (...) {  // a warning never fails the session
  }
}

// Whether a widget drawing `stored` shows, for the rest of today, what it
// would show drawing `fresh`: the same figures, computed earlier today. Only
// the time it was computed differs (a timer's start or stop changes no figure).
bool drawsTheSame(WidgetSnapshot stored, const WidgetSnapshot& fresh, const Calendar& calendar) {
  if (stored.updatedAt > fresh.updatedAt || !calendar.isDate(stored.updatedAt, fresh.updatedAt)) return false;
  stored.updatedAt = fresh.updatedAt;
  return stored == fresh;
}

}  // namespace

StoreSession::StoreSession()
    : calendar_(Calendar::autoupdatingCurrent()),
      now_(Date::now()),
      container_(QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup())),
      context_(std::make_unique<ModelContext>(container_)),
      settings_(repaired()) {
  container_->beginReading();  // again, when maintenance saved
}

std::shared_ptr<TimeBankSettings> StoreSession::repaired() {
  // What maintenance and then the command read, they read from one
  // snapshot: one read lock, not one per statement. A save ends it (and
  // sees the newest store).
  container_->beginReading();
  // A read-only store is repaired in memory only: reading commands see the
  // same records as elsewhere, and a command that saves is told the store is
  // read-only.
  return DataStoreMaintenance::reconcile(*context_, calendar_, now_, !container_->isReadOnly());
}

StoreSession::~StoreSession() {
  refreshWidget();
  container_->endReading();  // the command's, or a rebuild's that failed half-way
}

void StoreSession::setWarningHandler(WarningHandler handler) { warningHandler() = std::move(handler); }

std::filesystem::path StoreSession::storePath() {
  const std::filesystem::path folder = RuntimeEntitlements::hasUsableAppGroup()
                                           ? ContainerDirectories::groupContainer(AppConstants::appGroupIdentifier)
                                           : ContainerDirectories::processContainer();
  return folder / (std::string(QuillmontPersistence::storeName) + ".store");
}

void StoreSession::refreshWidget() noexcept {
  if (container_->savesCommitted() == refreshedAtSave_) return;
  try {
    // The rebuild reads the newest store, from one snapshot like the command.
    container_->endReading();
    container_->beginReading();
    const WidgetSnapshot snapshot = WidgetSnapshotBuilder::make(*context_, Date::now());
    container_->endReading();
    refreshedAtSave_ = container_->savesCommitted();
    // Rewriting the same figures would only wake every widget to draw them
    // again; the document is replaced (a new file renamed over the old one)
    // and that is most of what a save costs besides the store itself.
    if (drawsTheSame(WidgetSnapshotStore::load(), snapshot, calendar_)) return;
    WidgetSnapshotStore::save(snapshot);  // never fails: a refused write leaves the old one
    if (WidgetSnapshotStore::load().encodedJSON() != snapshot.encodedJSON()) {
      refreshedAtSave_ = 0;  // written again at the session's next save
      warn("the widget keeps its last figures: its snapshot could not be written");
      return;
    }
    WidgetCenter::shared().reloadAllTimelines();
  } catch (const std::exception& error) {
    warn(std::string("the widget keeps its last figures: ") + error.what());
  } catch (...) {
    warn("the widget keeps its last figures");
  }
}

void StoreSession::saveSettings() {
  settings_->setModifiedAt(now_);
  context_->save();
}

}  // namespace quillmont
