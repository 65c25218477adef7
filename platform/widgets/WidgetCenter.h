// WidgetCenter: asks every widget host of the user to reload its timelines.
// The request is a generation counter in a file under the data home
// (`<data home>/widget-center/reload`, private to the user), rewritten in
// place; hosts watch its folder (WidgetReloadWatcher) and reload when the
// file is written. Any process of the user reaches every host that shares
// the data home. Rewriting in place, not renaming a new file over it, spares
// every saving command a file creation and a rename, which on ext4 writes
// the new file's data out at once.
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
