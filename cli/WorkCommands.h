// WorkCommands: worked time. `timer start|stop|toggle|status` runs the
// timer through the core's timer sessions; `work add|edit|delete|list` keeps
// intervals typed in by hand. Work that would overlap other work is refused
// unless --force says it is meant (WorkOverlap decides), and every change of
// work says what the entry now spans and is worth.
#pragma once

#include <string>

#include "cli/CommandSet.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

class StoreSession;

namespace WorkCommands {

void install(CommandSet& commands);
/// Prints the work entries that start inside `interval`, oldest first, under
/// a title naming the `range`.
void showList(StoreSession& session, const DateInterval& interval, const std::string& range);

}  // namespace WorkCommands
}  // namespace quillmont
