// WidgetReloadWatcher: how a widget host waits, without polling, for the
// next reason to ask its provider again: a reloadAllTimelines() from any
// process, the timeline's reload instant (on the wall clock, so it fires on
// time after a suspend), or a change of the system clock. Watching starts
// at construction, so a request made after it is never missed.
#pragma once

#include <optional>

#include "platform/foundation/Date.h"

namespace quillmont {

class WidgetReloadWatcher {
 public:
  enum class Wake { reloadRequested, reloadDue, clockChanged };

  /// Creates the signal folder if needed and starts watching it; throws
  /// std::system_error when the system cannot watch it.
  WidgetReloadWatcher();
  ~WidgetReloadWatcher();
  WidgetReloadWatcher(const WidgetReloadWatcher&) = delete;
  WidgetReloadWatcher& operator=(const WidgetReloadWatcher&) = delete;

  /// Blocks until a reload is requested or `until` (when given) is reached.
  /// Requests that arrived since the last call wake it at once.
  Wake wait(std::optional<Date> until);

  /// A descriptor that becomes readable when a request arrives, for hosts
  /// with an event loop of their own; call takeRequests() when it does.
  int fileDescriptor() const { return inotify_; }
  /// Consumes what arrived; whether a reload was requested.
  bool takeRequests();

 private:
  int inotify_ = -1;
};

}  // namespace quillmont
