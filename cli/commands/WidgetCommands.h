// WidgetCommands: the desktop widget from a terminal or a status bar.
//   widget show   draws the widget from its stored snapshot (never from the
//                 record store), as text, as its view tree in JSON, or as a
//                 waybar module line; --follow draws again at every reload
//   widget press  runs the widget's −60 / +60 button
//   widget info   the widget's kind, name, description and sizes
#pragma once

namespace quillmont {
class CommandSet;
}

namespace quillmont::WidgetCommands {

void install(CommandSet& commands);

}  // namespace quillmont::WidgetCommands
