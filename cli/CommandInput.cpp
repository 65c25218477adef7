#include "cli/CommandInput.h"

#include <cctype>

#include "app/text/Display.h"
#include "app/input/DurationInput.h"
#include "cli/UsageError.h"
#include "platform/foundation/Text.h"

namespace quillmont::CommandInput {
namespace {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  return text;
}

std::string quoted(std::string_view text) {
  std::string result(1, '\'');
  result += text;
  result += '\'';
  return result;
}

}  // namespace

const std::string& text(const std::string& text, std::string_view option) {
  if (!Text::isValidUTF8(text)) throw UsageError(std::string(option) + ": the text is not valid UTF-8");
  return text;
}

std::int64_t minutes(std::string_view text, std::string_view option) {
  if (const auto value = DurationInput::minutes(text)) return *value;
  throw UsageError(std::string(option) + ": " + quoted(text) +
                   " is not a duration (try 90, -45, 1:30, -0:45, 1h30m, -2h or 45m)");
}

std::vector<std::int64_t> minutesList(std::string_view text, std::string_view option, std::size_t count) {
  const auto values = DurationInput::minutesList(text);
  if (!values || values->size() != count) {
    throw UsageError(std::string(option) + ": " + quoted(text) + " is not a list of " + std::to_string(count) +
                     " durations separated by commas");
  }
  return *values;
}

DateInput::Day day(std::string_view text, const DateInput::Day& today, std::string_view option) {
  if (const auto value = DateInput::day(text, today)) return *value;
  throw UsageError(std::string(option) + ": " + quoted(text) + " is not a day (try YYYY-MM-DD, today or yesterday)");
}

Date dateTime(std::string_view text, const DateInput::Day& today, const Calendar& calendar, std::string_view option) {
  if (const auto value = DateInput::dateTime(text, today)) return DateInput::instant(*value, calendar);
  throw UsageError(std::string(option) + ": " + quoted(text) +
                   " is not a time (try \"YYYY-MM-DD HH:MM\" or HH:MM for today)");
}

Date startTime(std::string_view text, const DateInput::Day& day, const DateInput::Day& today, const Calendar& calendar,
               std::string_view option) {
  return dateTime(text, DateInput::isTimeOfDay(text) ? day : today, calendar, option);
}

Date endTime(std::string_view text, Date start, const DateInput::Day& today, const Calendar& calendar,
             std::string_view option) {
  if (!DateInput::isTimeOfDay(text)) return dateTime(text, today, calendar, option);
  const DateInput::Day startDay = DateInput::dayOf(start, calendar);
  const Date sameDay = dateTime(text, startDay, calendar, option);
  return sameDay < start ? dateTime(text, startDay.adding(1), calendar, option) : sameDay;
}

Date workEndTime(std::string_view text, Date start, Date now, const Calendar& calendar, std::string_view option) {
  const DateInput::Day today = DateInput::dayOf(now, calendar);
  const Date end = endTime(text, start, today, calendar, option);
  if (!DateInput::isTimeOfDay(text)) return end;
  const Display display(calendar);
  const auto writeTheDay = [&] {
    return "; if that is meant, write the day: " + std::string(option) + " \"" + display.day(end) + " " +
           std::string(trimmed(text)) + "\"";
  };
  if (end > now) {
    throw UsageError(std::string(option) + ": " + quoted(trimmed(text)) + " would end the work at " +
                     display.dateTime(end) + ", which is still to come" + writeTheDay());
  }
  if (display.day(end) != display.day(start) && end - start > maximumNightSeconds) {
    throw UsageError(std::string(option) + ": " + quoted(trimmed(text)) + " would end the work on the next day, " +
                     display.dateTime(end) + ", after " + Display::duration(end - start) + writeTheDay());
  }
  return end;
}

Date pastTime(std::string_view text, Date now, const Calendar& calendar, std::string_view option) {
  const DateInput::Day today = DateInput::dayOf(now, calendar);
  const Date typed = dateTime(text, today, calendar, option);
  if (typed <= now) return typed;
  const Display display(calendar);
  if (DateInput::isTimeOfDay(text)) {
    const Date yesterday = dateTime(text, today.adding(-1), calendar, option);
    throw UsageError(std::string(option) + ": " + quoted(trimmed(text)) + " today is still to come (it is " +
                     display.time(now) + " now); for yesterday, type " + std::string(option) + " \"" +
                     display.day(yesterday) + " " + std::string(trimmed(text)) + "\"");
  }
  throw UsageError(std::string(option) + ": " + quoted(text) + " is still to come");
}

DateInterval days(const std::string& from, const std::string& to, const DateInput::Day& defaultFrom,
                  const DateInput::Day& defaultTo, const DateInput::Day& today, const Calendar& calendar) {
  const DateInput::Day first = from.empty() ? defaultFrom : day(from, today, "--from");
  const DateInput::Day last = to.empty() ? defaultTo : day(to, today, "--to");
  if (last < first) throw UsageError("--to: the last day comes before the first (--from)");
  return DateInterval::between(DateInput::startOfDay(first, calendar), DateInput::endOfDay(last, calendar));
}

}  // namespace quillmont::CommandInput
