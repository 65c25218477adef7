#include "platform/foundation/Calendar.h"

#include <unicode/basictz.h>
#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace quillmont {
namespace {

constexpr double millisecondsPerDay = 86400000.0;

UDate toICU(Date date) { return date.timeIntervalSince1970() * 1000.0; }
Date fromICU(UDate udate) { return Date::fromTimeIntervalSince1970(udate / 1000.0); }

// ICU covers roughly +-5 million years; anything beyond (or not a number)
// has no calendar answer.
bool isRepresentable(Date date) {
  return std::isfinite(date.timeIntervalSinceReferenceDate) && std::abs(date.timeIntervalSince1970()) < 1.0e14;
}

std::unique_ptr<icu::Calendar> makeICUCalendar(icu::TimeZone* zone, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(zone, locale, status));
  if (U_FAILURE(status) || !calendar) return nullptr;
  calendar->setLenient(true);
  // Wall times inside a daylight-saving gap resolve to the first instant
  // after the gap; repeated wall times to their first occurrence.
  calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
  calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  return calendar;
}

std::string localeFromEnvironment() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    std::string text(value);
    if (text == "C" || text == "POSIX" || text.rfind("C.", 0) == 0) return "en_US_POSIX";
    return text.substr(0, text.find('.'));
  }
  return "en_US_POSIX";
}

// What decides the host's zone: $TZ when set, else /etc/localtime (where
// it points, and when it last changed).
std::string hostZoneKey() {
  if (const char* zone = std::getenv("TZ")) return std::string("TZ=") + zone;
  std::string key = "localtime:";
  struct stat status {};
  if (::lstat("/etc/localtime", &status) == 0) {
    key += std::to_string(status.st_ino) + ':' + std::to_string(status.st_mtim.tv_sec) + ':' +
           std::to_string(status.st_mtim.tv_nsec);
    if (S_ISLNK(status.st_mode)) {
      std::array<char, 512> target{};
      const ssize_t length = ::readlink("/etc/localtime", target.data(), target.size());
      if (length > 0) key.append(target.data(), static_cast<std::size_t>(length));
    }
  }
  return key;
}

int weekdayOfLocalDay(std::int64_t localDay) {
  // Day 0 (1970-01-01) was a Thursday, weekday 5.
  return static_cast<int>(((localDay % 7 + 7) % 7 + 4) % 7) + 1;
}

}  // namespace

Calendar::Calendar(std::unique_ptr<icu::Calendar> calendar) : calendar_(std::move(calendar)) {}
Calendar::Calendar(const Calendar& other) : calendar_(other.calendar_->clone()) {}
Calendar& Calendar::operator=(const Calendar& other) {
  if (this != &other) calendar_.reset(other.calendar_->clone());
  return *this;
}
Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;
Calendar::~Calendar() = default;

std::optional<Calendar> Calendar::make(std::string_view timeZoneIdentifier, std::string_view localeIdentifier) {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(
      icu::StringPiece(timeZoneIdentifier.data(), static_cast<int32_t>(timeZoneIdentifier.size())))));
  if (!zone || *zone == icu::TimeZone::getUnknown()) return std::nullopt;
  const icu::Locale locale(std::string(localeIdentifier).c_str());
  auto calendar = makeICUCalendar(zone.release(), locale);
  if (!calendar) return std::nullopt;
  return Calendar(std::move(calendar));
}

std::optional<Calendar> Calendar::iso8601(std::string_view timeZoneIdentifier) {
  auto calendar = make(timeZoneIdentifier, "en_US_POSIX@calendar=iso8601");
  if (!calendar) return std::nullopt;
  if (auto* gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar->calendar_.get())) {
    UErrorCode status = U_ZERO_ERROR;
    gregorian->setGregorianChange(-std::numeric_limits<double>::max(), status);  // no Julian days
  }
  return calendar;
}

Calendar Calendar::autoupdatingCurrent() {
  // Building an ICU calendar resolves the zone and the locale's week rules,
  // which costs more than all else a widget request does. The same zone and
  // locale give the same calendar, so each thread keeps the last one it
  // built and hands out copies until $TZ, the system's zone or the locale
  // changes.
  const std::string localeIdentifier = localeFromEnvironment();
  std::string key = hostZoneKey();
  key += '\n';
  key += localeIdentifier;
  thread_local std::string builtFor;
  thread_local std::unique_ptr<Calendar> built;
  if (!built || key != builtFor) {
    auto calendar = makeICUCalendar(icu::TimeZone::detectHostTimeZone(), icu::Locale(localeIdentifier.c_str()));
    if (!calendar) calendar = makeICUCalendar(icu::TimeZone::createTimeZone("UTC"), icu::Locale("en_US_POSIX"));
    built = std::make_unique<Calendar>(Calendar(std::move(calendar)));
    builtFor = std::move(key);
  }
  return *built;
}

