#include "app/work/WorkTimes.h"

#include <cctype>
#include <string>

#include "app/InvalidInput.h"
#include "app/input/TypedValue.h"
#include "app/text/Display.h"

namespace quillmont::WorkTimes {
namespace {

using TypedValue::dateTime;

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  return text;
}

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

}  // namespace

Date startTime(std::string_view text, const DateInput::Day& day, const DateInput::Day& today, const Calendar& calendar,
               std::string_view field) {
  return dateTime(text, DateInput::isTimeOfDay(text) ? day : today, calendar, field);
}

Date endTime(std::string_view text, Date start, const DateInput::Day& today, const Calendar& calendar,
             std::string_view field) {
  if (!DateInput::isTimeOfDay(text)) return dateTime(text, today, calendar, field);
  const DateInput::Day startDay = DateInput::dayOf(start, calendar);
  const Date sameDay = dateTime(text, startDay, calendar, field);
  return sameDay < start ? dateTime(text, startDay.adding(1), calendar, field) : sameDay;
}

Date workEndTime(std::string_view text, Date start, Date now, const Calendar& calendar, std::string_view field) {
  const DateInput::Day today = DateInput::dayOf(now, calendar);
  const Date end = endTime(text, start, today, calendar, field);
  if (!DateInput::isTimeOfDay(text)) return end;
  const Display display(calendar);
  const Remedy writeTheDay{Remedy::Kind::writeTheDay, std::string(field),
                           display.day(end) + " " + std::string(trimmed(text))};
  if (end > now) {
    throw InvalidInput(std::string(field),
                       quoted(trimmed(text)) + " would end the work at " + display.dateTime(end) +
                           ", which is still to come",
                       writeTheDay);
  }
  if (display.day(end) != display.day(start) && end - start > maximumNightSeconds) {
    throw InvalidInput(std::string(field),
                       quoted(trimmed(text)) + " would end the work on the next day, " + display.dateTime(end) +
                           ", after " + Display::duration(end - start),
                       writeTheDay);
  }
  return end;
}

Date pastTime(std::string_view text, Date now, const Calendar& calendar, std::string_view field) {
  const DateInput::Day today = DateInput::dayOf(now, calendar);
  const Date typed = dateTime(text, today, calendar, field);
  if (typed <= now) return typed;
  const Display display(calendar);
  if (DateInput::isTimeOfDay(text)) {
    const Date yesterday = dateTime(text, today.adding(-1), calendar, field);
    throw InvalidInput(std::string(field),
                       quoted(trimmed(text)) + " today is still to come (it is " + display.time(now) + " now)",
                       {Remedy::Kind::writeYesterday, std::string(field),
                        display.day(yesterday) + " " + std::string(trimmed(text))});
  }
  throw InvalidInput(std::string(field), quoted(text) + " is still to come");
}

}  // namespace quillmont::WorkTimes
