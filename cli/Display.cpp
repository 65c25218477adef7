#include "cli/Display.h"

#include "core/ledger/DurationFormatting.h"

namespace quillmont {

Calendar Display::gregorian(const Calendar& calendar) {
  auto result = Calendar::iso8601(calendar.timeZoneIdentifier());
  return result ? *result : calendar;
}

Display::Display(const Calendar& calendar) : calendar_(gregorian(calendar)) {}

const DateFormatter& Display::formatter(std::optional<DateFormatter>& slot, std::string_view pattern) const {
  if (!slot) slot.emplace(calendar_, pattern);
  return *slot;
}

std::string Display::day(Date date) const { return formatter(day_, "yyyy-MM-dd").string(date); }
std::string Display::dateTime(Date date) const { return formatter(dateTime_, "yyyy-MM-dd HH:mm").string(date); }
std::string Display::time(Date date) const { return formatter(time_, "HH:mm").string(date); }
std::string Display::weekday(Date date) const { return formatter(weekday_, "EEE").string(date); }
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
