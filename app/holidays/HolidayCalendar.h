// HolidayCalendar: the events of an iCalendar file (RFC 5545) as the days
// they cover, read with libical. Each VEVENT gives its UID, its summary and
// every day from its start to its end (an all-day event's end is the day
// after its last; an event without an end covers its start's day);
// recurring events (RRULE) repeat through `until`. libical is loaded when a
// file is read, so the program starts without it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/input/DateInput.h"

namespace quillmont::HolidayCalendar {

struct Event {
  std::string uid;
  std::string name;
  DateInput::Day day;
};

/// The days of the events in `text`, in the file's order, occurrences of a
/// recurring event in time order. Throws Refusal when libical cannot
/// be loaded or the text holds no calendar events.
std::vector<Event> read(const std::string& text, const DateInput::Day& until);

}  // namespace quillmont::HolidayCalendar
