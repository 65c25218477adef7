// Holidays read from real iCalendar text through libical into a store in a
// temporary data home.
#include "app/holidays/HolidayImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Refusal.h"
#include "app/holidays/HolidayCalendar.h"
#include "app/testing/TemporaryHome.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using testing::TemporaryHome;

constexpr const char* calendar = R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Quillmont tests//EN
BEGIN:VEVENT
UID:new-year@holidays.test
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20260101
DTEND;VALUE=DATE:20260102
RRULE:FREQ=YEARLY
SUMMARY:New Year's Day
END:VEVENT
BEGIN:VEVENT
UID:christmas@holidays.test
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20261224
DTEND;VALUE=DATE:20261227
SUMMARY:Christmas
END:VEVENT
END:VCALENDAR
)";

// 2026-06-01, so a yearly holiday repeats through the end of 2027.
const Date now = Date::fromTimeIntervalSince1970(1'780'272'000);

TEST(HolidayCalendar, EventsCoverTheirDaysAndRecurrencesStopAtTheGivenDay) {
  const auto events = HolidayCalendar::read(calendar, DateInput::Day{2027, 12, 31});
  std::vector<std::string> days;
  for (const auto& event : events) {
    days.push_back(std::to_string(event.day.year) + "-" + std::to_string(event.day.month) + "-" +
                   std::to_string(event.day.day));
  }
  // An all-day event's end is the day after its last.
  EXPECT_EQ(days, (std::vector<std::string>{"2026-1-1", "2027-1-1", "2026-12-24", "2026-12-25", "2026-12-26"}));
  EXPECT_EQ(events[2].name, "Christmas");
  EXPECT_EQ(events[2].uid, "christmas@holidays.test");
}

TEST(HolidayCalendar, TextsWithoutEventsAreRefused) {
  EXPECT_THROW(HolidayCalendar::read("", DateInput::Day{2027, 12, 31}), Refusal);
  EXPECT_THROW(HolidayCalendar::read("BEGIN:VCALENDAR\nVERSION:2.0\nEND:VCALENDAR\n", DateInput::Day{2027, 12, 31}),
               Refusal);
}

TEST(HolidayImport, APreviewChangesNothingAndASecondImportAddsNothing) {
  Date::ScopedClock clock(now);
  TemporaryHome home;
  {
    StoreSession session;
    const auto preview = HolidayImport::preview(session, calendar);
    ASSERT_EQ(preview.plans.size(), 5u);
    EXPECT_EQ(preview.added, 5u);
    // In day order, whatever the file's order.
    EXPECT_EQ(preview.plans.front().holiday.day, "2026-01-01");
    EXPECT_EQ(preview.plans.back().holiday.day, "2027-01-01");
    EXPECT_TRUE(session.container()->holidays().empty());
    EXPECT_EQ(HolidayImport::record(session, preview), 5);
  }
  StoreSession session;
  EXPECT_EQ(session.container()->holidays().size(), 5u);
  EXPECT_TRUE(session.context().fetch<BalanceAdjustment>().empty());  // nothing is booked
  const auto again = HolidayImport::preview(session, calendar);
  EXPECT_EQ(again.added, 0u);
  for (const auto& plan : again.plans) EXPECT_EQ(plan.outcome, HolidayBookings::Outcome::knownBefore);
  EXPECT_EQ(HolidayImport::record(session, again), 0);
}

}  // namespace
}  // namespace quillmont
