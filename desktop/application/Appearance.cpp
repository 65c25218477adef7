#include "desktop/application/Appearance.h"

#include <optional>

#include <QApplication>

namespace quillmont::Appearance {
namespace {

struct Colours {
  QColor window, windowText, base, alternateBase, text, button, highlight, highlightedText, link, mid, shadow, dimmed;
};

QPalette built(const Colours& c) {
  QPalette palette;
  palette.setColor(QPalette::Window, c.window);
  palette.setColor(QPalette::WindowText, c.windowText);
  palette.setColor(QPalette::Base, c.base);
  palette.setColor(QPalette::AlternateBase, c.alternateBase);
  palette.setColor(QPalette::ToolTipBase, c.base);
  palette.setColor(QPalette::ToolTipText, c.text);
  palette.setColor(QPalette::PlaceholderText, c.dimmed);
  palette.setColor(QPalette::Text, c.text);
  palette.setColor(QPalette::Button, c.button);
  palette.setColor(QPalette::ButtonText, c.windowText);
  palette.setColor(QPalette::BrightText, Qt::red);
  palette.setColor(QPalette::Highlight, c.highlight);
  palette.setColor(QPalette::HighlightedText, c.highlightedText);
  palette.setColor(QPalette::Link, c.link);
  palette.setColor(QPalette::LinkVisited, c.link);
  palette.setColor(QPalette::Light, c.button.lighter(130));
  palette.setColor(QPalette::Midlight, c.button.lighter(115));
  palette.setColor(QPalette::Mid, c.mid);
  palette.setColor(QPalette::Dark, c.shadow.lighter(150));
  palette.setColor(QPalette::Shadow, c.shadow);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, c.dimmed);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, c.mid);
  return palette;
}

std::optional<QPalette>& desktopPalette() {
  static std::optional<QPalette> kept;
  return kept;
}

}  // namespace

QPalette palette(ApplicationPreferences::Appearance choice, const QPalette& system) {
  switch (choice) {
    case ApplicationPreferences::Appearance::system:
      return system;
    case ApplicationPreferences::Appearance::light:
      return built({QColor(0xf6, 0xf5, 0xf4), QColor(0x24, 0x1f, 0x31), Qt::white, QColor(0xf0, 0xef, 0xed),
                    QColor(0x24, 0x1f, 0x31), QColor(0xed, 0xec, 0xea), QColor(0x35, 0x84, 0xe4), Qt::white,
                    QColor(0x1a, 0x5f, 0xb4), QColor(0xc0, 0xbf, 0xbc), QColor(0x5e, 0x5c, 0x64),
                    QColor(0x77, 0x76, 0x7b)});
    case ApplicationPreferences::Appearance::dark:
      return built({QColor(0x24, 0x24, 0x24), QColor(0xf6, 0xf5, 0xf4), QColor(0x1e, 0x1e, 0x1e),
                    QColor(0x2a, 0x2a, 0x2a), QColor(0xf6, 0xf5, 0xf4), QColor(0x35, 0x35, 0x35),
                    QColor(0x35, 0x84, 0xe4), Qt::white, QColor(0x99, 0xc1, 0xf1), QColor(0x50, 0x50, 0x50),
                    QColor(0x0a, 0x0a, 0x0a), QColor(0x9a, 0x99, 0x96)});
  }
  return system;
}

bool isDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

void apply(ApplicationPreferences::Appearance choice) {
  auto& desktop = desktopPalette();
  // Until light or dark is chosen the application keeps following the
  // desktop's palette as it changes.
  if (!desktop && choice == ApplicationPreferences::Appearance::system) return;
  if (!desktop) desktop = QApplication::palette();
  QApplication::setPalette(palette(choice, *desktop));
}

}  // namespace quillmont::Appearance
