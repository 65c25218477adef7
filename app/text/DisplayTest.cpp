// Days, weekdays and times are worked out without a formatter; they must read
// exactly as the formatter writes them, in every zone and on every day it
// can show: around daylight-saving changes, on days a zone skipped, in the
// local mean time of the nineteenth century, far in the past and future,
// and for instants it cannot place at all.
#include "app/text/Display.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "platform/foundation/DateFormatter.h"

namespace quillmont {
namespace {

RC_GTEST_PROP(Display, DaysWeekdaysAndTimesReadAsTheFormatterWritesThem, ()) {
  static const std::vector<std::string> zones{"Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia", "Pacific/Kiritimati",
                                              "Asia/Kolkata", "America/St_Johns", "UTC"};
  const std::string zone = *rc::gen::elementOf(zones);
  const auto calendar = *Calendar::iso8601(zone);
  const Display display(*Calendar::make(zone));
  const DateFormatter day(calendar, "yyyy-MM-dd");
  const DateFormatter weekday(calendar, "EEE");
  const DateFormatter dateTime(calendar, "yyyy-MM-dd HH:mm");
  const DateFormatter time(calendar, "HH:mm");

  const double seconds = *rc::gen::oneOf(
      // The years people book in, to the second and on either side of midnight.
      rc::gen::map(rc::gen::inRange<std::int64_t>(0, 2'000'000'000), [](std::int64_t s) { return static_cast<double>(s) - 300'000'000.0; }),
      // Any year the formatter writes with four digits, and past them.
      rc::gen::map(rc::gen::inRange<std::int64_t>(-63'200'000'000, 253'500'000'000),
                   [](std::int64_t s) { return static_cast<double>(s) - 978'307'200.0; }),
      // Fractions of a second just before and after a day's start.
      rc::gen::map(rc::gen::inRange(-86'400, 86'400), [](int s) { return 757'382'400.0 + s * 0.999; }),
      rc::gen::element(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                       -std::numeric_limits<double>::infinity(), 1e300));
  const Date date(seconds);
  RC_ASSERT(display.day(date) == day.string(date));
  RC_ASSERT(display.weekday(date) == weekday.string(date));
  RC_ASSERT(display.dateTime(date) == dateTime.string(date));
  RC_ASSERT(display.time(date) == time.string(date));
}

TEST(Display, ASkippedDayIsNeverShown) {
  // Samoa went from 29 to 31 December 2011.
  const auto calendar = *Calendar::make("Pacific/Apia");
  const Display display(calendar);
  const Date lastBefore = *calendar.date(2011, 12, 29) + 86399;
  EXPECT_EQ(display.weekday(lastBefore) + " " + display.day(lastBefore), "Thu 2011-12-29");
  EXPECT_EQ(display.weekday(lastBefore + 1) + " " + display.day(lastBefore + 1), "Sat 2011-12-31");
}

TEST(Display, SpansOfWorkShowTheEndsDayOnlyWhenItDiffers) {
  const Display display(*Calendar::make("Europe/Berlin"));
  const Date start = Date::fromTimeIntervalSince1970(1772436600);  // 2026-03-02 08:30 in Berlin
  EXPECT_EQ(display.span(start, start + 9 * 3600.0), "2026-03-02 08:30\u201317:30");
  EXPECT_EQ(display.span(start, start + 16 * 3600.0), "2026-03-02 08:30\u20132026-03-03 00:30");
  EXPECT_EQ(display.span(start, std::nullopt), "2026-03-02 08:30\u2013running");
}

}  // namespace
}  // namespace quillmont
