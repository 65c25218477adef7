// View: the value tree a widget describes itself with, and that hosts draw
// (a Qt window, a terminal, a status bar). It holds what to show, never how:
// rows and columns with spacing and alignment, texts with their fonts and
// styles, symbol images, spacers, buttons that run an intent, padding and
// accessibility. Symbols are named ("leaf.fill", "plus"); hosts bring their
// own drawings of them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/URL.h"
#include "platform/intents/AppIntent.h"

namespace quillmont {

struct Color {
  enum class Name { primary, secondary, mint, red, clear };
  Name name = Name::primary;
  double opacity = 1.0;

  static Color mint(double opacity = 1.0) { return {Name::mint, opacity}; }
  static Color red(double opacity = 1.0) { return {Name::red, opacity}; }
  static Color clear() { return {Name::clear, 0.0}; }

  friend bool operator==(const Color&, const Color&) = default;
};

struct Font {
  /// Text styles scale with the host's settings; `system` has a fixed size.
  enum class Style { body, headline, caption, caption2, system };
  enum class Weight { regular, medium, semibold, bold };
  enum class Design { standard, rounded };

  Style style = Style::body;
  /// Points, for the `system` style.
  double size = 0;
  Weight weight = Weight::regular;
  Design design = Design::standard;
  /// Digits of equal width, so changing figures do not jiggle.
  bool monospacedDigits = false;

  static Font of(Style style) { return Font{.style = style}; }
  static Font system(double size, Weight weight = Weight::regular, Design design = Design::standard) {
    return Font{.style = Style::system, .size = size, .weight = weight, .design = design};
  }
  Font weighted(Weight newWeight) const {
    Font font = *this;
    font.weight = newWeight;
    return font;
  }
  Font withMonospacedDigits() const {
    Font font = *this;
    font.monospacedDigits = true;
    return font;
  }

  friend bool operator==(const Font&, const Font&) = default;
};

struct EdgeInsets {
  double top = 0, leading = 0, bottom = 0, trailing = 0;
  friend bool operator==(const EdgeInsets&, const EdgeInsets&) = default;
};

struct Accessibility {
  std::string label;
  std::string value;
  bool hidden = false;
  /// The view and its children read as one element made of their texts.
  bool combinesChildren = false;
  friend bool operator==(const Accessibility&, const Accessibility&) = default;
};

struct View {
  enum class Kind { row, column, text, image, spacer, button };
  /// Columns align children on the horizontal axis, rows on the vertical one.
  enum class Alignment { leading, center, trailing };
  enum class ButtonStyle { bordered, borderedProminent };
  enum class LabelStyle { titleAndIcon, iconOnly };

  Kind kind = Kind::spacer;

  // row, column
  /// Space between children in points; nothing means the host's default.
  std::optional<double> spacing;
  Alignment alignment = Alignment::center;
  std::vector<View> children;

  // text (and a button's title)
  std::string text;
  Font font;
  /// The dimmed secondary style.
  bool isSecondary = false;
  /// Lines at most; 0 means no limit.
  int lineLimit = 0;
  /// How far the text may shrink to keep within its line limit.
  double minimumScaleFactor = 1.0;

  // image (and a button's icon)
  std::string systemImage;
  /// Colour of an image, or a button's tint.
  std::optional<Color> tint;

  // spacer
  std::optional<double> minLength;

  // button
  std::shared_ptr<const AppIntent> intent;
  ButtonStyle buttonStyle = ButtonStyle::bordered;
  LabelStyle labelStyle = LabelStyle::titleAndIcon;

  // every kind
  EdgeInsets padding;
  Accessibility accessibility;

  static View row(std::optional<double> spacing, std::vector<View> children,
                  Alignment alignment = Alignment::center) {
    View view;
    view.kind = Kind::row;
    view.spacing = spacing;
    view.alignment = alignment;
    view.children = std::move(children);
    return view;
  }
  static View column(std::optional<double> spacing, std::vector<View> children,
                     Alignment alignment = Alignment::leading) {
    View view = row(spacing, std::move(children), alignment);
    view.kind = Kind::column;
    return view;
  }
  static View label(std::string text, Font font) {
    View view;
    view.kind = Kind::text;
    view.text = std::move(text);
    view.font = font;
    return view;
  }
  static View image(std::string systemName, std::optional<Color> tint = std::nullopt) {
    View view;
    view.kind = Kind::image;
    view.systemImage = std::move(systemName);
    view.tint = tint;
    return view;
  }
  static View spacer(std::optional<double> minLength = std::nullopt) {
    View view;
    view.kind = Kind::spacer;
    view.minLength = minLength;
    return view;
  }
  static View button(std::shared_ptr<const AppIntent> intent, std::string title, std::string systemImage,
                     ButtonStyle style, Color tint) {
    View view;
    view.kind = Kind::button;
    view.intent = std::move(intent);
    view.text = std::move(title);
    view.systemImage = std::move(systemImage);
    view.buttonStyle = style;
    view.tint = tint;
    return view;
  }
};

struct LinearGradient {
  enum class Corner { topLeading, bottomTrailing };
  std::vector<Color> colors;
  Corner start = Corner::topLeading;
  Corner end = Corner::bottomTrailing;
  friend bool operator==(const LinearGradient&, const LinearGradient&) = default;
};

/// What a widget draws for one entry: the tree, the background that fills
/// the widget's container, and the link a tap outside the buttons opens.
struct WidgetContent {
  View root;
  LinearGradient containerBackground;
  std::optional<URL> widgetURL;
};

}  // namespace quillmont
