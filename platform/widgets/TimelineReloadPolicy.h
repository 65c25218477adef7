// TimelineReloadPolicy: when a host asks a widget's provider for its next
// timeline: after the last entry's date, at a given instant, or only when
// somebody calls WidgetCenter::reloadAllTimelines().
#pragma once

#include <optional>

#include "platform/foundation/Date.h"

namespace quillmont {

class TimelineReloadPolicy {
 public:
  enum class Kind { atEnd, after, never };

  static TimelineReloadPolicy atEnd() { return TimelineReloadPolicy(Kind::atEnd, std::nullopt); }
  static TimelineReloadPolicy after(Date date) { return TimelineReloadPolicy(Kind::after, date); }
  static TimelineReloadPolicy never() { return TimelineReloadPolicy(Kind::never, std::nullopt); }

  Kind kind() const { return kind_; }
  /// The instant of an `after` policy.
  std::optional<Date> date() const { return date_; }

  friend bool operator==(const TimelineReloadPolicy&, const TimelineReloadPolicy&) = default;

 private:
  TimelineReloadPolicy(Kind kind, std::optional<Date> date) : kind_(kind), date_(date) {}
  Kind kind_;
  std::optional<Date> date_;
};

}  // namespace quillmont
