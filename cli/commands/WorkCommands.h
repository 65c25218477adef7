// WorkCommands: worked time on the command line. `timer start|stop|toggle|
// status` and `work add|edit|delete|list` read their options into the
// application's Timer and WorkEntries use cases (which hold every rule) and
// print what they return: every change of work says what the entry now
// spans and is worth.
#pragma once

#include <string>

#include "cli/tree/CommandSet.h"
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
