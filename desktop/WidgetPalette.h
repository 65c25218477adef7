// WidgetPalette: the colours a widget is drawn in, for a light or a dark
// desktop: the widget's base, its text colours and the named tints of the
// view tree (mint, red), each with the tree's opacity applied. The secondary
// (dimmed) text keeps a contrast of at least 4.5:1 against every point of
// the widget's background, gradient included.
#pragma once

#include <QColor>

#include "platform/widgets/View.h"

namespace quillmont {

struct WidgetPalette {
  bool isDark = false;
  QColor base;
  QColor primary;
  QColor secondary;
  QColor mint;
  QColor red;

  static WidgetPalette light();
  static WidgetPalette dark();
  /// Light or dark as the application's palette is (dark text on light).
  static WidgetPalette matchingApplication();

  QColor color(const Color& color) const;
};

}  // namespace quillmont
