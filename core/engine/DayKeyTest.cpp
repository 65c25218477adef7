#include "core/engine/DayKey.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmont {
namespace {

TEST(DayKey, NamesTheWallClockDayInEveryCalendarSystem) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date start = *berlin.date(2026, 1, 5);
  EXPECT_EQ(DayKey::of(start, berlin), "2026-01-05");
  EXPECT_EQ(DayKey::of(start + 86399, berlin), "2026-01-05");
  EXPECT_EQ(DayKey::of(start - 1, berlin), "2026-01-04");
  // 23:30 in Berlin is already the next day in UTC; the key is Berlin's day.
  EXPECT_EQ(DayKey::of(start + 23.5 * 3600, *Calendar::make("UTC")), "2026-01-05");
  EXPECT_EQ(DayKey::of(start - 1800, *Calendar::make("UTC")), "2026-01-04");
  EXPECT_EQ(DayKey::of(Date(NAN), berlin), "");
  // Four digits of year, zero-padded, at both ends of the range and beyond.
  const Calendar utc = *Calendar::make("UTC");
  EXPECT_EQ(DayKey::of(Date::fromTimeIntervalSince1970(-62167219200.0), utc), "0000-01-01");
  EXPECT_EQ(DayKey::of(Date::fromTimeIntervalSince1970(-61851600000.0 + 86400 * 9), utc), "0010-01-10");
  EXPECT_EQ(DayKey::of(Date::fromTimeIntervalSince1970(253402300799.0), utc), "9999-12-31");
  EXPECT_EQ(DayKey::of(Date::fromTimeIntervalSince1970(253402300800.0), utc), "10000-01-01");
  EXPECT_EQ(DayKey::of(Date::fromTimeIntervalSince1970(-62167219201.0), utc), "-001-12-31");

  // Another calendar system names the same day with Gregorian digits.
  const auto hebrew = *Calendar::make("Europe/Berlin", "he_IL@calendar=hebrew");
  EXPECT_EQ(DayKey::of(start + 3600, hebrew), "2026-01-05");
}

TEST(DayKey, FindsTheStartOfTheDayItNamesAndRefusesOtherText) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  EXPECT_EQ(DayKey::startOfDay("2026-03-29", berlin), berlin.date(2026, 3, 29));  // a 23-hour day
  EXPECT_EQ(DayKey::startOfDay("2024-02-29", berlin), berlin.date(2024, 2, 29));
  // Where daylight saving skipped midnight, the day starts at 01:00.
  const auto saoPaulo = *Calendar::make("America/Sao_Paulo");
  const auto skipped = DayKey::startOfDay("2018-11-04", saoPaulo);
  ASSERT_TRUE(skipped);
  EXPECT_EQ(*skipped, saoPaulo.startOfDay(*skipped + 12 * 3600));
  EXPECT_EQ(DayKey::of(*skipped, saoPaulo), "2018-11-04");
  for (const char* text : {"2026-02-29", "2026-13-01", "2026-00-10", "2026-1-05", "2026/01/05", "", "abcd-ef-gh"}) {
    EXPECT_FALSE(DayKey::startOfDay(text, berlin)) << text;
  }
}

}  // namespace
}  // namespace quillmont
