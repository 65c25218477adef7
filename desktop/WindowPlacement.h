// WindowPlacement: where a widget window stood and which size it had, per
// instance name, kept in the desktop program's own preferences so that a
// widget comes back where the person dragged it.
#pragma once

#include <QPoint>
#include <QString>
#include <optional>

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
  /// An instance name usable as a preferences key: letters, digits, '-' and '_'.
  static bool isValidInstance(const QString& instance);
};

}  // namespace quillmont
