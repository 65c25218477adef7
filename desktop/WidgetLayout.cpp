#include "desktop/WidgetLayout.h"

#include <QFontMetricsF>
#include <QStringList>
#include <algorithm>
#include <cmath>

namespace quillmont {
namespace {

constexpr int unlimitedHeight = 100000;

double horizontal(const EdgeInsets& insets) { return insets.leading + insets.trailing; }
double vertical(const EdgeInsets& insets) { return insets.top + insets.bottom; }

QRectF inset(const QRectF& frame, const EdgeInsets& insets) {
  return frame.adjusted(insets.leading, insets.top, -insets.trailing, -insets.bottom);
}

double spacingOf(const View& view) { return view.spacing.value_or(WidgetLayout::defaultSpacing); }

bool isSpacer(const View& view) { return view.kind == View::Kind::spacer; }

/// Whether the view takes all the width (or height) it is offered:
/// spacers do, and a stack does when it holds a spacer along its own axis
/// or a child that grows that way.
bool grows(const View& view, bool horizontally) {
  if (isSpacer(view)) return true;
  if (view.kind != View::Kind::row && view.kind != View::Kind::column) return false;
  const bool alongOwnAxis = (view.kind == View::Kind::row) == horizontally;
  for (const View& child : view.children) {
    if (isSpacer(child) ? alongOwnAxis : grows(child, horizontally)) return true;
  }
  return false;
}

QString textOf(const View& view) { return QString::fromStdString(view.text); }

/// The font of a one-line text scaled to fit `width`, never below the
/// view's minimum scale factor.
QFont fittedFont(const View& view, double width) {
  QFont font = WidgetLayout::fontFor(view.font);
  if (view.lineLimit != 1) return font;
  const double natural = QFontMetricsF(font).horizontalAdvance(textOf(view));
  if (natural <= width || natural <= 0) return font;
  const double factor = std::max(view.minimumScaleFactor, width / natural);
  font.setPixelSize(std::max(1, static_cast<int>(std::floor(font.pixelSize() * factor))));
  return font;
}

// What a combined element reads: its texts in order.
void collectTexts(const View& view, QStringList& texts) {
  if (view.kind == View::Kind::text && !view.accessibility.hidden) texts << textOf(view);
  for (const View& child : view.children) collectTexts(child, texts);
}

}  // namespace

QSizeF WidgetLayout::sizeOf(WidgetFamily family) {
  return family == WidgetFamily::systemSmall ? QSizeF(170, 170) : QSizeF(364, 170);
}

QFont WidgetLayout::fontFor(const Font& font) {
  QFont result;
  double pixels = 17;
  switch (font.style) {
    case Font::Style::body:
    case Font::Style::headline:
      pixels = 17;
      break;
    case Font::Style::caption:
      pixels = 12;
      break;
    case Font::Style::caption2:
      pixels = 11;
      break;
    case Font::Style::system:
      pixels = font.size;
      break;
  }
  if (font.design == Font::Design::rounded) {
    // Rounded faces where the system has one; the plain sans face otherwise.
    result.setFamilies({"SF Pro Rounded", "Nunito", "Varela Round", "M PLUS Rounded 1c", "Comfortaa", "DejaVu Sans",
                        "sans-serif"});
  } else {
    result.setFamilies({"Inter", "Cantarell", "Noto Sans", "DejaVu Sans", "sans-serif"});
  }
  result.setPixelSize(std::max(1, static_cast<int>(std::lround(pixels))));
  Font::Weight weight = font.weight;
  if (font.style == Font::Style::headline && weight == Font::Weight::regular) weight = Font::Weight::semibold;
  switch (weight) {
    case Font::Weight::regular:
      result.setWeight(QFont::Normal);
      break;
    case Font::Weight::medium:
      result.setWeight(QFont::Medium);
      break;
    case Font::Weight::semibold:
      result.setWeight(QFont::DemiBold);
      break;
    case Font::Weight::bold:
      result.setWeight(QFont::Bold);
      break;
  }
  result.setHintingPreference(QFont::PreferNoHinting);  // the same shapes at every scale
  return result;
}

WidgetLayout::WidgetLayout(const View& root, QSizeF size) : size_(size) {
  place(root, QRectF(QPointF(0, 0), size).adjusted(contentMargin, contentMargin, -contentMargin, -contentMargin));
}

QSizeF WidgetLayout::measure(const View& view, double width) const {
  const double innerWidth = std::max(0.0, width - horizontal(view.padding));
  QSizeF inner;
  switch (view.kind) {
    case View::Kind::text: {
      const QFont font = fittedFont(view, innerWidth);
      const QFontMetricsF metrics(font);
      if (view.lineLimit == 1) {
        inner = QSizeF(std::min(innerWidth, metrics.horizontalAdvance(textOf(view))), metrics.height());
      } else {
        inner = metrics.boundingRect(QRectF(0, 0, innerWidth, unlimitedHeight), Qt::TextWordWrap, textOf(view)).size();
      }
      break;
    }
    case View::Kind::image:
      inner = QSizeF(symbolSize, symbolSize);
      break;
    case View::Kind::button:
      inner = QSizeF(buttonWidth, buttonHeight);
      break;
    case View::Kind::spacer:
      inner = QSizeF(view.minLength.value_or(0), view.minLength.value_or(0));
      break;
    case View::Kind::row: {
      double total = 0;
      double tallest = 0;
      for (std::size_t i = 0; i < view.children.size(); ++i) {
        const QSizeF child = measure(view.children[i], innerWidth);
        if (i > 0) total += spacingOf(view);
        total += isSpacer(view.children[i]) ? view.children[i].minLength.value_or(0) : child.width();
        if (!isSpacer(view.children[i])) tallest = std::max(tallest, child.height());
      }
      inner = QSizeF(std::min(total, innerWidth), tallest);
      break;
    }
    case View::Kind::column: {
      double total = 0;
      double widest = 0;
      for (std::size_t i = 0; i < view.children.size(); ++i) {
        const QSizeF child = measure(view.children[i], innerWidth);
        if (i > 0) total += spacingOf(view);
        total += child.height();
        if (!isSpacer(view.children[i])) widest = std::max(widest, child.width());
      }
      inner = QSizeF(widest, total);
      break;
    }
  }
  return inner + QSizeF(horizontal(view.padding), vertical(view.padding));
}

void WidgetLayout::place(const View& view, const QRectF& frame) {
  const QRectF inner = inset(frame, view.padding);
  switch (view.kind) {
    case View::Kind::text:
      placeText(view, inner);
      break;
    case View::Kind::image: {
      PlacedItem item;
      item.kind = View::Kind::image;
      item.frame = inner;
      item.systemImage = view.systemImage;
      item.color = view.tint.value_or(Color{});
      items_.push_back(std::move(item));
      break;
    }
    case View::Kind::button: {
      PlacedItem item;
      item.kind = View::Kind::button;
      item.frame = inner;
      item.text = textOf(view);
      item.systemImage = view.systemImage;
      item.color = view.tint.value_or(Color::mint());
      item.intent = view.intent;
      item.buttonStyle = view.buttonStyle;
      items_.push_back(item);
      accessible_.push_back({inner,
                             QString::fromStdString(view.accessibility.label.empty() ? view.text
                                                                                     : view.accessibility.label),
                             QString::fromStdString(view.accessibility.value), true, view.intent});
      return;
    }
    case View::Kind::spacer:
      break;
    case View::Kind::row:
    case View::Kind::column:
      placeStack(view, inner);
      break;
  }
  if (view.accessibility.hidden) return;
  if (view.accessibility.combinesChildren) {
    QStringList texts;
    collectTexts(view, texts);
    accessible_.push_back({frame, texts.join(", "), QString(), false, nullptr});
  } else if (!view.accessibility.label.empty()) {
    accessible_.push_back({frame, QString::fromStdString(view.accessibility.label),
                           QString::fromStdString(view.accessibility.value), false, nullptr});
  }
}

void WidgetLayout::placeStack(const View& view, const QRectF& inner) {
  const bool isRow = view.kind == View::Kind::row;
  const double spacing = spacingOf(view);
  const std::size_t count = view.children.size();
  if (count == 0) return;

  // Children first take what they need along the stack's axis; those that
  // grow (spacers, stacks holding one) then share what is left.
  std::vector<QSizeF> sizes(count);
  double used = spacing * static_cast<double>(count - 1);
  std::size_t growing = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const View& child = view.children[i];
    if (grows(child, isRow)) ++growing;
    if (isSpacer(child)) {
      used += child.minLength.value_or(0);
      continue;
    }
    sizes[i] = measure(child, inner.width());
    used += isRow ? sizes[i].width() : sizes[i].height();
  }
  const double length = isRow ? inner.width() : inner.height();
  double overflow = std::max(0.0, used - length);
  const double share = growing > 0 ? std::max(0.0, length - used) / static_cast<double>(growing) : 0;
  if (!isRow && overflow > 0) {
    // Too tall: spacers give up their minimum lengths first.
    for (std::size_t i = 0; i < count && overflow > 0; ++i) {
      if (!isSpacer(view.children[i])) continue;
      const double given = std::min(overflow, view.children[i].minLength.value_or(0));
      sizes[i].setHeight(-given);
      overflow -= given;
    }
  }
  if (isRow && overflow > 0) {
    // Texts give up width, last first (they then shrink or are cut).
    for (std::size_t i = count; i-- > 0 && overflow > 0;) {
      if (view.children[i].kind != View::Kind::text) continue;
      const double given = std::min(overflow, sizes[i].width());
      sizes[i].setWidth(sizes[i].width() - given);
      overflow -= given;
    }
  }

