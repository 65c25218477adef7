// Week and month reports, chart ranges and the two CSV documents.
#include "core/reports/TimeBankReporting.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmont {
namespace {

using Adjustments = std::vector<std::shared_ptr<BalanceAdjustment>>;

constexpr double hour = 3600.0;

Date at(const Calendar& calendar, int year, int month, int day, double hours = 0) {
  return *calendar.date(year, month, day) + hours * hour;
}

std::shared_ptr<BalanceAdjustment> adjustment(Date date, std::int64_t minutes) {
  return std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, "", BalanceAdjustmentKind::manual, date, date);
}

TimeBankReport reportOfBalances(std::initializer_list<double> hours) {
  TimeBankReport report;
  for (const double each : hours) report.days.push_back({Date(0), 0, each * hour, 0});
  return report;
}

TEST(TimeBankReporting, MonthAndWeekReportsKeepTheDaysOfTheirPeriod) {
  const auto germany = *Calendar::make("Europe/Berlin", "de_DE");
  std::vector<DayBalance> days;
  for (Date day = at(germany, 2026, 4, 2); day >= at(germany, 2026, 2, 25); day = germany.startOfDay(day - hour)) {
    days.push_back({day, hour, -60, 2 * hour});  // newest first: the report keeps the given order
  }
  const auto march = TimeBankReporting::report(days, at(germany, 2026, 3, 15, 12), ReportGranularity::month, germany);
  EXPECT_EQ(march.interval, DateInterval::between(at(germany, 2026, 3, 1), at(germany, 2026, 4, 1)));
  ASSERT_EQ(march.days.size(), 31u);
  EXPECT_EQ(march.days.front().date, at(germany, 2026, 3, 31));
  EXPECT_EQ(march.days.back().date, at(germany, 2026, 3, 1));
  EXPECT_EQ(march.workedSeconds(), 31 * hour);
  EXPECT_EQ(march.adjustmentSeconds(), -31 * 60);
  EXPECT_EQ(march.expectedSeconds(), 62 * hour);
  EXPECT_EQ(march.balanceSeconds(), 31 * (-hour - 60));

  // A Sunday belongs to the week that began on Monday in Germany, to its own week in the US.
  const Date sunday = at(germany, 2026, 3, 8, 10);
  const auto mondayWeek = TimeBankReporting::report(days, sunday, ReportGranularity::week, germany);
  EXPECT_EQ(mondayWeek.interval.start, at(germany, 2026, 3, 2));
  EXPECT_EQ(mondayWeek.days.size(), 7u);
  const auto us = *Calendar::make("Europe/Berlin", "en_US");
  EXPECT_EQ(TimeBankReporting::report(days, sunday, ReportGranularity::week, us).interval.start, at(us, 2026, 3, 8));

  EXPECT_TRUE(TimeBankReporting::report({}, sunday, ReportGranularity::month, germany).days.empty());
  EXPECT_EQ(ReportGranularity::fromRawValue("month"), ReportGranularity::month);
  EXPECT_EQ(ReportGranularity::fromRawValue("Week"), std::nullopt);
  EXPECT_EQ(ReportGranularity(ReportGranularity::week).rawValue(), "week");
}

TEST(TimeBankReporting, ChartHourRangeIncludesZeroAndAMargin) {
  using Range = TimeBankReporting::HourRange;
  const auto range = [](std::initializer_list<double> hours) { return TimeBankReporting::chartHourRange(reportOfBalances(hours)); };
  EXPECT_EQ(range({}), (Range{0, 1}));
  EXPECT_EQ(range({2, 0.5}), (Range{0, 2 * 1.1}));
  EXPECT_EQ(range({0.3}), (Range{0, 1}));
  EXPECT_EQ(range({-3, -1}), (Range{-3 * 1.1, 0}));
  EXPECT_EQ(range({-0.2}), (Range{-1, 0}));
  EXPECT_EQ(range({-2, 4}), (Range{-2 * 1.1, 4 * 1.1}));
  // A day that is not a number is left out of the range but not out of the sums.
  const auto withNaN = reportOfBalances({NAN, 4, INFINITY});
  EXPECT_EQ(TimeBankReporting::chartHourRange(withNaN), (Range{0, 4 * 1.1}));
  EXPECT_TRUE(std::isnan(withNaN.balanceSeconds()));
}

