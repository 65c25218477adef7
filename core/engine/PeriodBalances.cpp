#include "core/engine/PeriodBalances.h"

#include <algorithm>
#include <optional>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::PeriodBalances {
namespace {

using Op = RowFilter::Op;
using TimeBankCalculator::detail::ObservedWorkInterval;

// The observed intervals of every entry whose interval, cut at `through`,
// ends at or after `from` and starts by `through`; running ones included.
std::vector<ObservedWorkInterval> intervalsReaching(ModelContext& context, Date from, Date through) {
  const RowFilter reaching = RowFilter::allOf({{"endedAt", Op::greaterOrEqual, from}, {"startedAt", Op::lessOrEqual, through}})
                                 .orElse(RowFilter::allOf({{"endedAt", Op::isNull, {}}, {"startedAt", Op::lessOrEqual, through}}));
  std::vector<ObservedWorkInterval> intervals;
  context.forEach<WorkEntry>({"startedAt", "endedAt", "breakMinutes"}, reaching, [&](const WorkEntry& entry) {
    if (auto interval = TimeBankCalculator::detail::observedInterval(entry, through)) intervals.push_back(*interval);
  });
  return intervals;
}

}  // namespace

std::vector<DayBalance> read(ModelContext& context, const TimeBankSettings& settings, Date from, Date through,
                             const Calendar& calendar) {
  const Date firstDay = calendar.startOfDay(from);

  // Intervals join a cluster when they overlap or touch, and a cluster's
  // break is spread over all of it: widen the start until no interval read
  // begins before it, so every cluster that reaches the first day is whole.
  Date reach = firstDay;
  std::vector<ObservedWorkInterval> intervals = intervalsReaching(context, reach, through);
  while (true) {
    Date earliest = reach;
    for (const ObservedWorkInterval& interval : intervals) earliest = std::min(earliest, interval.start);
    if (!(earliest < reach)) break;
    reach = earliest;
    intervals = intervalsReaching(context, reach, through);
  }

  // Bookings count by day, through the last day of `through`.
  const std::optional<Date> dayAfter = calendar.dateByAddingDays(1, calendar.startOfDay(through));
  RowFilter dated = RowFilter::allOf({{"date", Op::greaterOrEqual, firstDay}});
  if (dayAfter) dated.anyOf.front().push_back({"date", Op::less, *dayAfter});
  std::vector<TimeBankCalculator::BookedMinutes> bookings;
  context.forEach<BalanceAdjustment>({"date", "minutes"}, dated, [&](const BalanceAdjustment& booking) {
    bookings.push_back({booking.date(), booking.minutes()});
  });

  std::vector<DayBalance> days = TimeBankCalculator::dayBalancesFrom(intervals, bookings, context.fetch<WorkSchedule>(),
                                                                 settings, through, calendar);
  std::erase_if(days, [&](const DayBalance& day) { return day.date < firstDay; });
  return days;
}

}  // namespace quillmont::PeriodBalances
