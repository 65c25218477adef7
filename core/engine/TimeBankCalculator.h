// TimeBankCalculator: the balance engine. It turns work entries, balance
// adjustments and weekly schedules into day balances and balances, in the
// calendar and time zone the caller passes. Pure functions: records are read,
// never changed, and nothing is cached between calls.
//
// Two models of the balance live here. The computed time bank counts, day by
// day from the calculation start, worked minus expected time plus
// adjustments (dayBalances, balanceSeconds). The manual ledger counts the
// starting balance and adjustments only (ledgerBalanceSeconds,
// ledgerDayBalances).
//
// Cost: the days of a range are computed once (Calendar::days); instants find
// their day by searching the day starts, and the governing schedule of each
// day comes from one pass over the schedules. The calendar is asked a few
// times per call, not per day or per record.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/engine/DayBalance.h"
#include "core/engine/WorkIntervals.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont::TimeBankCalculator {

using Entries = std::span<const std::shared_ptr<WorkEntry>>;
using Adjustments = std::span<const std::shared_ptr<BalanceAdjustment>>;
using Schedules = std::span<const std::shared_ptr<WorkSchedule>>;
/// Instants inside public holidays (any instant of each such day, in any
/// order): on those days nothing is expected. The operations that take it
/// default to none, which is the rule of the schedules alone.
using HolidayDays = std::span<const Date>;

/// The worked seconds of `entry` that fall inside `during`, a running entry
/// counted up to `asOf` (and a later end cut there). The break is spread
/// evenly over the entry, so a part carries its share of it. Never negative.
TimeInterval workedSeconds(const WorkEntry& entry, const DateInterval& during, Date asOf);

/// The worked seconds of `entries` taken together, running and later-ending
/// entries counted up to `asOf`: time that several entries cover counts once
/// and each cluster's breaks are subtracted once per distinct interval, as
/// the day balances count them (their sum over every day). Never negative.
TimeInterval workedSeconds(Entries entries, Date asOf);

/// One balance per day, ascending, from the day of the calculation start
/// (the settings' start, not before 1 January 2000) through the day of
/// `through`. Entries count up to `through`; adjustments count by whole day,
/// so one booked later on the day of `through` is included. Empty when the
/// calculation starts after the day of `through`, or when the calendar cannot
/// place `through` (not finite). On the days of `holidays` the expected
/// seconds are 0.
std::vector<DayBalance> dayBalances(Entries entries, Adjustments adjustments, Schedules schedules,
                                    const TimeBankSettings& settings, Date through, const Calendar& calendar,
                                    HolidayDays holidays = {});

/// One booking as a day balance reads it: when, and how many minutes.
struct BookedMinutes {
  Date date;
  std::int64_t minutes = 0;
};

/// dayBalances() from what it reads of the records: the entries' observed
/// intervals through `through` (detail::observedInterval) and the bookings'
/// dates and minutes, each in any order. A day comes out exactly as from
/// every record when the intervals include every interval of each cluster
/// (intervals connected by overlap or touch) that reaches into the day, and
/// the bookings every booking of the day; other days are then incomplete.
/// With `firstDay`, only the days from the day of `firstDay` on: the same
/// balances, without walking the days before. On the days of `holidays`
/// the expected seconds are 0.
std::vector<DayBalance> dayBalancesFrom(std::span<const detail::ObservedWorkInterval> intervals,
                                        std::span<const BookedMinutes> bookings, Schedules schedules,
                                        const TimeBankSettings& settings, Date through, const Calendar& calendar,
                                        std::optional<Date> firstDay = std::nullopt, HolidayDays holidays = {});

/// The starting balance plus the balances of all dayBalances(), in seconds.
TimeInterval balanceSeconds(Entries entries, Adjustments adjustments, Schedules schedules,
                            const TimeBankSettings& settings, Date through, const Calendar& calendar,
                            HolidayDays holidays = {});

/// Minutes expected on the day of `date` (0 ... 1440): from the schedule that
/// governs that day, else from the settings' weekdays. Among the schedules in
/// effect on the day (by the start of day of `effectiveFrom`), the one
/// effective on the latest day governs; ties go to the later `modifiedAt`,
/// then the later `createdAt`, then the greater `id`; among full ties the
/// first in the list.
std::int64_t scheduledMinutes(Date date, const TimeBankSettings& settings, Schedules schedules,
                              const Calendar& calendar);

/// The ledger balance: the starting balance plus every adjustment dated at
/// or before the instant `through`, whatever the calculation start.
TimeInterval ledgerBalanceSeconds(Adjustments adjustments, std::int64_t startingBalanceMinutes, Date through);
/// What one adjustment of `minutes` dated `date` adds to the ledger balance
/// at `through`; for summing a table without holding its records. Sums of
/// whole minutes are exact in any order.
TimeInterval ledgerSecondsOf(Date date, std::int64_t minutes, Date through);

/// One balance per day of `interval` (its end excluded) holding only the
/// adjustments booked in the interval.
std::vector<DayBalance> ledgerDayBalances(Adjustments adjustments, const DateInterval& interval,
                                          const Calendar& calendar);

}  // namespace quillmont::TimeBankCalculator
