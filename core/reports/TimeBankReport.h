// TimeBankReport: the day balances of one calendar week or month, with the
// period's sums. `interval` ends where the next period starts; `days` are the
// day balances inside it in the order they were given (days missing from the
// input are missing here too).
#pragma once

#include <vector>

#include "core/engine/DayBalance.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

struct TimeBankReport {
  DateInterval interval;
  std::vector<DayBalance> days;

  TimeInterval workedSeconds() const { return sum([](const DayBalance& day) { return day.workedSeconds; }); }
  TimeInterval adjustmentSeconds() const { return sum([](const DayBalance& day) { return day.adjustmentSeconds; }); }
  TimeInterval expectedSeconds() const { return sum([](const DayBalance& day) { return day.expectedSeconds; }); }
  /// The sum of the days' balances (not the difference of the sums above).
  TimeInterval balanceSeconds() const { return sum([](const DayBalance& day) { return day.balanceSeconds(); }); }

  friend bool operator==(const TimeBankReport&, const TimeBankReport&) = default;

 private:
  template <class Field>
  TimeInterval sum(Field field) const {
    TimeInterval total = 0;
    for (const DayBalance& day : days) total += field(day);
    return total;
  }
};

}  // namespace quillmont
