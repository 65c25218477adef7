// Schedules: the history of weekly schedules, each expecting its week from
// a first day on. Added and removed as journaled actions; a schedule is
// named by identifier, prefix, "@N" or "last" (the one made last, then the
// later first day).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/input/DateInput.h"
#include "core/ledger/WeekdayMinutes.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {

class StoreSession;

namespace Schedules {

struct Request {
  DateInput::Day from;
  WeekdayMinutes week{};
  /// The first day as typed, which names the action for undo ("schedule add today").
  std::string fromText;
};
std::shared_ptr<WorkSchedule> add(StoreSession& session, const Request& request);

/// Removes the schedule named (every copy of its identifier) and returns it.
std::shared_ptr<WorkSchedule> remove(StoreSession& session, std::string_view identifier);

/// Every schedule by its first day (then by when it was changed).
std::vector<std::shared_ptr<WorkSchedule>> list(StoreSession& session);

}  // namespace Schedules
}  // namespace quillmont
