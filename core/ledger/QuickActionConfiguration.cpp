#include "core/ledger/QuickActionConfiguration.h"

#include <algorithm>

namespace quillmont::QuickActionConfiguration {

std::array<std::int64_t, 4> normalized(std::span<const std::int64_t> minutes) {
  std::array<std::int64_t, 4> result{};
  for (std::size_t i = 0; i < result.size(); ++i) {
    const std::int64_t value = std::clamp(i < minutes.size() ? minutes[i] : defaultMinutes[i],
                                          supportedMinutes.front(), supportedMinutes.back());
    std::int64_t nearest = supportedMinutes.front();
    for (const std::int64_t supported : supportedMinutes) {
      // Ascending scan with a strict test keeps the smaller of two equally near.
      if (std::abs(supported - value) < std::abs(nearest - value)) nearest = supported;
    }
    result[i] = nearest;
  }
  return result;
}

std::string displayName(std::int64_t minutes) {
  const std::int64_t hours = minutes / 60;
  const std::int64_t rest = minutes - 60 * hours;
  if (minutes >= -59 && minutes <= 59) return std::to_string(minutes) + " min";
  if (rest != 0) return std::to_string(hours) + " hr " + std::to_string(rest) + " min";
  if (minutes == 60) return "1 hr";
  return std::to_string(hours) + " hrs";
}

}  // namespace quillmont::QuickActionConfiguration
