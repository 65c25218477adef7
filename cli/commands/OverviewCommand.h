// OverviewCommand: the screen the program opens on (`quillmont`,
// `quillmont overview`): the ledger balance as the widget shows it, today's
// credits and debits, whether the timer runs and since when, and how to
// finish set-up while it is not complete. `--json` prints the same facts as
// one JSON object.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont {

class StoreSession;

namespace OverviewCommand {

void install(CommandSet& commands);
/// Prints the overview of an open store.
void show(StoreSession& session, bool json);
/// What the program does when it is given no command.
void run();

}  // namespace OverviewCommand
}  // namespace quillmont
