// TimelineDriver: keeps a widget's current entry for a Qt host. It asks the
// widget's configuration for a timeline, shows the entry whose date has
// come, and asks again at the timeline's reload instant (a wall-clock alarm
// that survives a suspend and is re-armed when the clock is set) and as
// soon as any process calls reloadAllTimelines(). It never polls: between
// those events it costs nothing.
#pragma once

#include <QObject>
#include <memory>
#include <optional>

#include "platform/widgets/WallClockAlarm.h"
#include "platform/widgets/WidgetConfiguration.h"
#include "platform/widgets/WidgetReloadWatcher.h"

class QSocketNotifier;

namespace quillmont {

class TimelineDriver final : public QObject {
  Q_OBJECT

 public:
  /// Requests the first timeline at once; throws std::system_error when
  /// the system cannot watch for reloads.
  TimelineDriver(WidgetConfiguration widget, WidgetFamily family, QObject* parent = nullptr);
  ~TimelineDriver() override;

  const WidgetConfiguration& widget() const { return widget_; }
  WidgetFamily family() const { return family_; }
  void setFamily(WidgetFamily family);
  /// The entry to draw now.
  const RenderedEntry& entry() const { return entry_; }
  /// When the driver asks again by itself; nothing when only a request will.
  std::optional<Date> reloadAt() const { return reloadAt_; }

 public slots:
  /// Asks the widget for a new timeline now.
  void reload();

 signals:
  void entryChanged();

 private:
  void requestsArrived();
  void alarmRang();

  WidgetConfiguration widget_;
  WidgetFamily family_;
  RenderedEntry entry_;
  std::optional<Date> reloadAt_;
  WidgetReloadWatcher watcher_;
  WallClockAlarm alarm_;
  std::unique_ptr<QSocketNotifier> requests_;
  std::unique_ptr<QSocketNotifier> rings_;
};

}  // namespace quillmont
