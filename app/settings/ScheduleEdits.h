// ScheduleEdits: changing a schedule of the history in place: its first day
// and its week, named by identifier or prefix (every copy of the identifier
// changes alike). One journaled action, so undo takes it back; the schedule
// keeps when it was made, so it keeps its place among the newest.
#pragma once

#include <memory>
#include <string_view>

#include "app/settings/Schedules.h"

namespace quillmont::ScheduleEdits {

/// The schedule named, changed to `request`'s first day and week. Throws
/// Refusal when no schedule or more than one is named.
std::shared_ptr<WorkSchedule> change(StoreSession& session, std::string_view identifier,
                                     const Schedules::Request& request);

}  // namespace quillmont::ScheduleEdits
