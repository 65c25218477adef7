#include "app/files/FileTransfer.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/Refusal.h"
#include "platform/foundation/PrivateFiles.h"

namespace quillmont::FileTransfer {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& name, int error) {
  throw Refusal(what + " " + name + ": " + std::strerror(error));
}

// Hidden temporaries of `prefix` that a killed run left, older than a
// minute (younger ones may belong to a run still writing).
void removeStaleTemporaries(const std::filesystem::path& folder, const std::string& prefix) {
  std::error_code error;
  const auto now = std::filesystem::file_time_type::clock::now();
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(prefix) || name.size() != prefix.size() + 6 || !entry.is_regular_file(error)) continue;
    const auto modified = entry.last_write_time(error);
    if (!error && now - modified > std::chrono::minutes(1)) std::filesystem::remove(entry.path(), error);
  }
}

// A buffer of tens of megabytes (an archive at its limits) took one page
// fault per 4 KiB page as it was first written: 14,000 for the largest
// archive, a tenth of its import. Where the kernel gives huge pages on
// request, the whole 2 MiB stretches inside the buffer take one each.
void preferLargePages(char* buffer, std::size_t size) {
  constexpr std::uintptr_t hugePage = std::uintptr_t{2} << 20;
  if (size < 4 * hugePage) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + hugePage - 1) & ~(hugePage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + size) & ~(hugePage - 1);
  if (begin < end) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // only advice
}

}  // namespace

std::string read(const std::string& path, std::size_t limit) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) fail("cannot open", path, errno);
  try {
    std::string contents = read(descriptor, path, limit);
    ::close(descriptor);
    return contents;
  } catch (...) {
    ::close(descriptor);
    throw;
  }
}

std::string read(int descriptor, const std::string& label, std::size_t limit) {
  const auto tooLarge = [&] {
    throw Refusal("cannot read " + label + ": it is larger than " + std::to_string(limit >> 20) +
                  " MB, more than such a file ever holds");
  };
  struct stat status {};
  std::size_t expected = 0;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    if (static_cast<std::uintmax_t>(status.st_size) > limit) tooLarge();
    expected = static_cast<std::size_t>(status.st_size);
  } else if (fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
    throw Refusal("cannot read " + label + ": it is a folder");
  }
  // A regular file's text is read straight into the string. Anything after
  // that (a pipe, a file that grew) comes through the buffer.
  std::string contents;
  contents.reserve(expected);
  preferLargePages(contents.data(), contents.capacity());
  contents.resize(expected);
  std::size_t length = 0;
  char buffer[65536];
  while (true) {
    const bool direct = length < contents.size();
    const ssize_t count = direct ? ::read(descriptor, contents.data() + length, contents.size() - length)
                                 : ::read(descriptor, buffer, sizeof buffer);
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      fail("cannot read", label, errno);
    }
    if (!direct) contents.append(buffer, static_cast<std::size_t>(count));
    length += static_cast<std::size_t>(count);
    if (length > limit) tooLarge();  // a stream without a size, or a file that grew
  }
  contents.resize(length);  // a file that shrank while it was read
  return contents;
}

void writeAtomically(const std::string& path, std::string_view contents) {
  const std::filesystem::path target(path);
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
  // A file replaced keeps its permissions; a new one is private: a time
  // bank is personal, whatever the umask says.
  struct stat existing {};
  const mode_t mode =
      ::stat(path.c_str(), &existing) == 0 && S_ISREG(existing.st_mode) ? existing.st_mode & 07777 : 0600;

  // The text goes to an anonymous file that gets a name only once it is
  // whole, so a write killed half-way leaves nothing behind. Where the file
  // system has no anonymous files, a hidden named one stands in, and stale
  // ones that a killed run left are cleared first.
  std::string hiddenPrefix = ".";
  hiddenPrefix += target.filename().string();
  hiddenPrefix += '.';
  bool anonymous = true;
  int descriptor = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
  std::string temporary;
  if (descriptor < 0) {
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) fail("cannot write", path, errno);
    anonymous = false;
    removeStaleTemporaries(folder, hiddenPrefix);
    temporary = (folder / (hiddenPrefix + "XXXXXX")).string();
    descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) fail("cannot write", path, errno);
  }
  const bool written = PrivateFiles::writeAll(descriptor, contents) && fchmod(descriptor, mode) == 0 && fsync(descriptor) == 0;
  int error = errno;
  if (written && anonymous) {
    // Named beside the target for an instant, then renamed over it.
    temporary = (folder / (hiddenPrefix + std::to_string(::getpid()) + ".new")).string();
    ::unlink(temporary.c_str());
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) != 0) {
      error = errno;
      ::close(descriptor);
      fail("cannot write", path, error);
    }
  }
  if (::close(descriptor) != 0 || !written) {
    if (!temporary.empty()) ::unlink(temporary.c_str());
    fail("cannot write", path, written ? errno : error);
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int renameError = errno;
    ::unlink(temporary.c_str());
    fail("cannot write", path, renameError);
  }
  // The new name is on the disk only once the folder is synced.
  const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) fail("cannot write", path, errno);
  if (fsync(directory) != 0) {
    const int syncError = errno;
    ::close(directory);
    fail("cannot write", path, syncError);
  }
  ::close(directory);
}

}  // namespace quillmont::FileTransfer