TEST(TimeBankReporting, DayTableRowsInTheCalendarsSystemAndZone) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const TimeBankReport report{DateInterval(), {{at(berlin, 2026, 3, 2), 7.5 * hour, 0, 8 * hour},
                                               {at(berlin, 2026, 3, 3), 0, -3.6, 0},
                                               {at(berlin, 2026, 3, 4), 450, 1'350, -1e6 * hour}}};
  EXPECT_EQ(TimeBankReporting::csv(report, berlin),
            "date,worked_hours,adjustment_hours,planned_hours,difference_hours\n"
            "2026-03-02,7.50,0.00,8.00,-0.50\n"
            "2026-03-03,0.00,-0.00,0.00,-0.00\n"
            "2026-03-04,0.12,0.38,-1000000.00,1000000.50\n");  // 0.125 and 0.375 round to even, as "%.2f" does
  EXPECT_EQ(TimeBankReporting::csv(TimeBankReport{}, berlin),
            "date,worked_hours,adjustment_hours,planned_hours,difference_hours\n");

  const auto buddhist = *Calendar::make("Asia/Bangkok", "th_TH@calendar=buddhist");
  const TimeBankReport thai{DateInterval(), {{buddhist.startOfDay(at(berlin, 2026, 3, 2, 12)), 0, 0, 0}}};
  EXPECT_EQ(TimeBankReporting::csv(thai, buddhist),
            "date,worked_hours,adjustment_hours,planned_hours,difference_hours\n2569-03-02,0.00,0.00,0.00,0.00\n");
}

TEST(TimeBankReporting, LedgerTableSumsEachBookedDay) {
  const auto saoPaulo = *Calendar::make("America/Sao_Paulo");
  const Date monday = at(saoPaulo, 2018, 10, 29);
  const Date end = saoPaulo.startOfDay(monday + 7 * 24 * hour);
  const Adjustments adjustments{
      adjustment(monday + 30 * hour, 90), adjustment(end, 600),  adjustment(monday + 31 * hour, -30),
      adjustment(monday + 23.5 * hour, 0), adjustment(monday, -45), adjustment(monday + 32 * hour, 15)};
  EXPECT_EQ(TimeBankReporting::ledgerCSV(adjustments, DateInterval::between(monday, end), saoPaulo),
            "date,added_hours,removed_hours,net_change_hours\n"
            "2018-10-29,0.00,0.75,-0.75\n"  // 23:30 local is already Tuesday in UTC
            "2018-10-30,1.75,0.50,1.25\n");
  EXPECT_EQ(TimeBankReporting::ledgerCSV(adjustments, DateInterval(end + hour, hour), saoPaulo),
            "date,added_hours,removed_hours,net_change_hours\n");

  // Far dates get their day from the calendar itself; rows stay ascending.
  const auto buddhist = *Calendar::make("Asia/Bangkok", "th_TH@calendar=buddhist");
  const Adjustments spread{adjustment(at(buddhist, 2843, 1, 1, 12), 60), adjustment(at(buddhist, 2569, 3, 2, 23.5), 30),
                           adjustment(at(buddhist, 2393, 5, 5, 1), -60)};
  EXPECT_EQ(TimeBankReporting::ledgerCSV(spread, DateInterval::between(Date(-1e11), Date(1e11)), buddhist),
            "date,added_hours,removed_hours,net_change_hours\n"
            "2393-05-05,0.00,1.00,-1.00\n"
            "2569-03-02,0.50,0.00,0.50\n"
            "2843-01-01,1.00,0.00,1.00\n");
}

}  // namespace
}  // namespace quillmont
