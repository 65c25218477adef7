// DesktopCompositing: whether a compositing manager draws the desktop, so
// that a translucent window's transparent pixels show what lies beneath.
// Without one (a plain X11 window manager such as i3 or Openbox) they show
// black, and a window with rounded corners must be shaped instead.
#pragma once

namespace quillmont::DesktopCompositing {

/// Asked of the platform once per process: on X11 whether the screen's
/// `_NET_WM_CM_S<n>` selection has an owner. Elsewhere true: every Wayland
/// compositor composites, and a platform without a screen to look at
/// (offscreen) has no corners to shape.
bool isActive();

}  // namespace quillmont::DesktopCompositing
