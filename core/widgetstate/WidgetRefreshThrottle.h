// WidgetRefreshThrottle: lets a caller refresh at most once per interval.
// A claim succeeds the first time, after the interval has passed since the
// last successful claim, or when the clock went back; a successful claim
// remembers its instant. Copies claim independently.
#pragma once

#include <optional>

#include "platform/foundation/Date.h"

namespace quillmont {

class WidgetRefreshThrottle {
 public:
  WidgetRefreshThrottle() = default;

  bool claim(Date at, TimeInterval minimumInterval) {
    if (lastClaimedAt_) {
      const TimeInterval elapsed = at - *lastClaimedAt_;
      const TimeInterval interval = minimumInterval > 0 ? minimumInterval : 0;
      if (elapsed >= 0 && elapsed < interval) return false;
    }
    lastClaimedAt_ = at;
    return true;
  }

 private:
  std::optional<Date> lastClaimedAt_;
};

}  // namespace quillmont
