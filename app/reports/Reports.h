// Reports: the computed time bank of a calendar week or month, an ISO year
// or any run of days: each day's worked time, adjustments, planned time and
// difference (day balances through the period's end or now, whichever is
// earlier; nothing is planned on public holidays), the sums, the chart's hour
// range, the bookings' totals by category, and the two CSV documents.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/input/DateInput.h"
#include "core/engine/PublicHolidays.h"
#include "core/reports/TimeBankReport.h"
#include "core/reports/TimeBankReporting.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

class StoreSession;

namespace Reports {

/// What a report covers: a calendar week or month (by the user's calendar),
/// an ISO year, or days chosen one by one.
enum class Span { week, month, year, days };

/// The week, month or year (by the calendar) that contains `day`; for
/// Span::days, the day alone.
DateInterval periodAround(Span span, const DateInput::Day& day, const Calendar& calendar);

struct Report {
  TimeBankReport report;
  /// The public holidays the store keeps, to name the report's days.
  std::vector<PublicHolidays::Holiday> holidays;
  /// The period's last day (its start).
  Date lastDay;
  /// Today, when the period reaches past today: the report counts through it.
  std::optional<Date> throughToday;
  /// The hour range a chart of the days' differences spans.
  TimeBankReporting::HourRange chartRange;

  /// The holiday's name when `day` is a public holiday.
  std::optional<std::string> holidayOn(Date day) const;
};

/// The report over `interval`.
Report make(StoreSession& session, const DateInterval& interval);

/// The report's bookings by category, in order of first booking by date,
/// then identifier: how many and their sum. Settlements make a line of
/// their own ("Settled worked time"); bookings of 0:00 are left out.
struct CategoryTotal {
  std::string title;
  /// The category's stored text (of its first booking in the period).
  std::string category;
  std::int64_t count = 0;
  double seconds = 0;
};
std::vector<CategoryTotal> categoryTotals(StoreSession& session, const TimeBankReport& report);

/// Worked, adjustment, planned and difference hours per day of `interval`.
std::string daysCSV(StoreSession& session, const DateInterval& interval);
/// Hours added, removed and the net change per day of bookings in `interval`.
std::string ledgerCSV(StoreSession& session, const DateInterval& interval);

}  // namespace Reports
}  // namespace quillmont
