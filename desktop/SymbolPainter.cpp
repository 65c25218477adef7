#include "desktop/SymbolPainter.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace quillmont::SymbolPainter {
namespace {

// A leaf pointing up and to the right, filled, with its stem and midrib.
void leaf(QPainter& painter, const QRectF& square, const QColor& color) {
  const auto at = [&](double x, double y) { return square.topLeft() + QPointF(x * square.width(), y * square.height()); };
  QPainterPath blade;
  blade.moveTo(at(0.18, 0.82));
  blade.cubicTo(at(0.05, 0.45), at(0.35, 0.12), at(0.92, 0.08));
  blade.cubicTo(at(0.90, 0.62), at(0.58, 0.92), at(0.18, 0.82));
  painter.fillPath(blade, color);
  QPen vein(painter.background().color(), square.width() * 0.07, Qt::SolidLine, Qt::RoundCap);
  vein.setColor(QColor(255, 255, 255, 140));
  painter.setPen(vein);
  painter.drawLine(at(0.26, 0.74), at(0.74, 0.26));
  QPen stem(color, square.width() * 0.09, Qt::SolidLine, Qt::RoundCap);
  painter.setPen(stem);
  painter.drawLine(at(0.08, 0.92), at(0.24, 0.76));
}

}  // namespace

void paint(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color) {
  const double side = std::min(box.width(), box.height());
  const QRectF square(box.center().x() - side / 2, box.center().y() - side / 2, side, side);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  const QPen stroke(color, std::max(1.5, side * 0.16), Qt::SolidLine, Qt::RoundCap);
  if (name == "leaf.fill") {
    leaf(painter, square, color);
  } else if (name == "plus" || name == "minus") {
    painter.setPen(stroke);
    const double inset = side * 0.12;
    painter.drawLine(QPointF(square.left() + inset, square.center().y()),
                     QPointF(square.right() - inset, square.center().y()));
    if (name == "plus") {
      painter.drawLine(QPointF(square.center().x(), square.top() + inset),
                       QPointF(square.center().x(), square.bottom() - inset));
    }
  } else {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(square.center(), side / 4, side / 4);
  }
  painter.restore();
}

}  // namespace quillmont::SymbolPainter
