#include "core/engine/PeriodBalances.h"

#include <algorithm>
#include <optional>
#include <span>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::PeriodBalances {
namespace {

using Op = RowFilter::Op;
using TimeBankCalculator::detail::ObservedWorkInterval;

// The observed intervals through `through` of the entries that `filter` passes.
std::vector<ObservedWorkInterval> intervals(ModelContext& context, const RowFilter& filter, Date through) {
  std::vector<ObservedWorkInterval> found;
  context.forEach<WorkEntry>({"startedAt", "endedAt", "breakMinutes"}, filter, [&](const WorkEntry& entry) {
    if (auto interval = TimeBankCalculator::detail::observedInterval(entry, through)) found.push_back(*interval);
  });
  return found;
}

// Every entry whose interval, cut at `through`, ends at or after `from` and
// starts by `through`; running ones included.
RowFilter reaching(Date from, Date through) {
  return RowFilter::allOf({{"endedAt", Op::greaterOrEqual, from}, {"startedAt", Op::lessOrEqual, through}})
      .orElse(RowFilter::allOf({{"endedAt", Op::isNull, {}}, {"startedAt", Op::lessOrEqual, through}}));
}

}  // namespace

std::vector<DayBalance> read(ModelContext& context, const TimeBankSettings& settings, Date from, Date through,
                             const Calendar& calendar, TimeBankCalculator::HolidayDays holidays) {
  const Date firstDay = calendar.startOfDay(from);

  // Intervals join a cluster when they overlap or touch, and a cluster's
  // break is spread over all of it: widen the start until no interval read
  // begins before it, so every cluster that reaches the first day is whole.
  std::vector<ObservedWorkInterval> work;
  if (through - firstDay > longStretch) {
    work = intervals(context, RowFilter{}, through);
  } else {
    Date reach = firstDay;
    work = intervals(context, reaching(reach, through), through);
    while (true) {
      Date earliest = reach;
      for (const ObservedWorkInterval& interval : work) earliest = std::min(earliest, interval.start);
      if (!(earliest < reach)) break;
      reach = earliest;
      work = intervals(context, reaching(reach, through), through);
    }
  }

  // Bookings count by day, through the last day of `through`.
  const std::optional<Date> dayAfter = calendar.dateByAddingDays(1, calendar.startOfDay(through));
  RowFilter dated = RowFilter::allOf({{"date", Op::greaterOrEqual, firstDay}});
  if (dayAfter) dated.anyOf.front().push_back({"date", Op::less, *dayAfter});
  std::vector<TimeBankCalculator::BookedMinutes> bookings;
  // Over a long stretch every row, in row order, with the same test here.
  const bool readAll = through - firstDay > longStretch;
  const auto inStretch = [&](Date date) { return date >= firstDay && (!dayAfter || date < *dayAfter); };
  context.forEach<BalanceAdjustment>({"date", "minutes"}, readAll ? RowFilter{} : dated,
                                     [&](const BalanceAdjustment& booking) {
                                       if (readAll && !inStretch(booking.date())) return;
                                       bookings.push_back({booking.date(), booking.minutes()});
                                     });

  return TimeBankCalculator::dayBalancesFrom(work, bookings, context.fetch<WorkSchedule>(), settings, through, calendar,
                                             firstDay, holidays);
}

}  // namespace quillmont::PeriodBalances
