// PrivateFiles: folders and files that only the user can read, whatever the
// umask (a time bank is personal), written so that a crash or a refusing
// disk never leaves a file half written and a write that returns true is on
// the disk.
#pragma once

#include <filesystem>
#include <string_view>

namespace quillmont::PrivateFiles {

/// Creates `folder` and its missing parents, each mode 0700 (existing ones
/// are left as they are); false, with errno set, when one cannot be made.
bool createFolder(const std::filesystem::path& folder);

/// Writes all of `bytes` to `descriptor`, again after an interrupted or
/// partial write; false, with errno set, when a write fails.
bool writeAll(int descriptor, std::string_view bytes);

/// Replaces (or creates) `file` with `bytes`: a temporary beside it is
/// written and synced, renamed over it, and the folder is synced. A new
/// file is 0600; a replaced one keeps its permissions. Creates the folder
/// as createFolder does. False, with errno set and `file` as it was (or
/// whole and new when only the final sync of the folder failed), when any
/// step fails; nothing temporary is left.
bool writeAtomically(const std::filesystem::path& file, std::string_view bytes);

}  // namespace quillmont::PrivateFiles
