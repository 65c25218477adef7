// FileTransfer: reading and writing whole documents (archives, CSV,
// calendars, the sync folder's files). Files are written atomically: the text goes to an anonymous file in the target's
// folder, is flushed to disk, and only then gets a name and is renamed over
// the target, so a target is never left half written and a killed write
// leaves nothing behind. New files are private to the user (0600); a file
// replaced keeps its permissions. Failures throw Refusal naming the file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmont::FileTransfer {

/// The most a whole document may hold, checked before it is read: an
/// archive at every list's limit is about 60 MB.
inline constexpr std::size_t maximumArchiveBytes = std::size_t{256} << 20;
/// A machine's device file in a sync folder (its deletions of 400 days).
inline constexpr std::size_t maximumDeviceFileBytes = std::size_t{32} << 20;
/// An iCalendar file of holidays.
inline constexpr std::size_t maximumCalendarBytes = std::size_t{16} << 20;

/// The whole file when it holds at most `limit` bytes: a larger file is
/// refused before it is read, and a file without a size (a pipe, a device)
/// is read up to the limit and refused there. Throws Refusal naming the file.
std::string read(const std::string& path, std::size_t limit);
/// The same for a descriptor the host opened (its standard input, say),
/// named `label` in refusals; the descriptor stays open.
std::string read(int descriptor, const std::string& label, std::size_t limit);
void writeAtomically(const std::string& path, std::string_view contents);

}  // namespace quillmont::FileTransfer
