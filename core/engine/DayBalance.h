// DayBalance: one calendar day of the computed time bank: the seconds worked
// that day, the seconds booked by adjustments that day, and the seconds the
// user was expected to work. Produced by TimeBankCalculator, consumed by the
// reports, the CSV day table and the ledger migration.
#pragma once

#include "platform/foundation/Date.h"

namespace quillmont {

struct DayBalance {
  /// The first instant of the day (the calendar's start of day).
  Date date;
  TimeInterval workedSeconds = 0;
  /// Signed sum of the day's adjustments.
  TimeInterval adjustmentSeconds = 0;
  TimeInterval expectedSeconds = 0;

  /// (worked + adjustments) - expected, in that order.
  constexpr TimeInterval balanceSeconds() const { return (workedSeconds + adjustmentSeconds) - expectedSeconds; }
  /// Unique within a list of day balances: there is one element per day.
  constexpr Date id() const { return date; }

  friend constexpr bool operator==(const DayBalance&, const DayBalance&) = default;
};

}  // namespace quillmont
