// WidgetTerminalRendering: draws a widget's view tree as lines of text in a
// rounded frame, the way the widget looks on a desktop: the small size 24
// columns wide, the medium size 48, both 7 lines tall. Columns stack their
// children and share spare lines among flexible spacers; rows lay their
// children out on one line, flexible spacers taking the spare width. Large
// system text (30 points and more) is drawn in three-line digits when it
// fits, else as plain text, as the widget shrinks its balance rather than
// wrapping it. Buttons show their symbol in brackets. Symbols the terminal
// has no drawing for show as nothing.
#pragma once

#include <string>
#include <vector>

#include "platform/widgets/View.h"
#include "platform/widgets/WidgetFamily.h"

namespace quillmont::WidgetTerminalRendering {

struct Size {
  int columns;
  int lines;
};

/// The inside of the frame for each family.
Size contentSize(WidgetFamily family);

/// The framed widget, one string per line; with `colour`, ANSI styles for
/// tints, weights and the secondary style.
std::vector<std::string> render(const WidgetContent& content, WidgetFamily family, bool colour);

/// The number of terminal columns `text` takes (code points; escape sequences excluded).
int columns(const std::string& text);

}  // namespace quillmont::WidgetTerminalRendering
