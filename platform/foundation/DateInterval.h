// DateInterval: a closed span of time [start, end] given by its start and
// duration. Intersection follows closed-interval rules: intervals that only
// touch intersect in a zero-length interval; a gap means no intersection.
#pragma once

#include <optional>

#include "platform/foundation/Date.h"

namespace quillmont {

struct DateInterval {
  Date start;
  TimeInterval duration = 0;

  constexpr DateInterval() = default;
  constexpr DateInterval(Date start_, TimeInterval duration_) : start(start_), duration(duration_) {}
  /// The interval from `start` to `end`; an `end` before `start` gives duration 0.
  static constexpr DateInterval between(Date start, Date end) {
    return DateInterval(start, end < start ? 0 : end - start);
  }

  constexpr Date end() const { return start + duration; }
  constexpr bool contains(Date date) const { return start <= date && date <= end(); }

  std::optional<DateInterval> intersection(const DateInterval& other) const;

  friend constexpr bool operator==(const DateInterval&, const DateInterval&) = default;
};

}  // namespace quillmont
