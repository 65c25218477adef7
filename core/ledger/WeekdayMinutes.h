// WeekdayMinutes: expected minutes for the seven weekdays, Monday first
// (index 0 Monday ... 6 Sunday), and the rule that schedules and settings
// apply when they are given a sequence of any length.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace quillmont {

using WeekdayMinutes = std::array<std::int64_t, 7>;

inline constexpr std::int64_t maximumDailyMinutes = 1440;

constexpr std::int64_t clampedDailyMinutes(std::int64_t minutes) {
  return std::clamp<std::int64_t>(minutes, 0, maximumDailyMinutes);
}

/// Element i of `given` where it exists, else `missing[i]`, clamped to
/// 0 ... 1440; elements beyond the seventh are ignored.
constexpr WeekdayMinutes normalizedWeekdayMinutes(std::span<const std::int64_t> given, const WeekdayMinutes& missing) {
  WeekdayMinutes result{};
  for (std::size_t i = 0; i < result.size(); ++i) result[i] = clampedDailyMinutes(i < given.size() ? given[i] : missing[i]);
  return result;
}

/// Monday-first index of a calendar weekday number (1 Sunday ... 7 Saturday).
constexpr std::size_t weekdayIndex(int weekday) { return static_cast<std::size_t>((weekday + 5) % 7); }

inline constexpr WeekdayMinutes noWeekdayMinutes{0, 0, 0, 0, 0, 0, 0};
inline constexpr WeekdayMinutes defaultWeekdayMinutes{480, 480, 480, 480, 480, 0, 0};

}  // namespace quillmont
