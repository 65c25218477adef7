// QuickActionConfiguration: the four quick-action amounts of the settings
// and the widget. Every amount is one of the supported values; a settings
// record always holds exactly four (repeats allowed).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace quillmont::QuickActionConfiguration {

inline constexpr std::array<std::int64_t, 4> defaultMinutes{15, 30, 60, 120};
inline constexpr std::array<std::int64_t, 13> supportedMinutes{5, 10, 15, 20, 30, 45, 60, 90, 120, 180, 240, 360, 480};

/// Exactly four supported amounts: missing positions take their default,
/// each value is clamped to 5...480 and moved to the nearest supported amount
/// (ties to the smaller); elements after the fourth are ignored.
std::array<std::int64_t, 4> normalized(std::span<const std::int64_t> minutes);

/// Short label: "45 min", "1 hr", "1 hr 30 min", "2 hrs".
std::string displayName(std::int64_t minutes);

}  // namespace quillmont::QuickActionConfiguration
