// Black-box tests of reports and CSV documents: the program prints what the
// core computes from the same store.
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/input/DateInput.h"
#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/reports/TimeBankReporting.h"
#include "platform/foundation/Text.h"

namespace quillmont {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::CommandRunner;
using testing::StoreProbe;

// A set-up bank with work, bookings and a schedule change in March 2025.
void fillMarch2025(const CommandRunner& quillmont) {
  const std::vector<std::vector<std::string>> commands{
      {"setup", "--start", "2025-02-24", "--week", "8h,8h,8h,8h,8h,0,0"},
      {"schedule", "add", "2025-03-17", "6h,6h,6h,6h,6h,0,0"},
      {"work", "add", "--start", "2025-03-03 08:00", "--end", "2025-03-03 16:15", "--break", "30"},
      {"work", "add", "--start", "2025-03-04 09:00", "--end", "2025-03-04 18:00"},
      {"work", "add", "--start", "2025-03-04 17:00", "--end", "2025-03-04 19:00", "--force"},  // overlaps the one before
      {"work", "add", "--start", "2025-03-17 22:00", "--end", "2025-03-18 02:00"},  // over midnight
      {"work", "add", "--start", "2025-03-30 01:00", "--end", "2025-03-30 04:00"},  // clocks go forward
      {"book", "-2h", "--category", "appointment", "--day", "2025-03-05"},
      {"book", "8h", "--category", "holiday", "--day", "2025-03-07"},
      {"book", "1:15", "--note", "correction", "--day", "2025-03-31"},
      {"book", "-0:20", "--day", "2025-04-01"}};
  for (const auto& arguments : commands) {
    const auto result = quillmont.run(arguments);
    ASSERT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.err;
  }
}

std::string coreMonthCsv(const CommandRunner& quillmont, DateInput::Day day) {
  StoreProbe store(quillmont);
  ModelContext& context = store.context();
  const Calendar calendar = StoreProbe::calendar();
  const Date date = DateInput::midday(day, calendar);
  const auto month = calendar.dateInterval(Calendar::Unit::month, date);
  const auto settings = context.fetch<TimeBankSettings>();
  EXPECT_EQ(settings.size(), 1u);
  const auto days =
      TimeBankCalculator::dayBalances(context.fetch<WorkEntry>(), context.fetch<BalanceAdjustment>(),
                                      context.fetch<WorkSchedule>(), *settings.front(), month->end(), calendar);
  return TimeBankReporting::csv(TimeBankReporting::report(days, date, ReportGranularity::month, calendar), calendar);
}

TEST(ReportCommands, MonthCsvIsTheCoresDayTableOfTheSameStore) {
  CommandRunner quillmont;
  fillMarch2025(quillmont);
  const auto csv = quillmont.run({"csv", "days", "--period", "month", "--date", "2025-03-15"});
  ASSERT_EQ(csv.exitCode, 0) << csv.err;
  EXPECT_EQ(csv.out, coreMonthCsv(quillmont, {2025, 3, 15}));
  EXPECT_THAT(csv.out, HasSubstr("\n2025-03-03,7.75,0.00,8.00,-0.25\n"));
  EXPECT_THAT(csv.out, HasSubstr("\n2025-03-04,10.00,0.00,8.00,2.00\n"));
  EXPECT_THAT(csv.out, HasSubstr("\n2025-03-07,0.00,8.00,8.00,0.00\n"));
  EXPECT_THAT(csv.out, HasSubstr("\n2025-03-17,2.00,0.00,6.00,-4.00\n"));

  const auto file = quillmont.home() / "march.csv";
  const auto written = quillmont.run({"csv", "days", "--date", "2025-03-01", "--output", file.string()});
  ASSERT_EQ(written.exitCode, 0) << written.err;
  EXPECT_EQ(testing::readFile(file), csv.out);

  const auto week = quillmont.run({"csv", "days", "--period", "week", "--date", "2025-03-05"});
  EXPECT_EQ(week.out, std::string(TimeBankReporting::dayTableHeader) +
                          "\n2025-03-03,7.75,0.00,8.00,-0.25\n2025-03-04,10.00,0.00,8.00,2.00\n"
                          "2025-03-05,0.00,-2.00,8.00,-10.00\n2025-03-06,0.00,0.00,8.00,-8.00\n"
                          "2025-03-07,0.00,8.00,8.00,0.00\n2025-03-08,0.00,0.00,0.00,0.00\n"
                          "2025-03-09,0.00,0.00,0.00,0.00\n");

  const auto ledger = quillmont.run({"csv", "ledger", "--from", "2025-03-01", "--to", "2025-03-31"});
  EXPECT_EQ(ledger.out, std::string(TimeBankReporting::ledgerTableHeader) +
                            "\n2025-03-05,0.00,2.00,-2.00\n2025-03-07,8.00,0.00,8.00\n2025-03-31,1.25,0.00,1.25\n");
}

TEST(ReportCommands, ReportPrintsDaysSumsAndChart) {
  CommandRunner quillmont;
  fillMarch2025(quillmont);
  const auto week = quillmont.run({"report", "week", "--date", "2025-03-05"});
  ASSERT_EQ(week.exitCode, 0) << week.err;
  EXPECT_THAT(week.out, HasSubstr("Week 2025-03-03 to 2025-03-09"));
  EXPECT_THAT(week.out, HasSubstr("Mon 2025-03-03"));
  EXPECT_THAT(week.out, HasSubstr("\u2588"));
  EXPECT_THAT(week.out, HasSubstr("Total"));
  EXPECT_THAT(week.out, HasSubstr("\u221216:15"));  // the week's balance
  const auto month = quillmont.run({"report", "month", "--date", "2025-03-20"});
  EXPECT_THAT(month.out, HasSubstr("Month 2025-03-01 to 2025-03-31"));
  EXPECT_THAT(quillmont.run({"report", "month", "--date", "2024-01-01"}).out, HasSubstr("No days to report"));
  // The chart's scale speaks like its cells: hours and minutes, a true minus.
  EXPECT_THAT(month.out, ContainsRegex("Difference  \u2212[0-9]+:[0-9]{2} \u2026 \\+[0-9]+:[0-9]{2}\n"));
  EXPECT_THAT(month.out, Not(HasSubstr(" h ")));
}

TEST(ReportCommands, AnyRangeOrYearWithItsCsvAndCategoryTotals) {
  CommandRunner quillmont;
  fillMarch2025(quillmont);
  ASSERT_EQ(quillmont.run({"book", "-30", "-c", "appointment", "-d", "2025-03-04"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-15", "-c", "appointment", "-d", "2025-03-05"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "8h", "-c", "holiday", "-d", "2025-03-20"}).exitCode, 0);

  const auto days = quillmont.run({"report", "--from", "2025-03-04", "--to", "2025-03-06"});
  ASSERT_EQ(days.exitCode, 0) << days.err;
  EXPECT_THAT(days.out, HasSubstr("Days 2025-03-04 to 2025-03-06\n"));
  EXPECT_THAT(days.out, HasSubstr("Tue 2025-03-04"));
  EXPECT_THAT(days.out, HasSubstr("Thu 2025-03-06"));
  EXPECT_THAT(days.out, Not(HasSubstr("2025-03-07")));
  // Only the bookings of those days, by category.
  EXPECT_THAT(days.out, ContainsRegex("Appointment +3 +\u22122:45\n"));
  EXPECT_THAT(days.out, Not(HasSubstr("holiday")));

  // A range's CSV has exactly the range's days, and agrees with the month's rows.
  const auto rangeCsv = quillmont.run({"csv", "days", "--from", "2025-03-04", "--to", "2025-03-06"});
  ASSERT_EQ(rangeCsv.exitCode, 0) << rangeCsv.err;
  const auto monthCsv = quillmont.run({"csv", "days", "--date", "2025-03-15"});
  const auto lines = [](const std::string& text) {
    std::vector<std::string> result;
    std::stringstream stream(text);
    for (std::string line; std::getline(stream, line);) result.push_back(line);
    return result;
  };
  const auto range = lines(rangeCsv.out);
  const auto month = lines(monthCsv.out);
  ASSERT_EQ(range.size(), 4u);
  ASSERT_GE(month.size(), 7u);
  EXPECT_EQ(std::vector(range.begin() + 1, range.end()), std::vector(month.begin() + 4, month.begin() + 7));

  const auto year = quillmont.run({"report", "year", "--date", "2025-06-01"});
  ASSERT_EQ(year.exitCode, 0) << year.err;
  EXPECT_THAT(year.out, HasSubstr("Year 2025-01-01 to 2025-12-31\n"));
  EXPECT_THAT(year.out, ContainsRegex("Public holiday +2 +\\+16:00\n"));
  const auto yearCsv = quillmont.run({"csv", "days", "--period", "year", "--date", "2025-06-01"});
  EXPECT_THAT(yearCsv.out, HasSubstr("2025-03-20,"));
  EXPECT_THAT(yearCsv.out, HasSubstr("2025-12-31,"));
}

TEST(ReportCommands, TheChartFitsTheTerminalOrIsLeftOut) {
  CommandRunner quillmont;
  fillMarch2025(quillmont);
  const auto widest = [](const std::string& text) {
    std::size_t columns = 0;
    std::stringstream stream(text);
    for (std::string line; std::getline(stream, line);) columns = std::max(columns, Text::displayWidth(line));
    return columns;
  };
  quillmont.setEnvironment("COLUMNS", "80");
  const auto narrow = quillmont.run({"report", "week", "--date", "2025-03-05"});
  EXPECT_LE(widest(narrow.out), 80u);
  EXPECT_THAT(narrow.out, HasSubstr("\u2588"));
  quillmont.setEnvironment("COLUMNS", "50");
  const auto tight = quillmont.run({"report", "week", "--date", "2025-03-05"});
  EXPECT_THAT(tight.out, Not(HasSubstr("\u2588")));
  EXPECT_THAT(tight.out, HasSubstr("Total"));
  quillmont.setEnvironment("COLUMNS", "");
  EXPECT_THAT(quillmont.run({"report", "week", "--date", "2025-03-05"}).out, HasSubstr("\u2588"));
}

}  // namespace
}  // namespace quillmont
