// AppConstants: fixed identifiers shared by the application and the widget:
// the application group and cloud container, preference keys and file names
// of widget and interface state, the deep-link scheme, the support and
// privacy addresses, and the identifier of the ledger migration's marker.
#pragma once

#include <string_view>

#include "platform/foundation/UUID.h"

namespace quillmont::AppConstants {

inline constexpr std::string_view appGroupIdentifier = "group.io.quillmont.ledger";
inline constexpr std::string_view cloudKitContainerIdentifier = "iCloud.io.quillmont.ledger";
inline constexpr std::string_view widgetSnapshotKey = "widgetSnapshot";
inline constexpr std::string_view localWidgetSnapshotDirectoryName = "Quillmont";
inline constexpr std::string_view localWidgetSnapshotFileName = "widget-snapshot.json";
inline constexpr std::string_view showMenuBarExtraKey = "showMenuBarExtra";
inline constexpr std::string_view menuBarDisplayModeKey = "menuBarDisplayMode";
inline constexpr std::string_view closeWindowToMenuBarKey = "closeWindowToMenuBar";
inline constexpr std::string_view appearanceKey = "appearance";
inline constexpr std::string_view deepLinkScheme = "quillmont";
inline constexpr std::string_view supportURLString = "https://quillmont.io/apps/quillmont/support";
inline constexpr std::string_view privacyURLString = "https://quillmont.io/apps/quillmont/privacy";

/// C0DE5EED-0B4A-4C2A-9D6E-000000000001, parsed once.
const UUID& manualLedgerMigrationAdjustmentID();

}  // namespace quillmont::AppConstants
