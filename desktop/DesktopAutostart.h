// DesktopAutostart: the XDG autostart entry that starts a widget at login
// ($XDG_CONFIG_HOME/autostart, default ~/.config/autostart), one per
// instance, running this very program with the instance's size and name.
#pragma once

#include <filesystem>
#include <string>

namespace quillmont::DesktopAutostart {

/// The entry's file for an instance ("" for the default one).
std::filesystem::path entryFile(const std::string& instance);
/// Writes (or removes) the entry; says what it did. Throws
/// std::runtime_error when the file cannot be written or removed.
std::string set(bool enable, const std::string& size, const std::string& instance);

}  // namespace quillmont::DesktopAutostart
