#include "platform/foundation/Base64.h"

#include <array>
#include <cstdint>

namespace quillmont::Base64 {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Each byte's six-bit value, or -1 for bytes outside the alphabet ("=" included).
constexpr std::array<std::int8_t, 256> symbolValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < alphabet.size(); ++i) values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
  return values;
}();

}  // namespace

std::string encode(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  const auto byteAt = [&](std::size_t i) -> std::uint32_t { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0; };
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::uint32_t group = byteAt(i) << 16 | byteAt(i + 1) << 8 | byteAt(i + 2);
    const std::size_t present = bytes.size() - i;  // 1, 2, or 3 and more
    text += alphabet[group >> 18 & 63];
    text += alphabet[group >> 12 & 63];
    text += present > 1 ? alphabet[group >> 6 & 63] : '=';
    text += present > 2 ? alphabet[group & 63] : '=';
  }
  return text;
}

std::optional<std::string> decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  if (!text.empty() && text.back() == '=') padding = text[text.size() - 2] == '=' ? 2 : 1;

  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t start = 0; start < text.size(); start += 4) {
    const std::size_t quantumPadding = start + 4 == text.size() ? padding : 0;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 4 - quantumPadding; ++k) {
      const int value = symbolValues[static_cast<unsigned char>(text[start + k])];
      if (value < 0) return std::nullopt;
      group |= static_cast<std::uint32_t>(value) << (18 - 6 * k);
    }
    bytes += static_cast<char>(group >> 16);
    if (quantumPadding < 2) bytes += static_cast<char>(group >> 8 & 0xFF);
    if (quantumPadding < 1) bytes += static_cast<char>(group & 0xFF);
  }
  return bytes;
}

}  // namespace quillmont::Base64
