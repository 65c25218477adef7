#include "cli/input/CommandInput.h"

#include "app/InvalidInput.h"
#include "app/input/DurationInput.h"
#include "app/input/TypedValue.h"
#include "cli/input/UsageError.h"

namespace quillmont::CommandInput {
namespace {

std::string quoted(std::string_view text) {
  std::string result(1, '\'');
  result += text;
  result += '\'';
  return result;
}

/// Reads through the application layer's wording, under the option's name.
template <class Read>
decltype(auto) spelled(std::string_view option, Read read) {
  try {
    return read();
  } catch (const InvalidInput& error) {
    throw UsageError(std::string(option) + ": " + error.reason());
  }
}

}  // namespace

const std::string& text(const std::string& text, std::string_view option) {
  return spelled(option, [&]() -> const std::string& { return TypedValue::text(text, option); });
}

std::int64_t minutes(std::string_view text, std::string_view option) {
  return spelled(option, [&] { return TypedValue::minutes(text, option); });
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
  return spelled(option, [&] { return TypedValue::day(text, today, option); });
}

DateInterval days(const std::string& from, const std::string& to, const DateInput::Day& defaultFrom,
                  const DateInput::Day& defaultTo, const DateInput::Day& today, const Calendar& calendar) {
  const DateInput::Day first = from.empty() ? defaultFrom : day(from, today, "--from");
  const DateInput::Day last = to.empty() ? defaultTo : day(to, today, "--to");
  if (last < first) throw UsageError("--to: the last day comes before the first (--from)");
  return DateInterval::between(DateInput::startOfDay(first, calendar), DateInput::endOfDay(last, calendar));
}

}  // namespace quillmont::CommandInput
