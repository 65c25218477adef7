// SyncWatch: exchanging whenever there is a reason to: a save to this
// machine's store (every save asks the widgets to reload) or another
// device's file arriving, changing or going away in the folder (inotify, no
// polling), after a quiet second, since a sync service writes a file in
// steps. This machine's own files being written is no reason.
#pragma once

#include <functional>
#include <stdexcept>

#include "app/sync/SyncExchange.h"
#include "app/sync/SyncSettings.h"
#include "platform/widgets/WidgetReloadWatcher.h"

namespace quillmont {

class SyncWatch {
 public:
  /// Starts watching; throws Refusal when the folder cannot be watched.
  explicit SyncWatch(SyncSettings::Configuration configuration);
  ~SyncWatch();
  SyncWatch(const SyncWatch&) = delete;
  SyncWatch& operator=(const SyncWatch&) = delete;

  using Stop = std::function<bool()>;
  /// Waits for the next reason to exchange; false when `stop` (asked about
  /// once a second, when given) said to stop first. Throws Refusal when the
  /// folder went away: watching again would watch nothing.
  bool waitForChange(const Stop& stop = {});

  struct Callbacks {
    /// Watching began; the first exchange comes next.
    std::function<void()> watching;
    std::function<void(const SyncExchange::Result&)> exchanged;
    /// An exchange that failed; it is tried again at the next change.
    std::function<void(const std::exception&)> failed;
  };
  /// Exchanges now and at every change until `stop` says so (never, without
  /// one). Watching starts before the first exchange, so nothing is missed.
  static void run(const UserDefaults& defaults, const SyncSettings::Configuration& configuration,
                  const Callbacks& callbacks, const Stop& stop = {});

 private:
  bool poll(int timeout);
  bool folderEvents();

  SyncSettings::Configuration setup_;
  WidgetReloadWatcher store_;
  int folderWatch_ = -1;
};

}  // namespace quillmont
