// TimeBankProvider: answers the widget host from the stored snapshot alone,
// never from the record store, so every request is cheap and none can fail.
// Each request reads the snapshot afresh and applies the day-change rule in
// the user's current calendar. The timeline holds one entry dated now and
// asks to be reloaded at the start of the next local day (or in six hours
// when the calendar cannot tell). The context (size, preview) is not read:
// every family gets the same entry.
#pragma once

#include "platform/foundation/Calendar.h"
#include "platform/widgets/TimelineProvider.h"
#include "widget/TimeBankTimelineEntry.h"

namespace quillmont {

class TimeBankProvider final : public TimelineProvider<TimeBankTimelineEntry> {
 public:
  static constexpr TimeInterval fallbackReloadInterval = 21600;

  /// The sample figures (WidgetSnapshot::placeholder), whatever is stored.
  TimeBankTimelineEntry placeholder(const TimelineProviderContext& context) const override;
  void getSnapshot(const TimelineProviderContext& context,
                   const std::function<void(TimeBankTimelineEntry)>& completion) const override;
  void getTimeline(const TimelineProviderContext& context,
                   const std::function<void(Timeline<TimeBankTimelineEntry>)>& completion) const override;

  /// The start of the day after the one holding `now`; now + six hours when
  /// the calendar gives no such day.
  static Date nextReload(Date now, const Calendar& calendar);
};

}  // namespace quillmont