std::string Calendar::timeZoneIdentifier() const {
  icu::UnicodeString id;
  calendar_->getTimeZone().getID(id);
  std::string result;
  id.toUTF8String(result);
  return result;
}

std::string Calendar::identifier() const { return calendar_->getType(); }

std::string Calendar::timeZoneDataVersion() {
  UErrorCode status = U_ZERO_ERROR;
  const char* version = icu::TimeZone::getTZDataVersion(status);
  return U_SUCCESS(status) && version != nullptr ? version : "";
}

void Calendar::findOffsetSegment(double utc) const {
  segment_ = OffsetSegment{};
  const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(&calendar_->getTimeZone());
  if (zone == nullptr) return;
  UErrorCode status = U_ZERO_ERROR;
  int32_t rawOffset = 0;
  int32_t dstOffset = 0;
  zone->getOffset(utc, false, rawOffset, dstOffset, status);
  if (U_FAILURE(status)) return;
  icu::TimeZoneTransition transition;
  const double start = zone->getPreviousTransition(utc, true, transition) ? transition.getTime() : -1e300;
  const double end = zone->getNextTransition(utc, false, transition) ? transition.getTime() : 1e300;
  segment_ = OffsetSegment{start, end, rawOffset, dstOffset};
}

Date Calendar::startOfDay(Date date) const {
  if (!isRepresentable(date)) return date;
  // Two days and more from the zone's transitions the offset holds all
  // day, and the day's midnight is the one instant with that wall time: it
  // is the local day's start less the offset, as the calendar below works
  // it out (the local time as it adds the offsets, floored to the day).
  // Only for the years 1 to 9999, beyond which the calendar's limits apply.
  constexpr double margin = 2 * millisecondsPerDay;
  const UDate utc = toICU(date);
  if (utc > -62135596800000.0 + margin && utc < 253402300800000.0 - margin) {
    // Finding a stretch costs as much as a few calendar round trips: a
    // calendar asked only now and then goes on asking ICU.
    const auto inSegment = [&] { return utc - margin >= segment_.start && utc + margin < segment_.end; };
    if (!inSegment() && ++segment_.misses > 4) findOffsetSegment(utc);
    if (inSegment()) {
      const int32_t offset = segment_.rawOffset + segment_.dstOffset;
      return fromICU(std::floor((utc + offset) / millisecondsPerDay) * millisecondsPerDay - offset);
    }
  }
  UErrorCode status = U_ZERO_ERROR;
  calendar_->setTime(toICU(date), status);
  calendar_->set(UCAL_HOUR_OF_DAY, 0);
  calendar_->set(UCAL_MINUTE, 0);
  calendar_->set(UCAL_SECOND, 0);
  calendar_->set(UCAL_MILLISECOND, 0);
  const UDate result = calendar_->getTime(status);
  return U_SUCCESS(status) ? fromICU(result) : date;
}

std::optional<Date> Calendar::dateByAddingDays(std::int64_t days, Date date) const {
  if (!isRepresentable(date) || days < std::numeric_limits<int32_t>::min() ||
      days > std::numeric_limits<int32_t>::max()) {
    return std::nullopt;
  }
  UErrorCode status = U_ZERO_ERROR;
  calendar_->setTime(toICU(date), status);
  calendar_->add(UCAL_DATE, static_cast<int32_t>(days), status);
  const UDate result = calendar_->getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  // ICU works in whole milliseconds; keep the sub-millisecond part of the input.
  const double fraction = toICU(date) - std::floor(toICU(date));
  return fromICU(result + fraction);
}

std::optional<Date> Calendar::dateByAddingSeconds(std::int64_t seconds, Date date) const {
  const Date result = date + static_cast<double>(seconds);
  if (!isRepresentable(date) || !isRepresentable(result)) return std::nullopt;
  return result;
}

std::int64_t Calendar::secondsFromGMT(Date date) const {
  if (!isRepresentable(date)) return 0;
  int32_t rawOffset = 0;
  int32_t dstOffset = 0;
  UErrorCode status = U_ZERO_ERROR;
  calendar_->getTimeZone().getOffset(date.timeIntervalSince1970() * 1000.0, false, rawOffset, dstOffset, status);
  return U_FAILURE(status) ? 0 : (static_cast<std::int64_t>(rawOffset) + dstOffset) / 1000;
}

int Calendar::weekday(Date date) const {
  UErrorCode status = U_ZERO_ERROR;
  calendar_->setTime(toICU(date), status);
  const int32_t result = calendar_->get(UCAL_DAY_OF_WEEK, status);
  return U_SUCCESS(status) ? result : 1;
}

