// WidgetLayout: where each part of a widget's view tree goes in a widget of
// a given family, in logical pixels: rows and columns stack their children
// with their spacing and alignment, spacers share what is left, padding is
// kept, and a one-line text that would not fit shrinks down to its minimum
// scale factor (then is cut with an ellipsis). The result is a flat list of
// things to draw, the buttons with their intents, and the regions a screen
// reader announces. It keeps no reference to the tree.
#pragma once

#include <QFont>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <memory>
#include <vector>

#include "platform/widgets/View.h"
#include "platform/widgets/WidgetFamily.h"

namespace quillmont {

struct PlacedItem {
  View::Kind kind = View::Kind::text;
  QRectF frame;
  // text
  QString text;
  QFont font;
  bool wraps = false;
  // text colour, image tint, button tint
  Color color;
  // image, button icon
  std::string systemImage;
  // button
  std::shared_ptr<const AppIntent> intent;
  View::ButtonStyle buttonStyle = View::ButtonStyle::bordered;
};

struct AccessibleRegion {
  QRectF frame;
  QString label;
  QString value;
  bool isButton = false;
  std::shared_ptr<const AppIntent> intent;
};

class WidgetLayout {
 public:
  /// Space between the widget's edge and its content.
  static constexpr double contentMargin = 16;
  static constexpr double cornerRadius = 22;
  /// Space between a row's or column's children when the tree names none.
  static constexpr double defaultSpacing = 8;
  static constexpr double buttonWidth = 44;
  static constexpr double buttonHeight = 30;
  static constexpr double symbolSize = 14;

  /// 170 × 170 (small) and 364 × 170 (medium).
  static QSizeF sizeOf(WidgetFamily family);
  /// The font a view tree's font stands for, in logical pixels.
  static QFont fontFor(const Font& font);

  WidgetLayout() = default;
  WidgetLayout(const View& root, QSizeF size);

  QSizeF size() const { return size_; }
  const std::vector<PlacedItem>& items() const { return items_; }
  const std::vector<AccessibleRegion>& accessibleRegions() const { return accessible_; }
  /// The button under `point`, if any.
  const PlacedItem* buttonAt(QPointF point) const;
  /// The drawn text that says `text`, if any.
  const PlacedItem* textSaying(const QString& text) const;

 private:
  QSizeF measure(const View& view, double width) const;
  void place(const View& view, const QRectF& frame);
  void placeStack(const View& view, const QRectF& inner);
  void placeText(const View& view, const QRectF& inner);

  QSizeF size_;
  std::vector<PlacedItem> items_;
  std::vector<AccessibleRegion> accessible_;
};

}  // namespace quillmont
