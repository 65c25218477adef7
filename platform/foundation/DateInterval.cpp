#include "platform/foundation/DateInterval.h"

#include <algorithm>

namespace quillmont {

std::optional<DateInterval> DateInterval::intersection(const DateInterval& other) const {
  const Date lower = std::max(start, other.start);
  const Date upper = std::min(end(), other.end());
  if (upper < lower) return std::nullopt;
  return DateInterval(lower, upper - lower);
}

}  // namespace quillmont
