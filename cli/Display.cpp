#include "cli/Display.h"

#include "core/ledger/DurationFormatting.h"

namespace quillmont {

Calendar Display::gregorian(const Calendar& calendar) {
  auto result = Calendar::iso8601(calendar.timeZoneIdentifier());
  return result ? *result : calendar;
}

Display::Display(const Calendar& calendar)
    : calendar_(gregorian(calendar)),
      day_(calendar_, "yyyy-MM-dd"),
      dateTime_(calendar_, "yyyy-MM-dd HH:mm"),
      time_(calendar_, "HH:mm"),
      weekday_(calendar_, "EEE"),
      timestamp_(calendar_, "yyyy-MM-dd'T'HH:mm:ssxxx") {}

std::string Display::day(Date date) const { return day_.string(date); }
std::string Display::dateTime(Date date) const { return dateTime_.string(date); }
std::string Display::time(Date date) const { return time_.string(date); }
std::string Display::weekday(Date date) const { return weekday_.string(date); }
std::string Display::timestamp(Date date) const { return timestamp_.string(date); }

std::string Display::amount(double seconds) { return DurationFormatting::clock(seconds, true); }

std::string Display::amountOfMinutes(std::int64_t minutes) {
  return DurationFormatting::clock(static_cast<double>(minutes) * 60.0, true);
}

std::string Display::duration(double seconds) { return DurationFormatting::clock(seconds, false); }

std::string Display::shortIdentifier(const UUID& id) { return id.uuidString().substr(0, shortIdentifierLength); }

}  // namespace quillmont
