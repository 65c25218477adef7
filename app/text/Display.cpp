#include "app/text/Display.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "core/ledger/DurationFormatting.h"

namespace quillmont {

Display::Display(const Calendar& calendar) : Display(calendar, Calendar::iso8601(calendar.timeZoneIdentifier())) {}

Display::Display(const Calendar& calendar, std::optional<Calendar> proleptic)
    : calendar_(proleptic ? std::move(*proleptic) : calendar), proleptic_(proleptic.has_value()) {}

const DateFormatter& Display::formatter(std::optional<DateFormatter>& slot, std::string_view pattern) const {
  if (!slot) slot.emplace(calendar_, pattern);
  return *slot;
}

namespace {

// Where `date` falls on the wall clock of `calendar`'s zone, for years 1 to
// 9999: the zone's offset is one lookup, and the rest is arithmetic in the
// proleptic Gregorian calendar, which the display calendar is on every day.
// A report of ten years shows thousands of days, and a formatter's pattern
// machinery costs far more per day. Nothing outside those years.
struct WallClock {
  std::chrono::sys_days day;
  int minuteOfDay;

  static std::optional<WallClock> of(const Calendar& calendar, Date date) {
    static constexpr double firstSecond = -62135596800.0;  // 0001-01-01T00:00:00 since 1970
    static constexpr double endSecond = 253402300800.0;    // 10000-01-01T00:00:00 since 1970
    const double local = date.timeIntervalSince1970() + static_cast<double>(calendar.secondsFromGMT(date));
    if (!(local >= firstSecond && local < endSecond)) return std::nullopt;
    const double days = std::floor(local / 86400.0);
    const auto minute = static_cast<int>(std::floor((local - days * 86400.0) / 60.0));
    return WallClock{std::chrono::sys_days(std::chrono::days(static_cast<int>(days))), std::min(minute, 1439)};
  }
};

char digit(unsigned value) { return static_cast<char>('0' + value % 10); }

void appendDay(std::string& text, std::chrono::sys_days day) {
  const std::chrono::year_month_day civil(day);
  const auto year = static_cast<unsigned>(static_cast<int>(civil.year()));  // 1 ... 9999
  const auto month = static_cast<unsigned>(civil.month());
  const auto dayOfMonth = static_cast<unsigned>(civil.day());
  text += {digit(year / 1000), digit(year / 100), digit(year / 10), digit(year), '-', digit(month / 10),
           digit(month), '-', digit(dayOfMonth / 10), digit(dayOfMonth)};
}

void appendTime(std::string& text, int minuteOfDay) {
  const auto hour = static_cast<unsigned>(minuteOfDay / 60);
  const auto minute = static_cast<unsigned>(minuteOfDay % 60);
  text += {digit(hour / 10), digit(hour), ':', digit(minute / 10), digit(minute)};
}

// The text `write` makes of the wall clock, or the formatter's where there
// is none to work out.
template <class Write, class Formatted>
std::string shown(const Calendar& calendar, bool proleptic, Date date, Write write, Formatted formatted) {
  const auto clock = proleptic ? WallClock::of(calendar, date) : std::nullopt;
  if (!clock) return formatted();
  std::string text;
  write(text, *clock);
  return text;
}

}  // namespace

std::string Display::day(Date date) const {
  return shown(
      calendar_, proleptic_, date, [](std::string& text, const WallClock& clock) { appendDay(text, clock.day); },
      [&] { return formatter(day_, "yyyy-MM-dd").string(date); });
}

std::string Display::dateTime(Date date) const {
  return shown(
      calendar_, proleptic_, date,
      [](std::string& text, const WallClock& clock) {
        appendDay(text, clock.day);
        text += ' ';
        appendTime(text, clock.minuteOfDay);
      },
      [&] { return formatter(dateTime_, "yyyy-MM-dd HH:mm").string(date); });
}

std::string Display::time(Date date) const {
  return shown(
      calendar_, proleptic_, date, [](std::string& text, const WallClock& clock) { appendTime(text, clock.minuteOfDay); },
      [&] { return formatter(time_, "HH:mm").string(date); });
}

std::string Display::span(Date start, std::optional<Date> end) const {
  std::string text = dateTime(start) + "\u2013";
  if (!end) return text + "running";
  return text + (day(*end) == day(start) ? time(*end) : dateTime(*end));
}

std::string Display::weekday(Date date) const {
  // The names of the fixed "en_US_POSIX" locale that the formatters use.
  static constexpr std::string_view names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  return shown(
      calendar_, proleptic_, date,
      [](std::string& text, const WallClock& clock) { text += names[std::chrono::weekday(clock.day).c_encoding()]; },
      [&] { return formatter(weekday_, "EEE").string(date); });
}

std::string Display::timestamp(Date date) const {
  return formatter(timestamp_, "yyyy-MM-dd'T'HH:mm:ssxxx").string(date);
}

std::string Display::amount(double seconds) { return DurationFormatting::clock(seconds, true); }

std::string Display::amountOfMinutes(std::int64_t minutes) {
  return DurationFormatting::clock(static_cast<double>(minutes) * 60.0, true);
}

std::string Display::duration(double seconds) { return DurationFormatting::clock(seconds, false); }

std::string Display::shortIdentifier(const UUID& id) { return id.uuidString().substr(0, shortIdentifierLength); }

}  // namespace quillmont
