#include "platform/foundation/Calendar.h"

#include <gtest/gtest.h>

#include <unicode/calendar.h>

#include <cmath>
#include <cstdint>
#include <memory>

#include "platform/foundation/DateFormatter.h"

namespace quillmont {
namespace {

Calendar calendarIn(const char* zone, const char* locale = "en_US_POSIX") { return *Calendar::make(zone, locale); }

// Instant of a wall-clock time in the calendar's zone.
Date at(const Calendar& calendar, int year, int month, int day, int hour = 0, int minute = 0) {
  return *calendar.date(year, month, day) + hour * 3600.0 + minute * 60.0;
}

std::string ymdhm(const Calendar& calendar, Date date) {
  return DateFormatter(calendar, "yyyy-MM-dd HH:mm").string(date);
}

TEST(Calendar, RejectsUnknownZones) {
  EXPECT_FALSE(Calendar::make("Mars/Olympus_Mons").has_value());
  EXPECT_EQ(calendarIn("Europe/Berlin").timeZoneIdentifier(), "Europe/Berlin");
}

TEST(Calendar, DaysOfTwentyThreeAndTwentyFiveHoursInBerlin) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date springForward = *berlin.date(2026, 3, 29);
  const Date fallBack = *berlin.date(2026, 10, 25);
  EXPECT_EQ(*berlin.dateByAddingDays(1, springForward) - springForward, 23 * 3600.0);
  EXPECT_EQ(*berlin.dateByAddingDays(1, fallBack) - fallBack, 25 * 3600.0);
  EXPECT_EQ(berlin.startOfDay(springForward + 12 * 3600.0), springForward);
  EXPECT_EQ(berlin.startOfDay(fallBack + 24.5 * 3600.0), fallBack);
  // 02:30 on the spring day does not exist; the day still has one start.
  EXPECT_EQ(ymdhm(berlin, berlin.startOfDay(springForward + 3 * 3600.0)), "2026-03-29 00:00");
}

TEST(Calendar, SkippedMidnightStartsTheDayAtOneInSaoPaulo) {
  const auto saoPaulo = calendarIn("America/Sao_Paulo");
  // 2018-11-04: clocks jumped from 00:00 to 01:00.
  const Date noon = Date::fromTimeIntervalSince1970(1541343600);  // 2018-11-04 13:00 local (-02)
  const Date start = saoPaulo.startOfDay(noon);
  EXPECT_EQ(ymdhm(saoPaulo, start), "2018-11-04 01:00");
  EXPECT_EQ(start.timeIntervalSince1970(), 1541300400);  // 03:00 UTC
  EXPECT_EQ(*saoPaulo.date(2018, 11, 4), start);
  EXPECT_EQ(saoPaulo.weekday(start), 1);  // a Sunday
  EXPECT_TRUE(saoPaulo.isDate(start, noon));
}

TEST(Calendar, DaysMatchesStartOfDayWalkAcrossZones) {
  for (const char* zone : {"Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia", "Australia/Lord_Howe",
                           "America/Havana", "Asia/Kolkata", "UTC"}) {
    SCOPED_TRACE(zone);
    const auto calendar = calendarIn(zone);
    const Date first = at(calendar, 2000, 1, 1, 13);
    const Date last = at(calendar, 2030, 12, 31, 5);
    const auto days = calendar.days(first, last);
    ASSERT_FALSE(days.empty());
    Date expected = calendar.startOfDay(first);
    std::size_t index = 0;
    while (expected <= last) {
      ASSERT_LT(index, days.size());
      ASSERT_EQ(days[index].start, expected) << ymdhm(calendar, expected);
      ASSERT_EQ(days[index].weekday, calendar.weekday(expected));
      ++index;
      expected = calendar.startOfDay(*calendar.dateByAddingDays(1, expected) + 0.0);
      // startOfDay of the next day's noon avoids relying on wall-time carry-over.
      expected = calendar.startOfDay(expected + 12 * 3600.0);
    }
    EXPECT_EQ(index, days.size());
  }
}

// The day's start as the ICU calendar resolves midnight of the day it
// computes for `date`, gaps and repeated hours included.
Date icuStartOfDay(const Calendar& calendar, Date date) {
  const std::unique_ptr<icu::Calendar> reference(calendar.icuCalendar().clone());
  UErrorCode status = U_ZERO_ERROR;
  reference->setTime(date.timeIntervalSince1970() * 1000.0, status);
  for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) reference->set(field, 0);
  const UDate start = reference->getTime(status);
  EXPECT_TRUE(U_SUCCESS(status));
  return Date::fromTimeIntervalSince1970(start / 1000.0);
}

