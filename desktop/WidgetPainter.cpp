#include "desktop/WidgetPainter.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "desktop/SymbolPainter.h"

namespace quillmont::WidgetPainter {
namespace {

void paintButton(QPainter& painter, const PlacedItem& item, const WidgetPalette& palette) {
  const QColor tint = palette.color(item.color);
  const double radius = item.frame.height() / 2;
  QColor symbol = tint;
  painter.setPen(Qt::NoPen);
  if (item.buttonStyle == View::ButtonStyle::borderedProminent) {
    painter.setBrush(tint);
    painter.drawRoundedRect(item.frame, radius, radius);
    // White on the tint, unless the tint is too light to carry it (the
    // brighter mint of the dark palette).
    const double luminance = 0.2126 * tint.redF() + 0.7152 * tint.greenF() + 0.0722 * tint.blueF();
    symbol = luminance > 0.7 ? palette.base : QColor(255, 255, 255);
  } else {
    QColor fill = tint;
    fill.setAlphaF(0.14f);
    QColor outline = tint;
    outline.setAlphaF(0.55f);
    painter.setBrush(fill);
    painter.setPen(QPen(outline, 1.2));
    painter.drawRoundedRect(item.frame.adjusted(0.6, 0.6, -0.6, -0.6), radius, radius);
  }
  const double side = WidgetLayout::symbolSize;
  SymbolPainter::paint(painter, item.systemImage,
                       QRectF(item.frame.center() - QPointF(side / 2, side / 2), QSizeF(side, side)), symbol);
}

QPainterPath containerPath(QSizeF size) {
  QPainterPath container;
  container.addRoundedRect(QRectF(QPointF(0, 0), size), WidgetLayout::cornerRadius, WidgetLayout::cornerRadius);
  return container;
}

}  // namespace

void paintContainer(QPainter& painter, QSizeF size, const LinearGradient& background, const WidgetPalette& palette) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF bounds(QPointF(0, 0), size);
  const QPainterPath container = containerPath(size);
  painter.fillPath(container, palette.base);
  if (!background.colors.empty()) {
    const auto corner = [&](LinearGradient::Corner which) {
      return which == LinearGradient::Corner::topLeading ? bounds.topLeft() : bounds.bottomRight();
    };
    QLinearGradient gradient(corner(background.start), corner(background.end));
    const std::size_t last = background.colors.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
      gradient.setColorAt(last == 0 ? 0.0 : static_cast<double>(i) / static_cast<double>(last),
                          palette.color(background.colors[i]));
    }
    painter.fillPath(container, gradient);
  }
  painter.restore();
}

void paint(QPainter& painter, const WidgetLayout& layout, const LinearGradient& background,
           const WidgetPalette& palette) {
  paintContainer(painter, layout.size(), background, palette);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  const QPainterPath container = containerPath(layout.size());
  painter.setClipPath(container);

  for (const PlacedItem& item : layout.items()) {
    switch (item.kind) {
      case View::Kind::text:
        painter.setFont(item.font);
        painter.setPen(palette.color(item.color));
        painter.drawText(item.frame, (item.wraps ? Qt::TextWordWrap : Qt::TextSingleLine) | Qt::AlignLeft | Qt::AlignVCenter,
                         item.text);
        break;
      case View::Kind::image:
        SymbolPainter::paint(painter, item.systemImage, item.frame, palette.color(item.color));
        break;
      case View::Kind::button:
        paintButton(painter, item, palette);
        break;
      case View::Kind::row:
      case View::Kind::column:
      case View::Kind::spacer:
        break;
    }
  }
  painter.restore();
}

namespace {

constexpr double messageMargin = 8;
constexpr double messagePadding = 8;

QFont messageFont() {
  return WidgetLayout::fontFor(Font::of(Font::Style::caption).weighted(Font::Weight::medium));
}

}  // namespace

QRectF messageFrame(const WidgetLayout& layout, const QString& message) {
  if (message.isEmpty()) return {};
  const QSizeF size = layout.size();
  double bottom = size.height() - messageMargin;
  for (const PlacedItem& item : layout.items()) {
    if (item.kind == View::Kind::button) bottom = std::min(bottom, item.frame.top() - messageMargin);
  }
  const QRectF area(messageMargin, messageMargin, size.width() - 2 * messageMargin, bottom - messageMargin);
  const QRectF text = QFontMetricsF(messageFont()).boundingRect(
      area.adjusted(messagePadding, 0, -messagePadding, 0), Qt::TextWordWrap | Qt::AlignCenter, message);
  return QRectF(area.left(), area.top(), area.width(), std::min(area.height(), text.height() + 2 * messagePadding));
}

void paintMessage(QPainter& painter, const WidgetLayout& layout, const QString& message, const WidgetPalette& palette) {
  const QRectF box = messageFrame(layout, message);
  if (box.isEmpty()) return;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(palette.primary);
  painter.drawRoundedRect(box, 12, 12);
  painter.setFont(messageFont());
  painter.setPen(palette.base);
  painter.setClipRect(box.adjusted(0, messagePadding / 2, 0, -messagePadding / 2));
  painter.drawText(box.adjusted(messagePadding, messagePadding, -messagePadding, -messagePadding),
                   Qt::TextWordWrap | Qt::AlignHCenter | Qt::AlignTop, message);
  painter.restore();
}

QImage render(const WidgetContent& content, QSizeF size, double scale, const WidgetPalette& palette) {
  QImage image(static_cast<int>(std::lround(size.width() * scale)), static_cast<int>(std::lround(size.height() * scale)),
               QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  paint(painter, WidgetLayout(content.root, size), content.containerBackground, palette);
  painter.end();
  return image;
}

}  // namespace quillmont::WidgetPainter
