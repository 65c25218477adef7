#include "core/widgetstate/WidgetSnapshotStore.h"

#include <exception>

#include "core/persistence/AppConstants.h"
#include "core/persistence/RuntimeEntitlements.h"

namespace quillmont::WidgetSnapshotStore {

UserDefaults sharedDefaults() {
  if (RuntimeEntitlements::hasUsableAppGroup()) {
    if (auto suite = UserDefaults::suite(AppConstants::appGroupIdentifier)) return std::move(*suite);
  }
  return UserDefaults::standard();
}

WidgetSnapshot load(const std::optional<UserDefaults>& defaults) {
  try {
    const auto data = (defaults ? *defaults : sharedDefaults()).data(AppConstants::widgetSnapshotKey);
    if (!data) return WidgetSnapshot::empty();
    return WidgetSnapshot::decoded(*data);
  } catch (const std::exception&) {
    return WidgetSnapshot::empty();
  }
}

void save(const WidgetSnapshot& snapshot, const std::optional<UserDefaults>& defaults) {
  try {
    const std::string document = snapshot.encodedJSON();
    (defaults ? *defaults : sharedDefaults()).setData(document, AppConstants::widgetSnapshotKey);
  } catch (const std::exception&) {
    // A value JSON cannot represent is not written; the old snapshot stays.
  }
}

}  // namespace quillmont::WidgetSnapshotStore
