#include "platform/widgets/WidgetCenter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <fstream>
#include <string>

#include "platform/foundation/ContainerDirectories.h"

namespace quillmont {

WidgetCenter& WidgetCenter::shared() {
  static WidgetCenter center;
  return center;
}

std::filesystem::path WidgetCenter::signalFolder() { return ContainerDirectories::dataHome() / "widget-center"; }

std::filesystem::path WidgetCenter::signalFile() { return signalFolder() / "reload"; }

std::uint64_t WidgetCenter::generation() {
  std::ifstream file(signalFile());
  std::string text;
  if (!std::getline(file, text)) return 0;
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

void WidgetCenter::reloadAllTimelines() {
  std::error_code error;
  std::filesystem::create_directories(signalFolder(), error);
  if (error) return;
  ::chmod(signalFolder().c_str(), 0700);
  // Two processes may read the same generation and both write the next
  // one; either way the file is replaced, and a replacement is the signal.
  const std::string text = std::to_string(generation() + 1) + "\n";
  std::string temporary = (signalFolder() / ".reload.XXXXXX").string();
  const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (file < 0) return;
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const bool closed = ::close(file) == 0;
  if (!written || !closed || ::rename(temporary.c_str(), signalFile().c_str()) != 0) ::unlink(temporary.c_str());
}

}  // namespace quillmont
