#include "core/reports/TimeBankReporting.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <vector>

#include "core/engine/WorkIntervals.h"
#include "platform/foundation/DateFormatter.h"

namespace quillmont::TimeBankReporting {
namespace {

using TimeBankCalculator::detail::DayGrid;

constexpr double chartMargin = 1.1;
constexpr std::string_view dayFormat = "yyyy-MM-dd";

// Instants outside these years get their day from the calendar one by one
// instead of from a day grid, so a stray date cannot make the grid huge.
constexpr Date gridFloor = Date::fromTimeIntervalSince1970(-2'208'988'800.0);   // 1900-01-01 UTC
constexpr Date gridCeiling = Date::fromTimeIntervalSince1970(7'258'118'400.0);  // 2200-01-01 UTC

// Seconds as hours with two decimals, rounded like printf's "%.2f" in the
// C locale (to_chars rounds exactly and keeps the sign: -0.001 h is "-0.00").
void appendHours(std::string& text, TimeInterval seconds) {
  std::array<char, 400> buffer{};  // the longest double in fixed notation needs 313
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), seconds / 3600.0,
                                    std::chars_format::fixed, 2);
  text.append(buffer.data(), result.ptr);
}

struct LedgerDay {
  TimeInterval addedSeconds = 0;
  TimeInterval removedSeconds = 0;
  bool booked = false;

  void add(std::int64_t minutes) {
    booked = true;
    const TimeInterval seconds = static_cast<TimeInterval>(minutes) * 60.0;
    if (minutes > 0) addedSeconds += seconds;
    if (minutes < 0) removedSeconds += -seconds;
  }
};

void appendLedgerRow(std::string& text, const DateFormatter& formatter, Date day, const LedgerDay& sums) {
  text += formatter.string(day);
  text += ',';
  appendHours(text, sums.addedSeconds);
  text += ',';
  appendHours(text, sums.removedSeconds);
  text += ',';
  appendHours(text, sums.addedSeconds - sums.removedSeconds);
  text += '\n';
}

}  // namespace

TimeBankReport report(std::span<const DayBalance> days, Date containing, ReportGranularity granularity,
                      const Calendar& calendar) {
  const Calendar::Unit unit = granularity == ReportGranularity::week ? Calendar::Unit::weekOfYear : Calendar::Unit::month;
  return report(days, calendar.dateInterval(unit, containing).value_or(DateInterval(containing, 0)));
}

TimeBankReport report(std::span<const DayBalance> days, const DateInterval& interval) {
  TimeBankReport result{interval, {}};
  const Date start = interval.start;
  const Date end = interval.end();
  std::copy_if(days.begin(), days.end(), std::back_inserter(result.days),
               [&](const DayBalance& day) { return day.date >= start && day.date < end; });
  return result;
}

HourRange chartHourRange(const TimeBankReport& report) {
  std::optional<double> lowest;
  std::optional<double> highest;
  for (const DayBalance& day : report.days) {
    const double hours = day.balanceSeconds() / 3600.0;
    if (!std::isfinite(hours)) continue;
    if (!lowest || hours < *lowest) lowest = hours;
    if (!highest || hours > *highest) highest = hours;
  }
  if (!lowest) return {0, 1};
  if (*lowest >= 0) return {0, std::max(*highest * chartMargin, 1.0)};
  if (*highest <= 0) return {std::min(*lowest * chartMargin, -1.0), 0};
  return {*lowest * chartMargin, *highest * chartMargin};
}

std::string csv(const TimeBankReport& report, const Calendar& calendar) {
  const DateFormatter formatter(calendar, dayFormat);
  std::string text(dayTableHeader);
  text += '\n';
  for (const DayBalance& day : report.days) {
    text += formatter.string(day.date);
    for (const TimeInterval seconds : {day.workedSeconds, day.adjustmentSeconds, day.expectedSeconds, day.balanceSeconds()}) {
      text += ',';
      appendHours(text, seconds);
    }
    text += '\n';
  }
  return text;
}

std::string ledgerCSV(std::span<const std::shared_ptr<BalanceAdjustment>> adjustments, const DateInterval& interval,
                      const Calendar& calendar) {
  const Date start = interval.start;
  const Date end = interval.end();
  const auto inInterval = [&](const auto& adjustment) { return start <= adjustment->date() && adjustment->date() < end; };

  // The days of the booked range, for the dates inside the grid's years.
  std::optional<Date> earliest;
  std::optional<Date> latest;
  for (const auto& adjustment : adjustments) {
    const Date date = adjustment->date();
    if (!inInterval(adjustment) || date < gridFloor || date >= gridCeiling) continue;
    if (!earliest || date < *earliest) earliest = date;
    if (!latest || date > *latest) latest = date;
  }
  const DayGrid grid = earliest ? DayGrid::covering(calendar, *earliest, *latest) : DayGrid();

  // Sums per day in the order of the input.
  std::vector<LedgerDay> onGrid(grid.size());
  std::map<Date, LedgerDay> offGrid;
  for (const auto& adjustment : adjustments) {
    if (!inInterval(adjustment)) continue;
    const auto day = grid.dayContaining(adjustment->date());
    LedgerDay& sums = day ? onGrid[*day] : offGrid[calendar.startOfDay(adjustment->date())];
    sums.add(adjustment->minutes());
  }

  const DateFormatter formatter(calendar, dayFormat);
  std::string text(ledgerTableHeader);
  text += '\n';
  auto offGridDay = offGrid.begin();
  for (; offGridDay != offGrid.end() && (grid.empty() || offGridDay->first < grid.start(0)); ++offGridDay) {
    appendLedgerRow(text, formatter, offGridDay->first, offGridDay->second);
  }
  for (std::size_t day = 0; day < grid.size(); ++day) {
    if (onGrid[day].booked) appendLedgerRow(text, formatter, grid.start(day), onGrid[day]);
  }
  for (; offGridDay != offGrid.end(); ++offGridDay) appendLedgerRow(text, formatter, offGridDay->first, offGridDay->second);
  return text;
}

}  // namespace quillmont::TimeBankReporting
