#include "desktop/DesktopCompositing.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string>

#if defined(QUILLMONT_HAS_XCB) && QT_CONFIG(xcb)
#include <xcb/xcb.h>
#endif

namespace quillmont::DesktopCompositing {
namespace {

#if defined(QUILLMONT_HAS_XCB) && QT_CONFIG(xcb)
// The screen number of $DISPLAY (":0.1" is screen 1), 0 when it names none.
int displayScreen() {
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr) return 0;
  const std::string text(display);
  const auto colon = text.rfind(':');
  const auto dot = text.find('.', colon == std::string::npos ? 0 : colon);
  if (dot == std::string::npos) return 0;
  return std::atoi(text.c_str() + dot + 1);
}

bool compositingManagerOwnsSelection(xcb_connection_t* connection) {
  const std::string name = "_NET_WM_CM_S" + std::to_string(displayScreen());
  const xcb_intern_atom_cookie_t atomCookie =
      xcb_intern_atom(connection, 1, static_cast<uint16_t>(name.size()), name.c_str());
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      xcb_intern_atom_reply(connection, atomCookie, nullptr), &std::free);
  // With only_if_exists set, no atom means nobody ever claimed the selection.
  if (!atom || atom->atom == XCB_ATOM_NONE) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
      &std::free);
  return owner && owner->owner != XCB_NONE;
}
#endif

bool ask() {
  if (QGuiApplication::platformName() != "xcb") return true;
#if defined(QUILLMONT_HAS_XCB) && QT_CONFIG(xcb)
  if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
    if (xcb_connection_t* connection = x11->connection()) return compositingManagerOwnsSelection(connection);
  }
#endif
  // An X server that cannot be asked: shaping costs only the corners' smoothing.
  return false;
}

}  // namespace

bool isActive() {
  static const bool active = ask();
  return active;
}

}  // namespace quillmont::DesktopCompositing
