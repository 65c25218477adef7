#include "core/engine/DayKey.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace quillmont::DayKey {
namespace {

constexpr double secondsPerDay = 86400.0;

// Days since 1970-01-01 of a proleptic Gregorian date, and back (Howard
// Hinnant's algorithms).
std::int64_t daysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const auto yearOfEra = static_cast<unsigned>(year - era * 400);
  const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

struct Civil {
  std::int64_t year;
  unsigned month;
  unsigned day;
};

Civil civilFromDays(std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned shifted = (5 * dayOfYear + 2) / 153;
  const unsigned day = dayOfYear - (153 * shifted + 2) / 5 + 1;
  const unsigned month = shifted < 10 ? shifted + 3 : shifted - 9;
  return {static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2), month, day};
}

bool isLeapYear(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

unsigned daysInMonth(std::int64_t year, unsigned month) {
  static constexpr unsigned lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : lengths[month - 1];
}

}  // namespace

std::string of(Date date, const Calendar& calendar) {
  const double local = date.timeIntervalSince1970() + static_cast<double>(calendar.secondsFromGMT(date));
  if (!std::isfinite(local)) return {};
  const Civil civil = civilFromDays(static_cast<std::int64_t>(std::floor(local / secondsPerDay)));
  if (civil.year < 0 || civil.year > 9999) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04lld-%02u-%02u", static_cast<long long>(civil.year), civil.month,
                  civil.day);
    return buffer;
  }
  // Digit by digit: settling ten years names 3,650 days, and a formatted
  // print cost more than the rest of the name.
  const auto year = static_cast<unsigned>(civil.year);
  const auto digit = [](unsigned value) { return static_cast<char>('0' + value % 10); };
  return {digit(year / 1000), digit(year / 100), digit(year / 10), digit(year), '-', digit(civil.month / 10),
          digit(civil.month), '-', digit(civil.day / 10), digit(civil.day)};
}

std::optional<Date> startOfDay(std::string_view key, const Calendar& calendar) {
  if (key.size() != 10 || key[4] != '-' || key[7] != '-') return std::nullopt;
  const auto number = [&](std::size_t from, std::size_t length) -> std::optional<unsigned> {
    unsigned value = 0;
    for (std::size_t at = from; at < from + length; ++at) {
      if (key[at] < '0' || key[at] > '9') return std::nullopt;
      value = value * 10 + static_cast<unsigned>(key[at] - '0');
    }
    return value;
  };
  const auto year = number(0, 4);
  const auto month = number(5, 2);
  const auto day = number(8, 2);
  if (!year || !month || !day || *month < 1 || *month > 12 || *day < 1 || *day > daysInMonth(*year, *month)) {
    return std::nullopt;
  }
  // Noon on the wall clock lies inside the day in every zone; its day's
  // start is the day's start.
  const double noonUTC = static_cast<double>(daysFromCivil(*year, *month, *day)) * secondsPerDay + secondsPerDay / 2;
  const Date guess = Date::fromTimeIntervalSince1970(noonUTC);
  const Date noon = Date::fromTimeIntervalSince1970(noonUTC - static_cast<double>(calendar.secondsFromGMT(guess)));
  return calendar.startOfDay(noon);
}

}  // namespace quillmont::DayKey
