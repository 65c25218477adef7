// Black-box tests of `quillmont settle` and the unsettled time the overview
// shows: each day settled once, on one machine or two, and undone whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "cli/commands/BookingCommands.h"
#include "app/input/DateInput.h"
#include "cli/testing/CommandRunner.h"
#include "platform/foundation/Calendar.h"

namespace quillmont {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::CommandResult;
using testing::CommandRunner;

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// A week of eight hours a day from Monday 2026-03-02, with 10:15 worked on
// the Monday and 8:00 on the Tuesday.
void setUpWeek(const CommandRunner& quillmont) {
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-03-02", "--week", "8h,8h,8h,8h,8h,0,0"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:00", "--end", "2026-03-02 18:15"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-03 09:00", "--end", "2026-03-03 17:00"}).exitCode, 0);
}

TEST(SettleCommands, SettlesEachDayOnceAndUndoTakesTheSettlementBack) {
  CommandRunner quillmont;
  setUpWeek(quillmont);
  const std::vector<std::string> settle{"settle", "--from", "2026-03-02", "--through", "2026-03-04"};

  auto dryRun = settle;
  dryRun.push_back("--dry-run");
  const CommandResult planned = quillmont.run(dryRun);
  ASSERT_EQ(planned.exitCode, 0) << planned.err;
  EXPECT_THAT(planned.out, ContainsRegex("Mon 2026-03-02 +\\+2:15 +would book \\+2:15"));
  EXPECT_THAT(planned.out, Not(HasSubstr("2026-03-03")));  // worked as planned: nothing to book
  EXPECT_THAT(planned.out, ContainsRegex("Wed 2026-03-04 +−8:00 +would book −8:00"));
  EXPECT_THAT(planned.err,
              HasSubstr("Would settle 2 days (−5:45) from 2026-03-02 through 2026-03-04; nothing was changed."));
  EXPECT_THAT(quillmont.run({"bookings", "list", "--all", "--json"}).out, HasSubstr("\"count\" : 0"));

  const CommandResult settled = quillmont.run(settle);
  ASSERT_EQ(settled.exitCode, 0) << settled.err;
  EXPECT_THAT(settled.err, HasSubstr("Settled 2 days (−5:45) from 2026-03-02 through 2026-03-04."));
  const std::string listed = quillmont.run({"bookings", "list", "--all", "--json"}).out;
  EXPECT_THAT(listed, HasSubstr("\"count\" : 2"));
  EXPECT_THAT(listed, HasSubstr("\"note\" : \"Settlement of 2026-03-02\""));
  EXPECT_THAT(listed, HasSubstr("\"category\" : \"manual\""));
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"balance\" : \"−5:45\""));
  // The report still shows each day's own difference: a settlement is not an
  // adjustment of the day, and the category totals name it apart.
  const std::string report = quillmont.run({"report", "week", "--date", "2026-03-02"}).out;
  EXPECT_THAT(report, ContainsRegex("Mon 2026-03-02 +10:15 +\\+0:00 +8:00 +\\+2:15"));
  EXPECT_THAT(report, ContainsRegex("Settled worked time +2 +−5:45"));

  // Twice gives nothing new, also over a longer stretch that holds the days.
  const CommandResult again = quillmont.run(settle);
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.err, HasSubstr("Nothing to settle from 2026-03-02 through 2026-03-04"));
  const CommandResult longer = quillmont.run({"settle", "--through", "2026-03-05", "--dry-run"});
  EXPECT_THAT(longer.out, Not(HasSubstr("2026-03-02")));
  EXPECT_THAT(longer.err, HasSubstr("Would settle 1 day (−8:00)"));

  ASSERT_EQ(quillmont.run({"undo"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"bookings", "list", "--all", "--json"}).out, HasSubstr("\"count\" : 0"));
}

TEST(SettleCommands, RefusesDaysThatAreNotOverAndBanksNotSetUp) {
  CommandRunner quillmont;
  EXPECT_EQ(quillmont.run({"settle"}).exitCode, 1);
  setUpWeek(quillmont);
  const CommandResult today = quillmont.run({"settle", "--through", "today"});
  EXPECT_EQ(today.exitCode, 2);
  EXPECT_THAT(today.err, HasSubstr("--through must lie before today"));
  EXPECT_EQ(quillmont.run({"settle", "--from", "2026-03-05", "--through", "2026-03-04"}).exitCode, 2);
  EXPECT_EQ(quillmont.run({"settle", "--through", "someday"}).exitCode, 2);
}

