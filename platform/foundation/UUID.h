// UUID: a 16-byte identifier (libuuid underneath). Its text form is the
// canonical 8-4-4-4-12 upper-case hexadecimal form; ordering compares the
// bytes in order, which is also the order of the upper-case texts.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmont {

struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  /// A new random (version 4) identifier.
  static UUID random();
  /// The name-based (version 5, SHA-1) identifier of `name` in `space`: the
  /// same for the same name on every machine.
  static UUID named(const UUID& space, std::string_view name);
  /// Parses the 36-character 8-4-4-4-12 form, letters in either case.
  /// Anything else (braces, missing hyphens, white space) yields nothing.
  static std::optional<UUID> parse(std::string_view text);

  /// The canonical upper-case text, e.g. "C0DE5EED-0B4A-4C2A-9D6E-000000000001".
  std::string uuidString() const;

  friend constexpr bool operator==(const UUID&, const UUID&) = default;
  friend constexpr auto operator<=>(const UUID&, const UUID&) = default;
};

}  // namespace quillmont

template <>
struct std::hash<quillmont::UUID> {
  std::size_t operator()(const quillmont::UUID& uuid) const noexcept;
};
