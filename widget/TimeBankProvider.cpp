#include "widget/TimeBankProvider.h"

#include "core/widgetstate/WidgetSnapshotStore.h"

namespace quillmont {
namespace {

TimeBankTimelineEntry currentEntry(Date now, const Calendar& calendar) {
  return TimeBankTimelineEntry{now, WidgetSnapshotStore::load().displayed(now, calendar)};
}

}  // namespace

TimeBankTimelineEntry TimeBankProvider::placeholder(const TimelineProviderContext&) const {
  return TimeBankTimelineEntry{Date::now(), WidgetSnapshot::placeholder()};
}

void TimeBankProvider::getSnapshot(const TimelineProviderContext&,
                                   const std::function<void(TimeBankTimelineEntry)>& completion) const {
  completion(currentEntry(Date::now(), Calendar::autoupdatingCurrent()));
}

void TimeBankProvider::getTimeline(const TimelineProviderContext&,
                                   const std::function<void(Timeline<TimeBankTimelineEntry>)>& completion) const {
  const Date now = Date::now();
  const Calendar calendar = Calendar::autoupdatingCurrent();
  Timeline<TimeBankTimelineEntry> timeline;
  timeline.entries.push_back(currentEntry(now, calendar));
  timeline.policy = TimelineReloadPolicy::after(nextReload(now, calendar));
  completion(std::move(timeline));
}

Date TimeBankProvider::nextReload(Date now, const Calendar& calendar) {
  // A day whose midnight a daylight-saving change skipped starts later
  // (01:00 in São Paulo on 2018-11-04); one day after that start is not the
  // next day's start, so take the start of the day it falls on.
  if (const auto next = calendar.dateByAddingDays(1, calendar.startOfDay(now))) return calendar.startOfDay(*next);
  return now + fallbackReloadInterval;
}

}  // namespace quillmont
