// WindowPlacement: where a widget window stood and which size it had, per
// instance name, kept in the desktop program's own preferences so that a
// widget comes back where the person dragged it. A new instance takes the
// first free slot, so that widgets started for the first time do not open
// on top of each other.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <map>
#include <optional>
#include <vector>

#include "platform/widgets/WidgetFamily.h"

namespace quillmont {

struct WindowPlacement {
  QPoint position;
  WidgetFamily family = WidgetFamily::systemSmall;

  /// The instance's last placement; nothing for a new instance or an
  /// unreadable entry.
  static std::optional<WindowPlacement> load(const QString& instance);
  /// Remembers the placement; false when it cannot be written.
  bool save(const QString& instance) const;
  /// Every instance's remembered placement, by instance name.
  static std::map<QString, WindowPlacement> all();

  /// The rectangle the window covers.
  QRect frame() const;

  /// Space kept between a new widget and the screen's edge or another widget.
  static constexpr int gap = 24;
  /// Where a new window of `size` goes in `area` (a screen's available
  /// geometry): the first slot, from the top-right corner down each column
  /// and then column by column to the left, that overlaps none of `taken`
  /// (with the gap around it); the first slot when every one does.
  static QPoint firstFreeSlot(const QRect& area, QSize size, const std::vector<QRect>& taken);
  /// The place of a new `instance` of `size` in `area`, clear of every other
  /// instance's remembered rectangle on that screen.
  static QPoint placeNew(const QString& instance, QSize size, const QRect& area);
  /// An instance name usable as a preferences key: letters, digits, '-' and '_'.
  static bool isValidInstance(const QString& instance);
};

}  // namespace quillmont