  double position = isRow ? inner.left() : inner.top();
  for (std::size_t i = 0; i < count; ++i) {
    const View& child = view.children[i];
    // (A spacer's size holds what it gave up of its minimum length.)
    double along = isSpacer(child) ? child.minLength.value_or(0) + (isRow ? 0 : sizes[i].height())
                                   : (isRow ? sizes[i].width() : sizes[i].height());
    if (grows(child, isRow)) along += share;
    QRectF frame;
    if (isRow) {
      const double height = grows(child, false) ? inner.height() : std::min(sizes[i].height(), inner.height());
      // Rows centre their children vertically unless told otherwise.
      double top = inner.top() + (inner.height() - height) / 2;
      if (view.alignment == View::Alignment::leading) top = inner.top();
      if (view.alignment == View::Alignment::trailing) top = inner.bottom() - height;
      frame = QRectF(position, top, along, height);
    } else {
      const double width = grows(child, true) ? inner.width() : std::min(sizes[i].width(), inner.width());
      double left = inner.left();
      if (view.alignment == View::Alignment::center) left += (inner.width() - width) / 2;
      if (view.alignment == View::Alignment::trailing) left = inner.right() - width;
      frame = QRectF(left, position, width, along);
    }
    place(child, frame);
    position += along + spacing;
  }
}

void WidgetLayout::placeText(const View& view, const QRectF& inner) {
  PlacedItem item;
  item.kind = View::Kind::text;
  item.frame = inner;
  item.font = fittedFont(view, inner.width());
  item.wraps = view.lineLimit != 1;
  item.text = textOf(view);
  if (!item.wraps) {
    item.text = QFontMetricsF(item.font).elidedText(item.text, Qt::ElideRight, inner.width() + 0.5);
  }
  item.color = view.isSecondary ? Color{Color::Name::secondary, 1.0} : Color{};
  items_.push_back(std::move(item));
}

const PlacedItem* WidgetLayout::buttonAt(QPointF point) const {
  for (const PlacedItem& item : items_) {
    if (item.kind == View::Kind::button && item.frame.contains(point)) return &item;
  }
  return nullptr;
}

const PlacedItem* WidgetLayout::textSaying(const QString& text) const {
  for (const PlacedItem& item : items_) {
    if (item.kind == View::Kind::text && item.text == text) return &item;
  }
  return nullptr;
}

}  // namespace quillmont
