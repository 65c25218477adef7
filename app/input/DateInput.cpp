#include "app/input/DateInput.h"

#include <cctype>
#include <chrono>
#include <memory>
#include <string>

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

namespace quillmont::DateInput {
namespace {

// Exactly `count` digits at `position`; nothing otherwise.
std::optional<int> number(std::string_view text, std::size_t position, std::size_t count) {
  if (position + count > text.size()) return std::nullopt;
  int value = 0;
  for (std::size_t i = position; i < position + count; ++i) {
    if (!std::isdigit(static_cast<unsigned char>(text[i]))) return std::nullopt;
    value = value * 10 + (text[i] - '0');
  }
  return value;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  return text;
}

std::optional<Day> isoDay(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = number(text, 0, 4);
  const auto month = number(text, 5, 2);
  const auto dayOfMonth = number(text, 8, 2);
  if (!year || !month || !dayOfMonth) return std::nullopt;
  const std::chrono::year_month_day civil{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                          std::chrono::day(static_cast<unsigned>(*dayOfMonth))};
  if (!civil.ok()) return std::nullopt;
  return Day{*year, *month, *dayOfMonth};
}

std::optional<std::pair<int, int>> timeOfDay(std::string_view text) {
  if (text.size() != 5 || text[2] != ':') return std::nullopt;
  const auto hour = number(text, 0, 2);
  const auto minute = number(text, 3, 2);
  if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
  return std::pair{*hour, *minute};
}

// A Gregorian calendar in the time zone of `calendar`, with the rules for
// skipped and repeated wall-clock times stated in the header. Building one
// costs more than the rest of a day's conversion, so each thread keeps the
// last one for its zone; every use sets the time or clears it first.
icu::GregorianCalendar& gregorian(const Calendar& calendar) {
  thread_local std::string builtFor;
  thread_local std::unique_ptr<icu::GregorianCalendar> built;
  std::string zone = calendar.timeZoneIdentifier();
  if (!built || zone != builtFor) {
    UErrorCode status = U_ZERO_ERROR;
    auto result = std::make_unique<icu::GregorianCalendar>(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)), icu::Locale::getRoot(), status);
    // Proleptic Gregorian: no Julian dates before 1582.
    result->setGregorianChange(-8.64e15, status);
    result->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    result->setSkippedWallTimeOption(UCAL_WALLTIME_LAST);
    built = std::move(result);
    builtFor = std::move(zone);
  }
  return *built;
}

}  // namespace

Day Day::adding(int count) const {
  using namespace std::chrono;
  const sys_days days = sys_days(year_month_day(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                                std::chrono::day(static_cast<unsigned>(day)))) +
                        std::chrono::days(count);
  const year_month_day civil(days);
  return Day{static_cast<int>(civil.year()), static_cast<int>(static_cast<unsigned>(civil.month())),
             static_cast<int>(static_cast<unsigned>(civil.day()))};
}

std::optional<Day> day(std::string_view text, const Day& today) {
  text = trimmed(text);
  if (text == "today") return today;
  if (text == "yesterday") return today.adding(-1);
  if (text == "tomorrow") return today.adding(1);
  return isoDay(text);
}

std::optional<DateTime> dateTime(std::string_view text, const Day& today) {
  text = trimmed(text);
  if (const auto time = timeOfDay(text)) return DateTime{today, time->first, time->second};
  const std::size_t separator = text.find_first_of(" T");
  if (separator == std::string_view::npos) return std::nullopt;
  const auto date = day(text.substr(0, separator), today);
  const auto time = timeOfDay(trimmed(text.substr(separator + 1)));
  if (!date || !time) return std::nullopt;
  return DateTime{*date, time->first, time->second};
}

bool isTimeOfDay(std::string_view text) { return timeOfDay(trimmed(text)).has_value(); }

Day dayOf(Date date, const Calendar& calendar) {
  icu::GregorianCalendar& civil = gregorian(calendar);
  UErrorCode status = U_ZERO_ERROR;
  civil.setTime(date.timeIntervalSince1970() * 1000.0, status);
  return Day{civil.get(UCAL_EXTENDED_YEAR, status), civil.get(UCAL_MONTH, status) + 1, civil.get(UCAL_DATE, status)};
}

Date instant(const DateTime& dateTime, const Calendar& calendar) {
  icu::GregorianCalendar& civil = gregorian(calendar);
  civil.clear();
  civil.set(UCAL_EXTENDED_YEAR, dateTime.day.year);
  civil.set(UCAL_MONTH, dateTime.day.month - 1);
  civil.set(UCAL_DATE, dateTime.day.day);
  civil.set(UCAL_HOUR_OF_DAY, dateTime.hour);
  civil.set(UCAL_MINUTE, dateTime.minute);
  UErrorCode status = U_ZERO_ERROR;
  const UDate milliseconds = civil.getTime(status);
  return Date::fromTimeIntervalSince1970(milliseconds / 1000.0);
}

Date midday(const Day& day, const Calendar& calendar) { return instant(DateTime{day, 12, 0}, calendar); }

Date startOfDay(const Day& day, const Calendar& calendar) { return calendar.startOfDay(midday(day, calendar)); }

Date endOfDay(const Day& day, const Calendar& calendar) { return startOfDay(day.adding(1), calendar); }

}  // namespace quillmont::DateInput