// A ledger kept by bookings alone owes nothing to settle, and the days
// before work was first recorded are not counted against it.
TEST(SettleCommands, SaysWhenNoWorkIsRecordedAndListsFromTheFirstWork) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-02-23", "--week", "8h,8h,8h,8h,8h,0,0"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"overview"}).out, Not(HasSubstr("Unsettled")));
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"unsettledSeconds\" : 0"));
  const CommandResult nothing = quillmont.run({"settle", "--through", "2026-03-04"});
  EXPECT_EQ(nothing.exitCode, 0);
  EXPECT_THAT(nothing.err, HasSubstr("Nothing to settle: no work is recorded."));

  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:00", "--end", "2026-03-02 18:15"}).exitCode, 0);
  const CommandResult planned = quillmont.run({"settle", "--through", "2026-03-03", "--dry-run"});
  EXPECT_THAT(planned.out, Not(HasSubstr("2026-02-2")));
  EXPECT_THAT(planned.err, HasSubstr("Would settle 2 days (−5:45) from 2026-03-02 through 2026-03-03"));
}

TEST(SettleCommands, TheOverviewShowsWhatIsUnsettled) {
  CommandRunner quillmont;
  const auto berlin = *Calendar::make(std::string(CommandRunner::defaultTimeZone));
  const std::string yesterday = BookingCommands::dayText(DateInput::dayOf(Date::now(), berlin).adding(-1));
  ASSERT_EQ(quillmont.run({"setup", "--start", "yesterday", "--week", "8h,8h,8h,8h,8h,8h,8h"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", yesterday + " 08:00", "--end", yesterday + " 18:15"}).exitCode, 0);

  const CommandResult text = quillmont.run({"overview"});
  EXPECT_THAT(text.out, ContainsRegex("Unsettled +\\+2:15 since " + yesterday));
  const CommandResult json = quillmont.run({"overview", "--json"});
  EXPECT_THAT(json.out, HasSubstr("\"unsettledSeconds\" : 8100"));
  EXPECT_THAT(json.out, HasSubstr("\"unsettledSince\" : \"" + yesterday + "\""));

  ASSERT_EQ(quillmont.run({"settle"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"overview"}).out, Not(HasSubstr("Unsettled")));
  const CommandResult settled = quillmont.run({"overview", "--json"});
  EXPECT_THAT(settled.out, HasSubstr("\"unsettledSeconds\" : 0"));
  EXPECT_THAT(settled.out, HasSubstr("\"unsettledSince\" : null"));
  EXPECT_THAT(settled.out, HasSubstr("\"balance\" : \"+2:15\""));
}

TEST(SettleCommands, TwoStoresThatSettledTheSameDaysKeepOneBookingPerDayWhenMerged) {
  CommandRunner office;
  CommandRunner laptop;
  setUpWeek(office);
  setUpWeek(laptop);
  ASSERT_EQ(laptop.run({"settle", "--through", "2026-03-04"}).exitCode, 0);
  ASSERT_EQ(office.run({"settle", "--through", "2026-03-04"}).exitCode, 0);

  const auto archive = office.home() / "office.json";
  ASSERT_EQ(office.run({"export", archive.string()}).exitCode, 0);
  const CommandResult imported = laptop.run({"import", archive.string()});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  const std::string listed = laptop.run({"bookings", "list", "--all", "--json"}).out;
  EXPECT_EQ(occurrences(listed, "Settlement of 2026-03-02"), 1u) << listed;
  EXPECT_EQ(occurrences(listed, "Settlement of 2026-03-04"), 1u) << listed;
  EXPECT_THAT(laptop.run({"overview", "--json"}).out, HasSubstr("\"balance\" : \"−5:45\""));
  EXPECT_THAT(laptop.run({"settle", "--through", "2026-03-04"}).err, HasSubstr("Nothing to settle"));
}

}  // namespace
}  // namespace quillmont
