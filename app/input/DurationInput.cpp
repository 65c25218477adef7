#include "app/input/DurationInput.h"

#include <cctype>
#include <limits>

namespace quillmont::DurationInput {
namespace {

constexpr std::int64_t maximumMagnitude = std::numeric_limits<std::int64_t>::max() / 60;

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Reads the digits at the front of `text` (at least one); nothing on overflow.
std::optional<std::int64_t> digits(std::string_view& text) {
  std::size_t count = 0;
  std::int64_t value = 0;
  while (count < text.size() && std::isdigit(static_cast<unsigned char>(text[count]))) {
    const int digit = text[count] - '0';
    if (value > (maximumMagnitude - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
    ++count;
  }
  if (count == 0) return std::nullopt;
  text.remove_prefix(count);
  return value;
}

std::optional<std::int64_t> hoursAndMinutes(std::int64_t hours, std::int64_t minutes) {
  if (hours > (maximumMagnitude - minutes) / 60) return std::nullopt;
  return hours * 60 + minutes;
}

// "1:30": hours, a colon, exactly two digits of minutes below 60.
std::optional<std::int64_t> clockForm(std::string_view text) {
  const auto hours = digits(text);
  if (!hours || text.size() != 3 || text[0] != ':') return std::nullopt;
  text.remove_prefix(1);
  const auto minutes = digits(text);
  if (!minutes || !text.empty() || *minutes >= 60) return std::nullopt;
  return hoursAndMinutes(*hours, *minutes);
}

// "1h30m", "2h", "45m", "1h 30m".
std::optional<std::int64_t> unitForm(std::string_view text) {
  std::optional<std::int64_t> hours;
  std::optional<std::int64_t> minutes;
  while (!text.empty()) {
    const auto value = digits(text);
    if (!value || text.empty()) return std::nullopt;
    const char unit = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    text.remove_prefix(1);
    if (unit == 'h' && !hours && !minutes) {
      hours = value;
    } else if (unit == 'm' && !minutes) {
      minutes = value;
    } else {
      return std::nullopt;
    }
    if (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  }
  if (!hours && !minutes) return std::nullopt;
  return hoursAndMinutes(hours.value_or(0), minutes.value_or(0));
}

}  // namespace

std::optional<std::int64_t> minutes(std::string_view text) {
  text = trimmed(text);
  bool negative = false;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  if (text.empty() || !std::isdigit(static_cast<unsigned char>(text.front()))) return std::nullopt;

  std::optional<std::int64_t> magnitude;
  if (text.find(':') != std::string_view::npos) {
    magnitude = clockForm(text);
  } else if (text.find_first_not_of("0123456789") == std::string_view::npos) {
    magnitude = digits(text);
  } else {
    magnitude = unitForm(text);
  }
  if (!magnitude) return std::nullopt;
  return negative ? -*magnitude : *magnitude;
}

std::optional<std::vector<std::int64_t>> minutesList(std::string_view text) {
  std::vector<std::int64_t> result;
  if (trimmed(text).empty()) return result;
  while (true) {
    const std::size_t comma = text.find(',');
    const auto value = minutes(text.substr(0, comma));
    if (!value) return std::nullopt;
    result.push_back(*value);
    if (comma == std::string_view::npos) return result;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace quillmont::DurationInput
