// Appearance: the application's colours as the person chose them: the
// desktop's own palette, or always light or always dark whatever the desktop
// uses. Light and dark are complete palettes (every role, disabled texts
// dimmed) so that every standard control reads well in either.
#pragma once

#include <QPalette>

#include "app/preferences/ApplicationPreferences.h"

namespace quillmont::Appearance {

/// The palette for `choice`; `system` is the desktop's palette, unchanged.
QPalette palette(ApplicationPreferences::Appearance choice, const QPalette& system);
/// Whether a palette draws light text on a dark window.
bool isDark(const QPalette& palette);
/// Applies the choice to the running application. The desktop's palette is
/// the one the application had when light or dark was first applied; before
/// that, `system` leaves the application's palette alone.
void apply(ApplicationPreferences::Appearance choice);

}  // namespace quillmont::Appearance
