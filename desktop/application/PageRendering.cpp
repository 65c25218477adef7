#include "desktop/application/PageRendering.h"

#include <QApplication>
#include <QPixmap>

#include "desktop/application/Appearance.h"
#include "desktop/application/QuillmontWindow.h"

namespace quillmont::PageRendering {

QImage render(AppRoute route, QSize size, bool dark) {
  Appearance::apply(dark ? ApplicationPreferences::Appearance::dark : ApplicationPreferences::Appearance::light);
  QuillmontWindow window;
  window.setRemembering(false);
  window.setAttribute(Qt::WA_DontShowOnScreen);
  window.resize(size);
  window.open(route);
  window.resize(size);
  QApplication::processEvents();
  return window.grab().toImage();
}

}  // namespace quillmont::PageRendering
