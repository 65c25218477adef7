// Black-box tests of reports and CSV documents: the program prints what the
// core computes from the same store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/DateInput.h"
#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/reports/TimeBankReporting.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;
using testing::StoreProbe;

// A set-up bank with work, bookings and a schedule change in March 2025.
void fillMarch2025(const CommandRunner& quillmont) {
  const std::vector<std::vector<std::string>> commands{
      {"setup", "--start", "2025-02-24", "--week", "8h,8h,8h,8h,8h,0,0"},
      {"schedule", "add", "2025-03-17", "6h,6h,6h,6h,6h,0,0"},
      {"work", "add", "--start", "2025-03-03 08:00", "--end", "2025-03-03 16:15", "--break", "30"},
      {"work", "add", "--start", "2025-03-04 09:00", "--end", "2025-03-04 18:00"},
      {"work", "add", "--start", "2025-03-04 17:00", "--end", "2025-03-04 19:00"},  // overlaps the one before
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
}

}  // namespace
}  // namespace quillmont
