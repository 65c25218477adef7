// PeriodBalances: the day balances of a stretch of days read from the store
// without reading the whole store. A report of one week of ten years needs
// the work that reaches into that week (with whatever work overlaps it in a
// chain, since a break is spread over such a chain as a whole), the bookings
// dated in it and the schedules; PeriodBalances reads only those rows,
// through the store's indexes, and gives those days exactly the balances
// TimeBankCalculator::dayBalances gives them from every record.
#pragma once

#include <vector>

#include "core/engine/DayBalance.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/engine/WorkIntervals.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"
#include "platform/store/RowFilter.h"

namespace quillmont::PeriodBalances {

/// About a year: over a longer stretch, reading every row in row order
/// costs less than choosing most of them through an index.
inline constexpr TimeInterval longStretch = 370 * 86400.0;

/// Every work entry whose interval through `through` reaches the time from
/// `from` on (ends at or after it and starts by `through`, or runs).
RowFilter reaching(Date from, Date through);

/// Completes `found`, the observed intervals through `through` of every
/// entry reaching(from, through) passes, with the work chained to them by
/// overlap or touch before `from`: every cluster that reaches `from` whole,
/// which is what a day's worked time needs. The store is read again only
/// when an interval found begins before `from`.
std::vector<TimeBankCalculator::detail::ObservedWorkInterval> wholeClusters(
    ModelContext& context, std::vector<TimeBankCalculator::detail::ObservedWorkInterval> found, Date from,
    Date through);

/// The worked seconds of the day of `asOf` up to `asOf`, exactly as the day
/// balances count them; `found` as for wholeClusters() from the day's start.
TimeInterval workedToday(ModelContext& context, std::vector<TimeBankCalculator::detail::ObservedWorkInterval> found,
                         Date asOf, const Calendar& calendar);

/// The balances of the days from the day of `from` through the day of
/// `through`, as TimeBankCalculator::dayBalances over every record of
/// `context` through `through` has them (the days before `from` left out),
/// with nothing expected on the days of `holidays`.
std::vector<DayBalance> read(ModelContext& context, const TimeBankSettings& settings, Date from, Date through,
                             const Calendar& calendar, TimeBankCalculator::HolidayDays holidays = {});

}  // namespace quillmont::PeriodBalances
