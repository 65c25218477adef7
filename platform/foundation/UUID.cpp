#include "platform/foundation/UUID.h"

#include <uuid/uuid.h>

#include <cstring>

namespace quillmont {
namespace {

constexpr bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

UUID UUID::random() {
  UUID result;
  uuid_generate_random(result.bytes.data());
  return result;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  // libuuid's parser accepts exactly the 36-character form; check the shape
  // first so that it never reads past the view.
  if (text.size() != 36) return std::nullopt;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
    if (hyphen ? text[i] != '-' : !isHexDigit(text[i])) return std::nullopt;
  }
  char buffer[37];
  std::memcpy(buffer, text.data(), 36);
  buffer[36] = '\0';
  UUID result;
  if (uuid_parse(buffer, result.bytes.data()) != 0) return std::nullopt;
  return result;
}

std::string UUID::uuidString() const {
  char buffer[37];
  uuid_unparse_upper(bytes.data(), buffer);
  return std::string(buffer, 36);
}

}  // namespace quillmont

std::size_t std::hash<quillmont::UUID>::operator()(const quillmont::UUID& uuid) const noexcept {
  std::uint64_t high;
  std::uint64_t low;
  std::memcpy(&high, uuid.bytes.data(), 8);
  std::memcpy(&low, uuid.bytes.data() + 8, 8);
  return static_cast<std::size_t>(high ^ (low * 0x9E3779B97F4A7C15ULL));
}
