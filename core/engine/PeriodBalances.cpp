#include "core/engine/PeriodBalances.h"

#include <algorithm>
#include <optional>
#include <span>

#include "core/engine/Settlement.h"
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

// The earliest start among `work`, when it lies before `from`.
std::optional<Date> earlierStart(std::span<const ObservedWorkInterval> work, Date from) {
  Date earliest = from;
  for (const ObservedWorkInterval& interval : work) earliest = std::min(earliest, interval.start);
  if (earliest < from) return earliest;
  return std::nullopt;
}

}  // namespace

RowFilter reaching(Date from, Date through) {
  return RowFilter::allOf({{"endedAt", Op::greaterOrEqual, from}, {"startedAt", Op::lessOrEqual, through}})
      .orElse(RowFilter::allOf({{"endedAt", Op::isNull, {}}, {"startedAt", Op::lessOrEqual, through}}));
}

std::vector<ObservedWorkInterval> wholeClusters(ModelContext& context, std::vector<ObservedWorkInterval> found,
                                                Date from, Date through) {
  // Intervals join a cluster when they overlap or touch, and a cluster's
  // break is spread over all of it: widen the start until no interval read
  // begins before it, so every cluster that reaches `from` is whole.
  while (const auto reach = earlierStart(found, from)) {
    from = *reach;
    found = intervals(context, reaching(from, through), through);
  }
  return found;
}

TimeInterval workedToday(ModelContext& context, std::vector<ObservedWorkInterval> found, Date asOf,
                         const Calendar& calendar) {
  const Date today = calendar.startOfDay(asOf);
  const auto work = wholeClusters(context, std::move(found), today, asOf);
  const auto grid = TimeBankCalculator::detail::DayGrid::covering(calendar, today, asOf);
  if (grid.empty()) return 0;
  return TimeBankCalculator::detail::workedSecondsOnDays(work, TimeBankCalculator::detail::clusteringOrder(work), grid)
      .front()
      .value_or(0);
}

std::vector<DayBalance> read(ModelContext& context, const TimeBankSettings& settings, Date from, Date through,
                             const Calendar& calendar, TimeBankCalculator::HolidayDays holidays) {
  const Date firstDay = calendar.startOfDay(from);

  std::vector<ObservedWorkInterval> work;
  if (through - firstDay > longStretch) {
    work = intervals(context, RowFilter{}, through);
  } else {
    work = wholeClusters(context, intervals(context, reaching(firstDay, through), through), firstDay, through);
  }

  // Bookings count by day, through the last day of `through`.
  const std::optional<Date> dayAfter = calendar.dateByAddingDays(1, calendar.startOfDay(through));
  RowFilter dated = RowFilter::allOf({{"date", Op::greaterOrEqual, firstDay}});
  if (dayAfter) dated.anyOf.front().push_back({"date", Op::less, *dayAfter});
  std::vector<TimeBankCalculator::BookedMinutes> bookings;
  // Over a long stretch every row, in row order, with the same test here.
  const bool readAll = through - firstDay > longStretch;
  const auto inStretch = [&](Date date) { return date >= firstDay && (!dayAfter || date < *dayAfter); };
  // A settlement booking is the day's worked less planned time brought into
  // the ledger: counted as an adjustment too, the day's difference would
  // show its worked time twice.
  context.forEach<BalanceAdjustment>({"id", "date", "minutes"}, readAll ? RowFilter{} : dated,
                                     [&](const BalanceAdjustment& booking) {
                                       if (readAll && !inStretch(booking.date())) return;
                                       if (Settlement::isSettlement(booking.id(), booking.date(), calendar)) return;
                                       bookings.push_back({booking.date(), booking.minutes()});
                                     });

  return TimeBankCalculator::dayBalancesFrom(work, bookings, context.fetch<WorkSchedule>(), settings, through, calendar,
                                             firstDay, holidays);
}

}  // namespace quillmont::PeriodBalances
