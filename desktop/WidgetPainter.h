// WidgetPainter: draws a laid-out widget with QPainter: the rounded
// container with the desktop's base colour under the tree's gradient, then
// texts, symbols and buttons ("bordered": a tinted outline on a faint tint;
// "bordered prominent": filled with the tint, the symbol in white, or in the
// base colour on a tint too light for white). The same drawing serves the
// window and offscreen images.
#pragma once

#include <QImage>
#include <QString>

#include "desktop/WidgetLayout.h"
#include "desktop/WidgetPalette.h"
#include "platform/widgets/View.h"

class QPainter;

namespace quillmont::WidgetPainter {

void paint(QPainter& painter, const WidgetLayout& layout, const LinearGradient& background,
           const WidgetPalette& palette);

/// The rounded container: the palette's base under the tree's gradient.
void paintContainer(QPainter& painter, QSizeF size, const LinearGradient& background, const WidgetPalette& palette);

/// Where an action's dialog stands: across the top of the widget, over the
/// header, growing downwards as its text wraps but ending above the highest
/// button, so that it hides none of them. Empty for no message.
QRectF messageFrame(const WidgetLayout& layout, const QString& message);

/// An action's dialog at messageFrame: light text on the primary colour
/// (or dark on it in the dark palette), wrapped, cut at the frame.
void paintMessage(QPainter& painter, const WidgetLayout& layout, const QString& message, const WidgetPalette& palette);

/// The widget drawn offscreen at `scale` device pixels per logical pixel,
/// on a transparent image.
QImage render(const WidgetContent& content, QSizeF size, double scale, const WidgetPalette& palette);

}  // namespace quillmont::WidgetPainter
