#include "desktop/WidgetPalette.h"

#include <QGuiApplication>
#include <QPalette>

namespace quillmont {

WidgetPalette WidgetPalette::light() {
  return {false, QColor(255, 255, 255), QColor(20, 20, 22), QColor(60, 60, 67, 199), QColor(0, 199, 190),
          QColor(255, 59, 48)};
}

WidgetPalette WidgetPalette::dark() {
  return {true, QColor(28, 28, 30), QColor(250, 250, 252), QColor(235, 235, 245, 179), QColor(99, 230, 226),
          QColor(255, 69, 58)};
}

WidgetPalette WidgetPalette::matchingApplication() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness() ? dark()
                                                                                                       : light();
}

QColor WidgetPalette::color(const Color& color) const {
  QColor result;
  switch (color.name) {
    case Color::Name::primary:
      result = primary;
      break;
    case Color::Name::secondary:
      result = secondary;
      break;
    case Color::Name::mint:
      result = mint;
      break;
    case Color::Name::red:
      result = red;
      break;
    case Color::Name::clear:
      return QColor(0, 0, 0, 0);
  }
  result.setAlphaF(static_cast<float>(result.alphaF() * color.opacity));
  return result;
}

}  // namespace quillmont
