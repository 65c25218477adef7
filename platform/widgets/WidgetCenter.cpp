#include "platform/widgets/WidgetCenter.h"

#include <charconv>
#include <string>

#include "platform/foundation/ContainerDirectories.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont {
namespace {

constexpr std::string_view signalKey = "reload";

// The signal is a preferences entry: replaced whole by rename, private to the user.
UserDefaults signals() { return UserDefaults(WidgetCenter::signalFolder()); }

}  // namespace

WidgetCenter& WidgetCenter::shared() {
  static WidgetCenter center;
  return center;
}

std::filesystem::path WidgetCenter::signalFolder() { return ContainerDirectories::dataHome() / "widget-center"; }

std::filesystem::path WidgetCenter::signalFile() { return signals().fileFor(signalKey); }

std::uint64_t WidgetCenter::generation() {
  const auto text = signals().string(signalKey);
  std::uint64_t value = 0;
  if (text) std::from_chars(text->data(), text->data() + text->size(), value);
  return value;
}

void WidgetCenter::reloadAllTimelines() {
  // Two processes may read the same generation and both write the next
  // one; either way the entry is replaced, and a replacement is the signal.
  signals().setString(std::to_string(generation() + 1), signalKey);
}

}  // namespace quillmont
