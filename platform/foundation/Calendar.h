// Calendar: a calendar system (Gregorian unless the locale asks for another,
// e.g. "en_US@calendar=buddhist") in a time zone, on ICU. It offers exactly the
// operations the time bank needs. Operations that may have no answer return
// std::optional.
//
// A Calendar is a value: copying clones the ICU calendar. One object must not
// be used from two threads at once (ICU calendars are stateful); copies may.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class Calendar;
U_NAMESPACE_END

namespace quillmont {

class Calendar {
 public:
  enum class Unit { weekOfYear, month };

  /// One calendar day: its first instant and weekday (1 Sunday ... 7 Saturday).
  struct Day {
    Date start;
    int weekday = 1;
  };

  /// A calendar for an IANA time zone ("Europe/Berlin") and an ICU locale
  /// ("en_US_POSIX", "de_DE", "th_TH@calendar=buddhist"). An unknown zone yields nothing.
  static std::optional<Calendar> make(std::string_view timeZoneIdentifier,
                                      std::string_view localeIdentifier = "en_US_POSIX");
  /// The ISO 8601 calendar in an IANA time zone: Gregorian rules for every
  /// day, also those before the Gregorian reform of 1582 (which the default
  /// Gregorian calendar counts as Julian days), weeks from Monday. The days
  /// people type as "YYYY-MM-DD" are these. An unknown zone yields nothing.
  static std::optional<Calendar> iso8601(std::string_view timeZoneIdentifier);
  /// The process's own zone ($TZ or the system's) and locale ($LC_ALL, $LC_TIME, $LANG).
  static Calendar autoupdatingCurrent();

  Calendar(const Calendar& other);
  Calendar& operator=(const Calendar& other);
  Calendar(Calendar&&) noexcept;
  Calendar& operator=(Calendar&&) noexcept;
  ~Calendar();

  std::string timeZoneIdentifier() const;
  /// The calendar system, e.g. "gregorian" or "buddhist".
  std::string identifier() const;
  /// The version of the time zone rules in use ("2024a"); day starts of
  /// past dates may move when it changes.
  static std::string timeZoneDataVersion();

  /// The first instant of the day containing `date`. Where midnight itself
  /// was skipped by a daylight-saving change, the first instant that exists.
  Date startOfDay(Date date) const;
  /// `date` moved by whole days keeping the wall-clock time where it exists.
  std::optional<Date> dateByAddingDays(std::int64_t days, Date date) const;
  std::optional<Date> dateByAddingSeconds(std::int64_t seconds, Date date) const;
  /// The time zone's offset from UTC at `date`, daylight saving included.
  std::int64_t secondsFromGMT(Date date) const;
  /// 1 Sunday, 2 Monday ... 7 Saturday, in this calendar's time zone.
  int weekday(Date date) const;
  /// Midnight (or the first instant) of the given day in this calendar's system and zone.
  std::optional<Date> date(int year, int month, int day) const;
  bool isDate(Date a, Date inSameDayAs) const;
  /// The week (by this locale's first weekday) or month containing `date`;
  /// the interval's end is the start of the next period.
  std::optional<DateInterval> dateInterval(Unit unit, Date date) const;

  /// Every day from the day of `first` through the day of `last`, computed
  /// in one pass; the same starts as startOfDay() of each day, but without a
  /// calendar round trip per day. Empty when `last` lies on an earlier day.
  std::vector<Day> days(Date first, Date last) const;

  /// The underlying ICU calendar (for formatters in this layer).
  const icu::Calendar& icuCalendar() const { return *calendar_; }

 private:
  explicit Calendar(std::unique_ptr<icu::Calendar> calendar);
  /// Points segment_ at the stretch between the zone's two transitions
  /// around `utc` (ICU milliseconds); empty when the zone cannot say.
  void findOffsetSegment(double utc) const;

  std::unique_ptr<icu::Calendar> calendar_;
  /// A stretch of time without a change of the zone's offset, in ICU
  /// milliseconds, with that offset: startOfDay() works out the days well
  /// inside it by arithmetic.
  struct OffsetSegment {
    double start = 0;
    double end = 0;
    std::int32_t rawOffset = 0;
    std::int32_t dstOffset = 0;
    /// Days asked for outside the stretch since it was found.
    std::uint32_t misses = 0;
  };
  mutable OffsetSegment segment_;
};

}  // namespace quillmont
