#include "app/records/RecordLookup.h"

#include <cctype>

namespace quillmont::RecordLookup {

std::optional<std::string> normalizedPrefix(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '-') continue;
    if (!std::isxdigit(static_cast<unsigned char>(c))) return std::nullopt;
    result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  if (result.empty() || result.size() > 32) return std::nullopt;
  return result;
}

std::optional<std::size_t> recentPlace(std::string_view text) {
  if (text == "last") return 1;
  if (text.empty() || text.front() != '@') return std::nullopt;
  const std::string_view digits = text.substr(1);
  std::size_t place = 0;
  bool valid = !digits.empty() && digits.size() <= 6;
  for (const char c : digits) {
    if (!std::isdigit(static_cast<unsigned char>(c))) {
      valid = false;
      break;
    }
    place = place * 10 + static_cast<std::size_t>(c - '0');
  }
  if (!valid || place == 0) {
    throw InvalidInput("", "'" + std::string(text) + "' names no record (try @1 for the newest, @2 for the one before it)");
  }
  return place;
}

bool matches(const UUID& id, std::string_view normalizedPrefix) {
  static constexpr char digits[] = "0123456789ABCDEF";
  for (std::size_t i = 0; i < normalizedPrefix.size(); ++i) {
    const std::uint8_t byte = id.bytes[i / 2];
    const char digit = digits[i % 2 == 0 ? byte >> 4 : byte & 0x0F];
    if (digit != normalizedPrefix[i]) return false;
  }
  return true;
}

}  // namespace quillmont::RecordLookup
