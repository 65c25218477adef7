// Configuration: the bank's settings and weekly schedules as a settings
// screen shows them: set-up, the calculation start and starting balance,
// the planned week, the quick actions, the kinds and categories offered
// when booking, and the schedules in the order they take effect.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ledger/WeekdayMinutes.h"
#include "platform/foundation/Date.h"

namespace quillmont {

class StoreSession;

namespace Configuration {

struct Schedule {
  Date effectiveFrom;
  WeekdayMinutes week{};
};

struct Settings {
  bool isSetUp = false;
  Date calculationStart;
  std::int64_t startingBalanceMinutes = 0;
  /// Monday first.
  WeekdayMinutes week{};
  std::vector<std::int64_t> quickActionMinutes;
  /// Titles of the kinds offered when booking.
  std::vector<std::string> visibleKinds;
  /// Titles of the person's own categories.
  std::vector<std::string> categories;
  /// Oldest first (by when each takes effect, then when it was changed).
  std::vector<Schedule> schedules;
};

Settings read(StoreSession& session);

}  // namespace Configuration
}  // namespace quillmont
