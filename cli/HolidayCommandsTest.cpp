// Black-box tests of `quillmont import-holidays`: a real iCalendar file read
// through libical, booked once however often it is imported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using testing::CommandRunner;
using testing::StoreProbe;

constexpr const char* holidays = R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Quillmont tests//EN
BEGIN:VEVENT
UID:new-year@holidays.test
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20250101
DTEND;VALUE=DATE:20250102
RRULE:FREQ=YEARLY;COUNT=3
SUMMARY:New Year's Day
END:VEVENT
BEGIN:VEVENT
UID:christmas-2026@holidays.test
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20261224
DTEND;VALUE=DATE:20261227
SUMMARY:Christmas
END:VEVENT
END:VCALENDAR
)";

TEST(HolidayCommands, BooksWorkingDaysOnceAndCanBeUndone) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2025-06-02", "--week", "8h,8h,8h,8h,6h,0,0"}).exitCode, 0);
  const auto file = quillmont.home() / "holidays.ics";
  std::ofstream(file) << holidays;

  const auto dryRun = quillmont.run({"import-holidays", file.string(), "--dry-run"});
  ASSERT_EQ(dryRun.exitCode, 0) << dryRun.err;
  // 2025-01-01 lies before the start; 2026-01-01 is a Thursday, 2027-01-01 a
  // Friday; Christmas covers Thursday to Saturday.
  EXPECT_THAT(dryRun.out, ContainsRegex("Wed 2025-01-01 +New Year's Day +before the calculation start"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Thu 2026-01-01 +New Year's Day +would book \\+8:00"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Fri 2026-12-25 +Christmas +would book \\+6:00"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Sat 2026-12-26 +Christmas +not a working day"));
  EXPECT_THAT(dryRun.err, HasSubstr("Would book 4 holidays (+28:00)"));
  StoreProbe store(quillmont);
  EXPECT_TRUE(store.context().fetch<BalanceAdjustment>().size() <= 1);  // at most the ledger's marker

  const auto imported = quillmont.run({"import-holidays", file.string()});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  EXPECT_THAT(imported.err, HasSubstr("Booked 4 holidays (+28:00)."));
  const auto again = quillmont.run({"import-holidays", file.string()});
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.err, HasSubstr("Nothing to book"));
  const auto listed = quillmont.run({"bookings", "list", "--all", "--json"});
  EXPECT_THAT(listed.out, HasSubstr("\"count\" : 4"));
  EXPECT_THAT(listed.out, HasSubstr("\"category\" : \"holiday\""));

  ASSERT_EQ(quillmont.run({"undo"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"bookings", "list", "--all", "--json"}).out, HasSubstr("\"count\" : 0"));
}

TEST(HolidayCommands, FilesThatAreNoCalendarAreRefused) {
  CommandRunner quillmont;
  const auto file = quillmont.home() / "notes.ics";
  std::ofstream(file) << "shopping list\n";
  const auto refused = quillmont.run({"import-holidays", file.string()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("quillmont: "));
  EXPECT_EQ(quillmont.run({"import-holidays", (quillmont.home() / "missing.ics").string()}).exitCode, 1);
}

TEST(HolidayCommands, EndlessStreamsAndForeignControlCharactersAreHandled) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2025-06-02"}).exitCode, 0);
  // A stream without end is read up to a limit, then refused.
  const auto endless = quillmont.run({"import-holidays", "/dev/zero"});
  EXPECT_EQ(endless.exitCode, 1);
  EXPECT_THAT(endless.err, HasSubstr("larger than"));

  // A summary that would drive the terminal is shown, not obeyed.
  std::string calendar = holidays;
  calendar.replace(calendar.find("SUMMARY:Christmas"), 17, "SUMMARY:Christ\x1b[2Jmas\x1b]0;owned\x07");
  const auto file = quillmont.home() / "hostile.ics";
  std::ofstream(file) << calendar;
  const auto shown = quillmont.run({"import-holidays", file.string(), "--dry-run"});
  ASSERT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_EQ(shown.out.find('\x1b'), std::string::npos);
  EXPECT_EQ(shown.out.find('\x07'), std::string::npos);
  EXPECT_THAT(shown.out, HasSubstr("Christ\\x1B[2Jmas"));
}

}  // namespace
}  // namespace quillmont
