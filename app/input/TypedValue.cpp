#include "app/input/TypedValue.h"

#include "app/InvalidInput.h"
#include "app/input/DurationInput.h"
#include "platform/foundation/Text.h"

namespace quillmont::TypedValue {
namespace {

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

}  // namespace

const std::string& text(const std::string& text, std::string_view field) {
  if (!Text::isValidUTF8(text)) throw InvalidInput(std::string(field), "the text is not valid UTF-8");
  return text;
}

std::int64_t minutes(std::string_view text, std::string_view field) {
  if (const auto value = DurationInput::minutes(text)) return *value;
  throw InvalidInput(std::string(field),
                     quoted(text) + " is not a duration (try 90, -45, 1:30, -0:45, 1h30m, -2h or 45m)");
}

DateInput::Day day(std::string_view text, const DateInput::Day& today, std::string_view field) {
  if (const auto value = DateInput::day(text, today)) return *value;
  throw InvalidInput(std::string(field), quoted(text) + " is not a day (try YYYY-MM-DD, today or yesterday)");
}

Date dateTime(std::string_view text, const DateInput::Day& today, const Calendar& calendar, std::string_view field) {
  if (const auto value = DateInput::dateTime(text, today)) return DateInput::instant(*value, calendar);
  throw InvalidInput(std::string(field),
                     quoted(text) + " is not a time (try \"YYYY-MM-DD HH:MM\" or HH:MM for today)");
}

}  // namespace quillmont::TypedValue
