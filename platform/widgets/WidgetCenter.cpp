#include "platform/widgets/WidgetCenter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <system_error>

#include "platform/foundation/ContainerDirectories.h"
#include "platform/foundation/PrivateFiles.h"

namespace quillmont {
namespace {

// Every generation is written with the same width, so a write replaces all
// of the previous one and a reader never sees a shorter number's tail.
constexpr std::size_t width = 20;

std::uint64_t parsed(const char* text, std::size_t size) {
  std::uint64_t value = 0;
  std::from_chars(text, text + size, value);
  return value;
}

// Opens (creating when missing, with its folder) the signal file.
int openSignal(int flags) {
  const std::filesystem::path file = WidgetCenter::signalFile();
  int descriptor = ::open(file.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (descriptor < 0 && errno == ENOENT && (flags & O_CREAT) != 0) {
    PrivateFiles::createFolder(file.parent_path());
    descriptor = ::open(file.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, 0600);
  }
  return descriptor;
}

}  // namespace

WidgetCenter& WidgetCenter::shared() {
  static WidgetCenter center;
  return center;
}

std::filesystem::path WidgetCenter::signalFolder() { return ContainerDirectories::dataHome() / "widget-center"; }

std::filesystem::path WidgetCenter::signalFile() { return signalFolder() / "reload"; }

std::uint64_t WidgetCenter::generation() {
  const int descriptor = openSignal(O_RDONLY);
  if (descriptor < 0) return 0;
  std::array<char, width> text{};
  const ssize_t count = ::pread(descriptor, text.data(), text.size(), 0);
  ::close(descriptor);
  return count > 0 ? parsed(text.data(), static_cast<std::size_t>(count)) : 0;
}

void WidgetCenter::reloadAllTimelines() {
  // Two processes may read the same generation and both write the next
  // one; either way the file is written, and a write is the signal.
  const int descriptor = openSignal(O_RDWR | O_CREAT);
  if (descriptor < 0) return;
  // One character more than a generation tells a longer file from a right one.
  std::array<char, width + 1> text{};
  const ssize_t count = ::pread(descriptor, text.data(), width + 1, 0);
  const std::uint64_t next = (count > 0 ? parsed(text.data(), static_cast<std::size_t>(count)) : 0) + 1;
  std::snprintf(text.data(), text.size(), "%0*llu", static_cast<int>(width), static_cast<unsigned long long>(next));
  const bool written = ::pwrite(descriptor, text.data(), width, 0) == static_cast<ssize_t>(width);
  if (written && count != static_cast<ssize_t>(width)) {
    // A file of another size (damaged, or from an older version) loses its
    // tail; should that fail, the number still reads right: reading stops
    // after `width` characters.
    [[maybe_unused]] const int truncated = ::ftruncate(descriptor, static_cast<off_t>(width));
  }
  ::close(descriptor);
}

}  // namespace quillmont
