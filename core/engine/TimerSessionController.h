// TimerSessionController: the timer is a work entry without an end. Start,
// stop and toggle work on the store through a context and save it; each
// first reduces the running entries to one (the earliest start, then the
// lowest id), deleting the others, and pulls a start in the future back to
// the caller's `at`. The store's errors pass through; changes made before a
// failing save stay in the context.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/ledger/WorkEntry.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"

namespace quillmont::TimerSessionController {

/// The one running entry that is kept, or nothing. Saves only when
/// `saveChanges` is set and something changed.
std::shared_ptr<WorkEntry> reconcileRunningEntries(ModelContext& context, Date at, bool saveChanges);
/// The running entry (reconciling and saving as needed), or nothing.
std::shared_ptr<WorkEntry> runningEntry(ModelContext& context, Date at);
/// True when a new running entry was made; false when one was running already.
bool start(ModelContext& context, Date at);
/// The same, with a note for the new entry (normalised like every note).
bool start(ModelContext& context, Date at, std::string_view note);
/// True when a running entry was stopped at `at`; false when none was running.
bool stop(ModelContext& context, Date at);
/// True when it started a timer, false when it stopped one.
bool toggle(ModelContext& context, Date at);
/// Deletes the running entry, as if the timer had never been started; the
/// deleted entry, or nothing when none was running.
std::shared_ptr<WorkEntry> cancel(ModelContext& context, Date at);
/// The note of the entry that started last, running or not: what a timer
/// continued from the last work carries. Empty when there is no entry.
std::string lastNote(ModelContext& context);

}  // namespace quillmont::TimerSessionController
