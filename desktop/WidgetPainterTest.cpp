// The widget drawn offscreen: sizes, background, where the tree's parts land,
// and which states show the buttons.
#include "desktop/WidgetPainter.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <functional>

#include "desktop/WidgetLayout.h"
#include "widget/TimeBankWidgetView.h"

namespace quillmont {
namespace {

constexpr WidgetFamily small = WidgetFamily::systemSmall;
constexpr WidgetFamily medium = WidgetFamily::systemMedium;

WidgetContent contentFor(WidgetFamily family, double balanceSeconds, bool configured = true, bool group = true) {
  WidgetSnapshot snapshot = WidgetSnapshot::empty();
  snapshot.balanceSeconds = balanceSeconds;
  snapshot.todayWorkedSeconds = 3600;
  snapshot.todayExpectedSeconds = 1800;
  snapshot.isConfigured = configured;
  return TimeBankWidgetView{family, TimeBankTimelineEntry{Date::now(), snapshot}}.body(group);
}

std::vector<const PlacedItem*> buttonsOf(const WidgetLayout& layout) {
  std::vector<const PlacedItem*> buttons;
  for (const PlacedItem& item : layout.items()) {
    if (item.kind == View::Kind::button) buttons.push_back(&item);
  }
  return buttons;
}

/// Pixels in `area` (logical) whose colour passes `test`.
int pixelsWhere(const QImage& image, const QRectF& area, const std::function<bool(const QColor&)>& test) {
  const double scale = image.devicePixelRatio();
  const QRect pixels = QRectF(area.topLeft() * scale, area.size() * scale).toAlignedRect() & image.rect();
  int count = 0;
  for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
    for (int x = pixels.left(); x <= pixels.right(); ++x) {
      if (test(image.pixelColor(x, y))) ++count;
    }
  }
  return count;
}

/// Pixels in `area` darker than `limit` on every channel.
int darkPixels(const QImage& image, const QRectF& area, int limit = 90) {
  return pixelsWhere(image, area, [limit](const QColor& color) {
    return color.alpha() == 255 && color.red() < limit && color.green() < limit && color.blue() < limit;
  });
}

TEST(WidgetPainter, DrawsAtTheFamilysSizeTimesTheScaleOnTheGradient) {
  for (const WidgetFamily family : {small, medium}) {
    for (const double scale : {1.0, 2.0, 1.5}) {
      const QSizeF size = WidgetLayout::sizeOf(family);
      const QImage image = WidgetPainter::render(contentFor(family, 16200), size, scale, WidgetPalette::light());
      ASSERT_EQ(image.width(), static_cast<int>(size.width() * scale));
      ASSERT_EQ(image.height(), static_cast<int>(size.height() * scale));
      // Near the top-leading corner: the white base under 17 % mint.
      const QColor topLeading = image.pixelColor(static_cast<int>(12 * scale), static_cast<int>(12 * scale));
      EXPECT_EQ(topLeading.alpha(), 255);
      EXPECT_NEAR(topLeading.red(), 255 * 0.83, 8);
      EXPECT_GE(topLeading.green(), 240);
      EXPECT_GE(topLeading.blue(), 235);
      // The gradient runs out towards the bottom-trailing corner, which the
      // rounded container leaves transparent.
      const QColor inner = image.pixelColor(image.width() - static_cast<int>(20 * scale), image.height() / 2);
      EXPECT_GT(inner.red(), topLeading.red());
      EXPECT_EQ(image.pixelColor(image.width() - 1, image.height() - 1).alpha(), 0);
    }
  }
  EXPECT_EQ(WidgetLayout::sizeOf(small), QSizeF(170, 170));
  EXPECT_EQ(WidgetLayout::sizeOf(medium), QSizeF(364, 170));
}

TEST(WidgetPainter, TheBalanceIsDrawnInsideAndTheButtonsWhereTheTreePutsThem) {
  for (const WidgetFamily family : {small, medium}) {
    const QSizeF size = WidgetLayout::sizeOf(family);
    const WidgetContent content = contentFor(family, 16200);
    const WidgetLayout layout(content.root, size);
    const QRectF inside = QRectF(QPointF(0, 0), size).adjusted(16, 16, -16, -16);

    const PlacedItem* balance = layout.textSaying("+4:30");
    ASSERT_NE(balance, nullptr);
    EXPECT_TRUE(inside.contains(balance->frame)) << name(family);
    const QImage image = WidgetPainter::render(content, size, 2, WidgetPalette::light());
    EXPECT_GT(darkPixels(image, balance->frame), 400) << "the digits are drawn";

    // "−" then "+", side by side on the bottom line: leading in the small
    // widget, trailing after the today text in the medium one.
    const auto buttons = buttonsOf(layout);
    ASSERT_EQ(buttons.size(), 2u);
    EXPECT_EQ(buttons[0]->text, "Subtract 60 minutes");
    EXPECT_EQ(buttons[1]->text, "Add 60 minutes");
    EXPECT_EQ(buttons[0]->buttonStyle, View::ButtonStyle::bordered);
    EXPECT_EQ(buttons[1]->buttonStyle, View::ButtonStyle::borderedProminent);
    EXPECT_DOUBLE_EQ(buttons[1]->frame.left() - buttons[0]->frame.right(), 8);
    EXPECT_NEAR(buttons[1]->frame.bottom(), inside.bottom(), 0.5);
    EXPECT_GT(buttons[0]->frame.top(), balance->frame.bottom());
    if (family == small) {
      EXPECT_NEAR(buttons[0]->frame.left(), inside.left(), 0.5);
      EXPECT_EQ(layout.textSaying("+0:30 today"), nullptr);
    } else {
      EXPECT_NEAR(buttons[1]->frame.right(), inside.right(), 0.5);
      const PlacedItem* today = layout.textSaying("+0:30 today");
      ASSERT_NE(today, nullptr);
      EXPECT_NEAR(today->frame.left(), inside.left(), 0.5);
    }
    // The "+" is filled with mint; the "−" is red: its outline and its sign.
    const auto mint = [](const QColor& color) { return color.red() < 40 && color.green() > 170; };
    const auto red = [](const QColor& color) { return color.red() > color.green() + 60; };
    const double area = buttons[0]->frame.width() * buttons[0]->frame.height() * 4;
    EXPECT_GT(pixelsWhere(image, buttons[1]->frame, mint), area * 0.6);
    EXPECT_GT(pixelsWhere(image, buttons[0]->frame, red), area * 0.08);
    EXPECT_EQ(pixelsWhere(image, buttons[0]->frame, mint), 0);

    // No buttons before set-up, nor for a process without the group.
    EXPECT_TRUE(buttonsOf(WidgetLayout(contentFor(family, 0, false).root, size)).empty());
    EXPECT_TRUE(buttonsOf(WidgetLayout(contentFor(family, 16200, true, false).root, size)).empty());
  }
}

TEST(WidgetPainter, ALongBalanceShrinksToItsMinimumScaleBeforeItIsCut) {
  const QSizeF size = WidgetLayout::sizeOf(small);
  const double contentWidth = size.width() - 2 * WidgetLayout::contentMargin;
  const WidgetLayout fits(contentFor(medium, 4 * 3600).root, WidgetLayout::sizeOf(medium));
  ASSERT_NE(fits.textSaying("+4:00"), nullptr);
  EXPECT_EQ(fits.textSaying("+4:00")->font.pixelSize(), 46);

  // Wider than the widget at 42 px: drawn smaller, whole, within the width.
  const WidgetLayout shrunk(contentFor(small, -(123 * 3600 + 45 * 60)).root, size);
  const PlacedItem* balance = shrunk.textSaying("\u2212123:45");
  ASSERT_NE(balance, nullptr);
  EXPECT_LT(balance->font.pixelSize(), 42);
  EXPECT_GE(balance->font.pixelSize(), static_cast<int>(42 * 0.58));
  EXPECT_LE(balance->frame.width(), contentWidth + 0.5);

  // Beyond what 0.58 of the size can hold: cut with an ellipsis.
  const WidgetLayout cut(contentFor(small, -(1234567.0 * 3600)).root, size);
  bool found = false;
  for (const PlacedItem& item : cut.items()) {
    if (item.kind == View::Kind::text && item.font.pixelSize() == static_cast<int>(42 * 0.58)) {
      found = true;
      EXPECT_TRUE(item.text.endsWith(QChar(0x2026))) << item.text.toStdString();
      EXPECT_LE(item.frame.width(), contentWidth + 0.5);
    }
  }
  EXPECT_TRUE(found);
}

TEST(WidgetPainter, BothPalettesKeepTheTextReadable) {
  const QSizeF size = WidgetLayout::sizeOf(medium);
  const WidgetContent content = contentFor(medium, 16200);
  const QRectF balance = WidgetLayout(content.root, size).textSaying("+4:30")->frame;
  const QImage light = WidgetPainter::render(content, size, 1, WidgetPalette::light());
  const QImage dark = WidgetPainter::render(content, size, 1, WidgetPalette::dark());
  EXPECT_GT(darkPixels(light, balance), 100);
  EXPECT_EQ(darkPixels(dark, balance, 40), 0);  // the base itself is (28, 28, 30)
  const QColor background = dark.pixelColor(12, 12);
  EXPECT_LT(background.lightness(), 70);
  int lightPixels = 0;
  for (int y = static_cast<int>(balance.top()); y < static_cast<int>(balance.bottom()); ++y) {
    for (int x = static_cast<int>(balance.left()); x < static_cast<int>(balance.right()); ++x) {
      if (dark.pixelColor(x, y).lightness() > 200) ++lightPixels;
    }
  }
  EXPECT_GT(lightPixels, 100);
}

// WCAG 2 relative luminance and contrast ratio.
double luminance(const QColor& color) {
  const auto linear = [](double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}
double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}
/// `color` (with its alpha) laid over the opaque `background`.
QColor over(const QColor& color, const QColor& background) {
  const double alpha = color.alphaF();
  const auto mix = [alpha](double top, double bottom) { return top * alpha + bottom * (1 - alpha); };
  return QColor::fromRgbF(static_cast<float>(mix(color.redF(), background.redF())),
                          static_cast<float>(mix(color.greenF(), background.greenF())),
                          static_cast<float>(mix(color.blueF(), background.blueF())));
}
/// The lowest contrast of `text` against any opaque point of the drawn container.
double worstContrastOnContainer(const QColor& text, const WidgetContent& content, QSizeF size,
                                const WidgetPalette& palette) {
  QImage image(size.toSize(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  WidgetPainter::paintContainer(painter, size, content.containerBackground, palette);
  painter.end();
  double worst = 100;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor background = image.pixelColor(x, y);
      if (background.alpha() == 255) worst = std::min(worst, contrast(over(text, background), background));
    }
  }
  return worst;
}

TEST(WidgetPainter, TheDimmedTodayTextReachesAAContrastEverywhereInBothPalettes) {
  const QSizeF size = WidgetLayout::sizeOf(medium);
  const WidgetContent content = contentFor(medium, 16200);
  const WidgetLayout layout(content.root, size);
  const PlacedItem* today = layout.textSaying("+0:30 today");
  ASSERT_NE(today, nullptr);
  ASSERT_EQ(today->color.name, Color::Name::secondary);
  for (const WidgetPalette& palette : {WidgetPalette::light(), WidgetPalette::dark()}) {
    const QColor dimmed = palette.color(today->color);
    const double worst = worstContrastOnContainer(dimmed, content, size, palette);
    EXPECT_GE(worst, 4.5) << (palette.isDark ? "dark" : "light");
    // Still the dimmed style: clearly below the primary text's contrast.
    EXPECT_LT(worst + 2, worstContrastOnContainer(palette.primary, content, size, palette))
        << (palette.isDark ? "dark" : "light");
  }
}

}  // namespace
}  // namespace quillmont
