// DurationFormatting: seconds shown as hours and minutes, in the compact clock
// form of the widget ("+7:30", with a U+2212 minus) and the spoken form for
// screen readers ("plus 7 hours, 30 minutes"). Values that cannot be shown
// (not finite, or beyond 2^62 whole minutes) give placeholder texts.
#pragma once

#include <string>

#include "platform/foundation/Date.h"

namespace quillmont::DurationFormatting {

std::string clock(TimeInterval seconds, bool includeSign);
std::string accessible(TimeInterval seconds);

}  // namespace quillmont::DurationFormatting
