// Timer: the work timer through the core's timer sessions. A start is
// refused while the timer runs (as a stop or a cancel with nothing running
// is) and when its work would overlap other work, unless `force`. Times are
// read as typed and must have passed (WorkTimes::pastTime); none means now.
// Every change is journaled as one action.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/ledger/WorkEntry.h"

namespace quillmont {

class StoreSession;

namespace Timer {

struct Start {
  std::string at;    ///< as typed; empty for now
  std::string note;  ///< as typed
  bool force = false;
};

/// The running entry it started.
std::shared_ptr<WorkEntry> start(StoreSession& session, const Start& request);
/// Starts again with the note of the work that started last (`request.note` is not read).
std::shared_ptr<WorkEntry> resume(StoreSession& session, const Start& request);
/// The entry it ended, at `at` (as typed; empty for now).
std::shared_ptr<WorkEntry> stop(StoreSession& session, std::string_view at);
/// The running entry it discarded.
std::shared_ptr<WorkEntry> cancel(StoreSession& session);

/// Stops the timer now when it runs, else starts it now without a note.
struct Toggled {
  bool started = false;
  std::shared_ptr<WorkEntry> entry;
};
Toggled toggle(StoreSession& session, bool force);

/// The running entry, or none.
std::shared_ptr<WorkEntry> running(StoreSession& session);

}  // namespace Timer
}  // namespace quillmont
