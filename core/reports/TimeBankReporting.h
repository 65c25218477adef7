// TimeBankReporting: week and month reports over day balances, the hour
// range a chart of a report's daily balances spans, and the two CSV
// documents (the day table of a report, the ledger table of adjustments).
// Pure functions; the documents are returned whole, writing them is the
// caller's business.
//
// CSV: one header line, then one row per day, every line ending in a line
// feed; dates as yyyy-MM-dd in the calendar passed in (its system and time
// zone); hours with two decimals, a full stop, no grouping, whatever the
// user's locale.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "core/engine/DayBalance.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/reports/ReportGranularity.h"
#include "core/reports/TimeBankReport.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont::TimeBankReporting {

/// A closed range of hours, lowerBound <= 0 <= upperBound.
struct HourRange {
  double lowerBound = 0;
  double upperBound = 1;

  friend constexpr bool operator==(const HourRange&, const HourRange&) = default;
};

inline constexpr std::string_view dayTableHeader = "date,worked_hours,adjustment_hours,planned_hours,difference_hours";
inline constexpr std::string_view ledgerTableHeader = "date,added_hours,removed_hours,net_change_hours";

/// The calendar week (by the calendar's first weekday) or month containing
/// `containing`, with the given days that start inside it. When the calendar
/// cannot tell the period, a zero-length interval at `containing` (no days).
TimeBankReport report(std::span<const DayBalance> days, Date containing, ReportGranularity granularity,
                      const Calendar& calendar);
/// Any range of days: the given days that start inside `interval`.
TimeBankReport report(std::span<const DayBalance> days, const DateInterval& interval);

/// The hours a bar chart of the report's daily balances spans: it always
/// includes 0, spans at least one hour and leaves a 10 % margin beyond the
/// most extreme day. Days whose balance is not finite are ignored; without
/// any, 0 ... 1.
HourRange chartHourRange(const TimeBankReport& report);

/// The day table: date, worked, adjustment, planned and difference hours of
/// each day of the report, in the report's order.
std::string csv(const TimeBankReport& report, const Calendar& calendar);

/// The ledger table: for each day with adjustments dated in `interval` (its
/// end excluded), ascending, the hours added, the hours removed (as a
/// positive number) and the net change.
std::string ledgerCSV(std::span<const std::shared_ptr<BalanceAdjustment>> adjustments, const DateInterval& interval,
                      const Calendar& calendar);

}  // namespace quillmont::TimeBankReporting
