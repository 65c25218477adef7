// SymbolPainter: the program's own drawings of the symbols a view tree
// names ("leaf.fill", "plus", "minus"), so no icon theme is needed. An
// unknown name draws a small dot.
#pragma once

#include <QColor>
#include <QRectF>
#include <string_view>

class QPainter;

namespace quillmont::SymbolPainter {

/// Draws the symbol centred in `box`, as large as the box's smaller side.
void paint(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color);

}  // namespace quillmont::SymbolPainter
