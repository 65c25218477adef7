#include "desktop/TimelineDriver.h"

#include <QSocketNotifier>
#include <utility>

namespace quillmont {

TimelineDriver::TimelineDriver(WidgetConfiguration widget, WidgetFamily family, QObject* parent)
    : QObject(parent),
      widget_(std::move(widget)),
      family_(family),
      requests_(std::make_unique<QSocketNotifier>(watcher_.fileDescriptor(), QSocketNotifier::Read)),
      rings_(std::make_unique<QSocketNotifier>(alarm_.fileDescriptor(), QSocketNotifier::Read)) {
  connect(requests_.get(), &QSocketNotifier::activated, this, [this] { requestsArrived(); });
  connect(rings_.get(), &QSocketNotifier::activated, this, [this] { alarmRang(); });
  reload();
}

TimelineDriver::~TimelineDriver() = default;

void TimelineDriver::setFamily(WidgetFamily family) {
  if (family == family_) return;
  family_ = family;
  reload();
}

void TimelineDriver::reload() {
  Timeline<RenderedEntry> timeline = widget_.timeline(TimelineProviderContext{family_, false});
  // The entry whose date has come: the last one not after now (the first
  // when all lie ahead).
  const Date now = Date::now();
  std::size_t shown = 0;
  for (std::size_t i = 1; i < timeline.entries.size(); ++i) {
    if (timeline.entries[i].date <= now) shown = i;
  }
  if (!timeline.entries.empty()) entry_ = std::move(timeline.entries[shown]);
  reloadAt_ = timeline.nextReload();
  if (reloadAt_) {
    alarm_.arm(*reloadAt_);
  } else {
    alarm_.disarm();
  }
  emit entryChanged();
}

void TimelineDriver::requestsArrived() {
  if (watcher_.takeRequests()) reload();
}

void TimelineDriver::alarmRang() {
  // Due: the day changed. Clock set: the instant may now be past or far
  // away, and the day may have changed too; asking again answers both.
  if (alarm_.take() != WallClockAlarm::Ring::notYet) reload();
}

}  // namespace quillmont
