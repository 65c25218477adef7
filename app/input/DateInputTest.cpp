#include "app/input/DateInput.h"

#include <gtest/gtest.h>

#include "platform/foundation/DateFormatter.h"

namespace quillmont {
namespace {

using DateInput::Day;

const Day today{2026, 3, 15};

std::string local(Date date, const Calendar& calendar) {
  return DateFormatter(calendar, "yyyy-MM-dd HH:mm:ss").string(date);
}

TEST(DateInput, ReadsIsoDaysAndWords) {
  EXPECT_EQ(DateInput::day("2026-03-01", today), (Day{2026, 3, 1}));
  EXPECT_EQ(DateInput::day("2024-02-29", today), (Day{2024, 2, 29}));
  EXPECT_EQ(DateInput::day(" today ", today), today);
  EXPECT_EQ(DateInput::day("yesterday", (Day{2026, 3, 1})), (Day{2026, 2, 28}));
  EXPECT_EQ(DateInput::day("tomorrow", (Day{2025, 12, 31})), (Day{2026, 1, 1}));
  for (const char* text : {"", "2026-3-1", "2026-02-29", "2026-13-01", "2026-00-10", "2026-04-31", "26-03-01",
                           "2026/03/01", "2026-03-01x", "Today", "+2026-03-01"}) {
    EXPECT_EQ(DateInput::day(text, today), std::nullopt) << '"' << text << '"';
  }
}

TEST(DateInput, ReadsTimesOnADayOrToday) {
  EXPECT_EQ(DateInput::dateTime("2026-03-01 09:30", today), (DateInput::DateTime{{2026, 3, 1}, 9, 30}));
  EXPECT_EQ(DateInput::dateTime("2026-03-01T23:59", today), (DateInput::DateTime{{2026, 3, 1}, 23, 59}));
  EXPECT_EQ(DateInput::dateTime("yesterday 00:00", today), (DateInput::DateTime{{2026, 3, 14}, 0, 0}));
  EXPECT_EQ(DateInput::dateTime("17:05", today), (DateInput::DateTime{today, 17, 5}));
  for (const char* text : {"2026-03-01", "2026-03-01 24:00", "2026-03-01 9:30", "2026-03-01 09:60", "09:30:00",
                           "2026-03-01 09:30 x", "2026-02-30 09:00"}) {
    EXPECT_EQ(DateInput::dateTime(text, today), std::nullopt) << '"' << text << '"';
  }
}

TEST(DateInput, InstantsFollowTheCalendarsTimeZoneAcrossDaylightSaving) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  EXPECT_EQ(local(DateInput::instant({{2026, 3, 29}, 1, 30}, berlin), berlin), "2026-03-29 01:30:00");
  // 02:30 does not exist on the night the clocks go forward: it moves by the hour skipped.
  EXPECT_EQ(local(DateInput::instant({{2026, 3, 29}, 2, 30}, berlin), berlin), "2026-03-29 03:30:00");
  EXPECT_EQ(local(DateInput::instant({{2026, 3, 29}, 9, 0}, berlin), berlin), "2026-03-29 09:00:00");
  // 02:30 occurs twice when they go back: the first one, still in summer time.
  EXPECT_EQ(DateInput::instant({{2026, 10, 25}, 2, 30}, berlin),
            Date::fromTimeIntervalSince1970(1792888200));  // 2026-10-25 00:30 UTC
  EXPECT_EQ(DateInput::midday({2026, 7, 1}, berlin), Date::fromTimeIntervalSince1970(1782900000));  // 10:00 UTC

  // Sao Paulo skipped midnight on 2018-11-04: that day starts at 01:00 and lasts 23 hours.
  const auto saoPaulo = *Calendar::make("America/Sao_Paulo");
  const Date start = DateInput::startOfDay({2018, 11, 4}, saoPaulo);
  EXPECT_EQ(local(start, saoPaulo), "2018-11-04 01:00:00");
  EXPECT_EQ(DateInput::endOfDay({2018, 11, 4}, saoPaulo) - start, 23 * 3600);
}

TEST(DateInput, DaysAreGregorianWhateverTheUsersCalendar) {
  const auto buddhist = *Calendar::make("Asia/Bangkok", "th_TH@calendar=buddhist");
  const Date date = DateInput::startOfDay({2026, 3, 15}, buddhist);
  EXPECT_EQ(date, Date::fromTimeIntervalSince1970(1773507600));  // 2026-03-14 17:00 UTC
  EXPECT_EQ(DateInput::dayOf(date, buddhist), (Day{2026, 3, 15}));
  EXPECT_EQ(DateInput::dayOf(date.addingTimeInterval(-1), buddhist), (Day{2026, 3, 14}));
  EXPECT_EQ(DateInput::dayOf(DateInput::midday({1, 1, 1}, buddhist), buddhist), (Day{1, 1, 1}));
}

}  // namespace
}  // namespace quillmont
