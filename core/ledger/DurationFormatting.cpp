#include "core/ledger/DurationFormatting.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace quillmont::DurationFormatting {
namespace {

constexpr const char* minusSign = "\u2212";
constexpr const char* emDash = "\u2014";

struct HoursAndMinutes {
  std::uint64_t hours;
  std::uint64_t minutes;
};

// Whole minutes of |seconds|, halves away from zero; nothing when the value
// cannot be shown.
std::optional<HoursAndMinutes> wholeMinutes(TimeInterval seconds) {
  if (!std::isfinite(seconds)) return std::nullopt;
  const double minutes = std::round(std::fabs(seconds) / 60.0);
  if (minutes > 4611686018427387904.0) return std::nullopt;  // 2^62
  const auto total = static_cast<std::uint64_t>(minutes);
  return HoursAndMinutes{total / 60, total % 60};
}

}  // namespace

std::string clock(TimeInterval seconds, bool includeSign) {
  std::string result;
  if (includeSign) result = seconds < 0 ? minusSign : "+";
  const auto value = wholeMinutes(seconds);
  if (!value) return result + emDash;
  // A report writes thousands of these: no format string to interpret.
  char buffer[32];
  char* end = std::to_chars(buffer, buffer + sizeof buffer, value->hours).ptr;
  *end++ = ':';
  *end++ = static_cast<char>('0' + value->minutes / 10);
  *end++ = static_cast<char>('0' + value->minutes % 10);
  result.append(buffer, end);
  return result;
}

std::string accessible(TimeInterval seconds) {
  const auto value = wholeMinutes(seconds);
  if (!value) return "duration unavailable";
  char buffer[96];
  std::snprintf(buffer, sizeof buffer, "%s %llu hours, %llu minutes", seconds < 0 ? "minus" : "plus",
                static_cast<unsigned long long>(value->hours), static_cast<unsigned long long>(value->minutes));
  return buffer;
}

}  // namespace quillmont::DurationFormatting
