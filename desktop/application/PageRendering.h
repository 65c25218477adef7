// PageRendering: a page of the Quillmont window drawn into an image from
// the current data home, without a display (documentation, bug reports,
// tests). The window is drawn at `size` logical pixels in the light or dark
// appearance; the device pixel ratio is the application's (QT_SCALE_FACTOR).
// Drawing changes nothing: neither the store nor the window's preferences.
#pragma once

#include <QImage>
#include <QSize>

#include "core/persistence/AppRoute.h"

namespace quillmont::PageRendering {

QImage render(AppRoute route, QSize size, bool dark);

}  // namespace quillmont::PageRendering
