// WidgetCenter: asks every widget host of the user to reload its timelines.
// The request is a generation counter in a file under the data home
// (`<data home>/widget-center/reload`), replaced atomically; hosts watch its
// folder (WidgetReloadWatcher) and reload when the file is replaced. Any
// process of the user reaches every host that shares the data home.
#pragma once

#include <cstdint>
#include <filesystem>

namespace quillmont {

class WidgetCenter {
 public:
  static WidgetCenter& shared();

  /// Tells every host to reload. Never throws: a request that cannot be
  /// written is dropped (hosts still reload at their timeline's instant).
  void reloadAllTimelines();

  /// The folder hosts watch, and the file in it.
  static std::filesystem::path signalFolder();
  static std::filesystem::path signalFile();
  /// The number of reloads requested so far (0 when none or unreadable).
  static std::uint64_t generation();

 private:
  WidgetCenter() = default;
};

}  // namespace quillmont