// Day starts far from a zone's transitions are worked out by arithmetic;
// they must be the calendar's own, in zones whose midnights were skipped
// or repeated, with half-hour and negative daylight saving, a skipped
// date, in other calendar systems, with fractions of a second, before
// 1970 and at the ends of the years 1 to 9999, visited in and out of order.
TEST(Calendar, StartOfDayIsTheCalendarsMidnight) {
  const std::pair<const char*, const char*> calendars[] = {
      {"Europe/Berlin", "en_US_POSIX"},        {"America/Sao_Paulo", "en_US_POSIX"},
      {"America/Havana", "en_US_POSIX"},       {"Asia/Beirut", "en_US_POSIX"},
      {"Pacific/Apia", "en_US_POSIX"},         {"Australia/Lord_Howe", "en_US_POSIX"},
      {"Europe/Dublin", "en_US_POSIX"},        {"America/St_Johns", "en_US_POSIX"},
      {"America/Sitka", "en_US_POSIX"},        {"Asia/Kolkata", "th_TH@calendar=buddhist"},
      {"Asia/Jerusalem", "he_IL@calendar=hebrew"}, {"UTC", "en_US_POSIX"}};
  for (const auto& [zone, locale] : calendars) {
    SCOPED_TRACE(std::string(zone) + " " + locale);
    for (const auto& calendar : {calendarIn(zone, locale), *Calendar::iso8601(zone)}) {
      // Every 61 hours and a bit from 1860 to 2045, then jumps across the years 1 to 9999.
      for (double at = -3'500'000'000.0; at < 2'400'000'000.0; at += 61 * 3600.0 + 0.375) {
        const Date date = Date::fromTimeIntervalSince1970(at);
        ASSERT_EQ(calendar.startOfDay(date), icuStartOfDay(calendar, date)) << ymdhm(calendar, date);
      }
      std::uint64_t state = 88172645463325252u;
      for (int jump = 0; jump < 2000; ++jump) {
        state ^= state << 13, state ^= state >> 7, state ^= state << 17;
        const double at = -62'135'596'800.0 + static_cast<double>(state % 315'537'897'600'000u) / 1000.0;
        const Date date = Date::fromTimeIntervalSince1970(at);
        ASSERT_EQ(calendar.startOfDay(date), icuStartOfDay(calendar, date)) << at;
      }
    }
  }
}

TEST(Calendar, DaysOfAnEmptyOrSingleRange) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date monday = at(berlin, 2026, 11, 16, 9);
  EXPECT_TRUE(berlin.days(monday, monday - 86400.0).empty());
  const auto one = berlin.days(monday, monday + 3600.0);
  ASSERT_EQ(one.size(), 1u);
  EXPECT_EQ(one[0].weekday, 2);
}

TEST(Calendar, WeekFollowsTheLocaleFirstWeekday) {
  const auto germany = calendarIn("Europe/Berlin", "de_DE");
  const auto us = calendarIn("Europe/Berlin", "en_US");
  const Date sunday = at(germany, 2026, 11, 22, 10);
  const auto mondayWeek = *germany.dateInterval(Calendar::Unit::weekOfYear, sunday);
  EXPECT_EQ(mondayWeek.start, at(germany, 2026, 11, 16));
  EXPECT_EQ(mondayWeek.end(), at(germany, 2026, 11, 23));
  const auto sundayWeek = *us.dateInterval(Calendar::Unit::weekOfYear, sunday);
  EXPECT_EQ(sundayWeek.start, at(us, 2026, 11, 22));
  // The week holding the autumn change is 169 hours long.
  const auto changeWeek = *germany.dateInterval(Calendar::Unit::weekOfYear, at(germany, 2026, 10, 25, 12));
  EXPECT_EQ(changeWeek.duration, 169 * 3600.0);
}

TEST(Calendar, MonthInterval) {
  const auto berlin = calendarIn("Europe/Berlin");
  const auto march = *berlin.dateInterval(Calendar::Unit::month, at(berlin, 2026, 3, 15, 12));
  EXPECT_EQ(march.start, at(berlin, 2026, 3, 1));
  EXPECT_EQ(march.end(), at(berlin, 2026, 4, 1));
  EXPECT_EQ(march.duration, (31 * 24 - 1) * 3600.0);
}

TEST(Calendar, NonRepresentableInstantsHaveNoAnswer) {
  const auto utc = calendarIn("UTC");
  EXPECT_FALSE(utc.dateByAddingDays(1, Date(1e300)).has_value());
  EXPECT_FALSE(utc.dateInterval(Calendar::Unit::month, Date(std::nan(""))).has_value());
  EXPECT_TRUE(utc.days(Date(0), Date(1e300)).empty());
}

TEST(DateFormatter, FormatsInTheCalendarsSystemAndZone) {
  const auto buddhist = calendarIn("Asia/Bangkok", "th_TH@calendar=buddhist");
  EXPECT_EQ(buddhist.identifier(), "buddhist");
  EXPECT_EQ(DateFormatter(buddhist, "yyyy-MM-dd").string(at(buddhist, 2569, 3, 2, 12)), "2569-03-02");
  const auto berlin = calendarIn("Europe/Berlin");
  const Date lateEvening = at(berlin, 2026, 3, 2, 23, 30);  // already 3 March in UTC? no: 22:30 UTC
  EXPECT_EQ(DateFormatter(berlin, "yyyy-MM-dd").string(lateEvening), "2026-03-02");
  const auto tokyo = calendarIn("Asia/Tokyo");
  EXPECT_EQ(DateFormatter(tokyo, "yyyy-MM-dd").string(lateEvening), "2026-03-03");
}

}  // namespace
}  // namespace quillmont
