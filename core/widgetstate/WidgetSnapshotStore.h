// WidgetSnapshotStore: reads and writes the widget snapshot under
// "widgetSnapshot" in the preferences given, or else in the application
// group's shared suite when this process may use the group, or else in the
// process's own standard preferences. Neither operation fails: an entry
// that is missing, not data, or not a whole snapshot document loads as
// WidgetSnapshot::empty() (and is left as it is); a snapshot that cannot be
// written is not written. Nothing is cached, and saving does not ask the
// widget hosts to reload.
#pragma once

#include <optional>

#include "core/widgetstate/WidgetSnapshot.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont::WidgetSnapshotStore {

WidgetSnapshot load(const std::optional<UserDefaults>& defaults = std::nullopt);
void save(const WidgetSnapshot& snapshot, const std::optional<UserDefaults>& defaults = std::nullopt);

/// The preferences load and save use when given none.
UserDefaults sharedDefaults();

}  // namespace quillmont::WidgetSnapshotStore