std::optional<Date> Calendar::date(int year, int month, int day) const {
  UErrorCode status = U_ZERO_ERROR;
  calendar_->clear();
  calendar_->set(year, month - 1, day);
  const UDate result = calendar_->getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return fromICU(result);
}

bool Calendar::isDate(Date a, Date inSameDayAs) const { return startOfDay(a) == startOfDay(inSameDayAs); }

std::optional<DateInterval> Calendar::dateInterval(Unit unit, Date date) const {
  if (!isRepresentable(date)) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  calendar_->setTime(toICU(date), status);
  if (unit == Unit::weekOfYear) {
    const int32_t weekday = calendar_->get(UCAL_DAY_OF_WEEK, status);
    const int32_t back = (weekday - calendar_->getFirstDayOfWeek(status) + 7) % 7;
    calendar_->add(UCAL_DATE, -back, status);
  } else {
    calendar_->set(UCAL_DATE, 1);
  }
  calendar_->set(UCAL_HOUR_OF_DAY, 0);
  calendar_->set(UCAL_MINUTE, 0);
  calendar_->set(UCAL_SECOND, 0);
  calendar_->set(UCAL_MILLISECOND, 0);
  const UDate start = calendar_->getTime(status);
  if (unit == Unit::weekOfYear) {
    calendar_->add(UCAL_DATE, 7, status);
  } else {
    calendar_->add(UCAL_MONTH, 1, status);
  }
  calendar_->set(UCAL_HOUR_OF_DAY, 0);
  const UDate end = calendar_->getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return DateInterval::between(fromICU(start), fromICU(end));
}

std::vector<Calendar::Day> Calendar::days(Date first, Date last) const {
  std::vector<Day> result;
  if (!isRepresentable(first) || !isRepresentable(last)) return result;
  const Date firstStart = startOfDay(first);
  const Date lastStart = startOfDay(last);
  if (lastStart < firstStart) return result;

  // Every calendar system starts its days at local midnight, so the day
  // starts depend on the time zone alone: local midnight of each local day
  // number, resolved like the calendar resolves wall times (a skipped
  // midnight maps to the end of the gap, a repeated one to its first pass).
  const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(&calendar_->getTimeZone());
  UErrorCode status = U_ZERO_ERROR;
  int32_t rawOffset = 0;
  int32_t dstOffset = 0;
  const UDate firstUTC = toICU(firstStart);
  calendar_->getTimeZone().getOffset(firstUTC, false, rawOffset, dstOffset, status);
  const auto firstLocalDay =
      static_cast<std::int64_t>(std::floor((firstUTC + rawOffset + dstOffset) / millisecondsPerDay));
  const UDate lastUTC = toICU(lastStart);

  result.reserve(static_cast<std::size_t>((lastUTC - firstUTC) / millisecondsPerDay) + 2);
  // Between two transitions of the zone the offset is constant, so most
  // midnights need only arithmetic; those within two days of a transition
  // ask the zone.
  UDate segmentStart = 0;
  UDate segmentEnd = 0;
  int32_t segmentOffset = 0;
  constexpr double margin = 2 * millisecondsPerDay;
  for (std::int64_t localDay = firstLocalDay;; ++localDay) {
    const UDate localMidnight = static_cast<double>(localDay) * millisecondsPerDay;
    UDate start;
    if (localMidnight - segmentOffset - margin >= segmentStart && localMidnight - segmentOffset + margin < segmentEnd) {
      start = localMidnight - segmentOffset;
    } else if (zone != nullptr) {
      zone->getOffsetFromLocal(localMidnight, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, rawOffset, dstOffset, status);
      start = localMidnight - rawOffset - dstOffset;
      // The days just before a transition still lie in the stretch known.
      if (!(start >= segmentStart && start < segmentEnd)) {
        icu::TimeZoneTransition transition;
        segmentStart = zone->getPreviousTransition(start, true, transition) ? transition.getTime() : -1e300;
        segmentEnd = zone->getNextTransition(start, false, transition) ? transition.getTime() : 1e300;
        calendar_->getTimeZone().getOffset(start, false, rawOffset, dstOffset, status);
        segmentOffset = rawOffset + dstOffset;
      }
    } else {
      start = toICU(startOfDay(fromICU(localMidnight - rawOffset - dstOffset)));
    }
    if (U_FAILURE(status)) break;
    if (start > lastUTC) break;
    const Day day{fromICU(start), weekdayOfLocalDay(localDay)};
    // A day removed from the calendar (a zone that skipped a whole date)
    // starts where the next one does; only the later date exists.
    if (!result.empty() && result.back().start == day.start) {
      result.back() = day;
    } else {
      result.push_back(day);
    }
  }
  return result;
}

}  // namespace quillmont
