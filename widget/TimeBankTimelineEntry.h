// TimeBankTimelineEntry: one entry of the time-bank widget's timeline: when
// to show it and the snapshot to show.
#pragma once

#include "core/widgetstate/WidgetSnapshot.h"
#include "platform/foundation/Date.h"

namespace quillmont {

struct TimeBankTimelineEntry {
  Date date;
  WidgetSnapshot snapshot;

  friend bool operator==(const TimeBankTimelineEntry&, const TimeBankTimelineEntry&) = default;
};

}  // namespace quillmont
