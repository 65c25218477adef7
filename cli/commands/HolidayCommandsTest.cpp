// Black-box tests of `quillmont import-holidays`: a real iCalendar file read
// through libical, booked once however often it is imported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/engine/HolidayBookings.h"
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

TEST(HolidayCommands, HolidaysPlanNothingAndBookNothing) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2025-06-02", "--week", "8h,8h,8h,8h,6h,0,0"}).exitCode, 0);
  const auto file = quillmont.home() / "holidays.ics";
  std::ofstream(file) << holidays;

  const auto dryRun = quillmont.run({"import-holidays", file.string(), "--dry-run"});
  ASSERT_EQ(dryRun.exitCode, 0) << dryRun.err;
  // 2025-01-01 lies before the start; 2026-01-01 is a Thursday, 2027-01-01 a
  // Friday; Christmas covers Thursday to Saturday.
  EXPECT_THAT(dryRun.out, ContainsRegex("Wed 2025-01-01 +New Year's Day +before the calculation start"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Thu 2026-01-01 +New Year's Day +planned 8:00 would become 0:00"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Fri 2026-12-25 +Christmas +planned 6:00 would become 0:00"));
  EXPECT_THAT(dryRun.out, ContainsRegex("Sat 2026-12-26 +Christmas +not a working day"));
  EXPECT_THAT(dryRun.err, HasSubstr("Would add 6 holidays (28:00 of planned time becomes 0:00; nothing is booked)"));
  EXPECT_THAT(quillmont.run({"report", "--from", "2026-01-01", "--to", "2026-01-01"}).out,
              ContainsRegex("Thu 2026-01-01 +0:00 +\\+0:00 +8:00"));

  const auto imported = quillmont.run({"import-holidays", file.string()});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  EXPECT_THAT(imported.err, HasSubstr("Added 6 holidays"));
  // A fresh bank stays at 0:00: nobody owed or worked anything.
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"balance\" : \"+0:00\""));
  EXPECT_THAT(quillmont.run({"bookings", "list", "--all", "--json"}).out, HasSubstr("\"count\" : 0"));
  // The report plans 0:00 on the holiday and names it.
  EXPECT_THAT(quillmont.run({"report", "--from", "2026-01-01", "--to", "2026-01-02"}).out,
              ContainsRegex("Thu 2026-01-01 New Year's Day +0:00 +\\+0:00 +0:00 +\\+0:00"));
  const auto json = quillmont.run({"report", "--from", "2026-01-01", "--to", "2026-01-02", "--json"}).out;
  EXPECT_THAT(json, HasSubstr("\"holiday\" : \"New Year's Day\""));
  EXPECT_THAT(json, HasSubstr("\"holiday\" : null"));
  // Settling that week owes nothing for the holiday.
  EXPECT_THAT(quillmont.run({"settle", "--from", "2026-01-01", "--through", "2026-01-01", "--dry-run"}).err,
              HasSubstr("Nothing to settle"));

  const auto again = quillmont.run({"import-holidays", file.string()});
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.out, ContainsRegex("Thu 2026-01-01 +New Year's Day +imported before"));
  EXPECT_THAT(again.err, HasSubstr("Nothing to add"));
}

TEST(HolidayCommands, HolidaysBookedByEarlierVersionsAreLeftAsTheyAre) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2025-06-02", "--week", "8h,8h,8h,8h,6h,0,0"}).exitCode, 0);
  {
    StoreProbe store(quillmont);
    const Date noon = *StoreProbe::calendar().date(2026, 1, 1) + 12 * 3600;
    store.context().insert(std::make_shared<BalanceAdjustment>(
        HolidayBookings::identifier("new-year@holidays.test", "2026-01-01"), noon, 480, "New Year's Day",
        BalanceAdjustmentKind::holiday, noon, noon));
    store.context().save();
  }
  const auto file = quillmont.home() / "holidays.ics";
  std::ofstream(file) << holidays;

  const auto dryRun = quillmont.run({"import-holidays", file.string(), "--dry-run"});
  EXPECT_THAT(dryRun.out, ContainsRegex("Thu 2026-01-01 +New Year's Day +booked before as a credit; left as it is"));
  ASSERT_EQ(quillmont.run({"import-holidays", file.string()}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"balance\" : \"+8:00\""));
  const auto listed = quillmont.run({"bookings", "list", "--all", "--json"}).out;
  EXPECT_THAT(listed, HasSubstr("\"count\" : 1"));
  // The day keeps its planned time, which the credit meets.
  EXPECT_THAT(quillmont.run({"report", "--from", "2026-01-01", "--to", "2026-01-01"}).out,
              ContainsRegex("Thu 2026-01-01 +0:00 +\\+8:00 +8:00 +\\+0:00"));
}

TEST(HolidayCommands, HolidaysTravelWithSync) {
  CommandRunner office;
  CommandRunner laptop;
  const auto folder = office.home() / "shared";
  for (const CommandRunner* machine : {&office, &laptop}) {
    ASSERT_EQ(machine->run({"setup", "--start", "2025-06-02", "--week", "8h,8h,8h,8h,6h,0,0"}).exitCode, 0);
    ASSERT_EQ(machine->run({"sync", "setup", folder.string()}).exitCode, 0);
  }
  const auto file = office.home() / "holidays.ics";
  std::ofstream(file) << holidays;
  ASSERT_EQ(office.run({"import-holidays", file.string()}).exitCode, 0);
  ASSERT_EQ(office.run({"sync"}).exitCode, 0);
  const auto merged = laptop.run({"sync"});
  ASSERT_EQ(merged.exitCode, 0) << merged.err;
  EXPECT_THAT(merged.out, HasSubstr("Added 6 public holidays."));
  EXPECT_THAT(laptop.run({"report", "--from", "2026-01-01", "--to", "2026-01-01"}).out,
              ContainsRegex("Thu 2026-01-01 New Year's Day +0:00 +\\+0:00 +0:00"));
  EXPECT_THAT(laptop.run({"import-holidays", file.string()}).err, HasSubstr("Nothing to add"));
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
