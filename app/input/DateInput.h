// DateInput: days and wall-clock times as the user types them on the command
// line, always in the ISO 8601 (Gregorian) form whatever calendar the user's
// locale prefers, and their instants in the time zone of the user's calendar.
//   days:   "2026-03-15", or "today", "yesterday", "tomorrow"
//   times:  "2026-03-15 09:30", "2026-03-15T09:30", or "09:30" (on today)
#pragma once

#include <optional>
#include <string_view>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::DateInput {

struct Day {
  int year = 2001;
  int month = 1;
  int day = 1;

  /// The day `count` days later (earlier when negative).
  Day adding(int count) const;
  friend bool operator==(const Day&, const Day&) = default;
  friend auto operator<=>(const Day&, const Day&) = default;
};

struct DateTime {
  Day day;
  int hour = 0;
  int minute = 0;
  friend bool operator==(const DateTime&, const DateTime&) = default;
};

/// A day in YYYY-MM-DD form or one of the words, relative to `today`; nothing
/// for anything else, including days that do not exist (2026-02-30).
std::optional<Day> day(std::string_view text, const Day& today);
/// A day and a time of day (HH:MM, 00:00-23:59); a time alone is on `today`.
std::optional<DateTime> dateTime(std::string_view text, const Day& today);
/// Whether the text is a time of day alone, with no day before it.
bool isTimeOfDay(std::string_view text);

/// The day (Gregorian) on which `date` falls in the calendar's time zone.
Day dayOf(Date date, const Calendar& calendar);
/// The instant at which the wall clock in the calendar's time zone shows the
/// given day and time. A time that daylight saving skips moves forward by the
/// gap; a time that occurs twice is the first occurrence.
Date instant(const DateTime& dateTime, const Calendar& calendar);
/// Noon of the day: the instant that stands for a day picked without a time.
Date midday(const Day& day, const Calendar& calendar);
/// The first instant of the day in the calendar's time zone.
Date startOfDay(const Day& day, const Calendar& calendar);
/// The first instant of the following day.
Date endOfDay(const Day& day, const Calendar& calendar);

}  // namespace quillmont::DateInput
