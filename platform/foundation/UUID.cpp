#include "platform/foundation/UUID.h"

#include <uuid/uuid.h>

#include <array>
#include <cstring>

namespace quillmont {
namespace {

// Value of each byte as a hexadecimal digit, or -1.
constexpr std::array<std::int8_t, 256> hexValues = [] {
  std::array<std::int8_t, 256> table{};
  table.fill(-1);
  for (int i = 0; i < 10; ++i) table['0' + i] = static_cast<std::int8_t>(i);
  for (int i = 0; i < 6; ++i) {
    table['a' + i] = static_cast<std::int8_t>(10 + i);
    table['A' + i] = static_cast<std::int8_t>(10 + i);
  }
  return table;
}();

constexpr int hexValue(char c) { return hexValues[static_cast<unsigned char>(c)]; }

}  // namespace

UUID UUID::random() {
  UUID result;
  uuid_generate_random(result.bytes.data());
  return result;
}

UUID UUID::named(const UUID& space, std::string_view name) {
  UUID result;
  uuid_generate_sha1(result.bytes.data(), space.bytes.data(), name.data(), name.size());
  return result;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  // Archives hold hundreds of thousands of identifiers: decode by hand
  // rather than through libuuid's strtoull-based parser.
  if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') {
    return std::nullopt;
  }
  UUID result;
  std::size_t position = 0;
  for (auto& byte : result.bytes) {
    if (position == 8 || position == 13 || position == 18 || position == 23) ++position;
    const int high = hexValue(text[position]);
    const int low = hexValue(text[position + 1]);
    if ((high | low) < 0) return std::nullopt;
    byte = static_cast<std::uint8_t>(high << 4 | low);
    position += 2;
  }
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
