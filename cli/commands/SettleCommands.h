// SettleCommands: `settle [--from DAY] [--through DAY] [--dry-run]` books
// each unsettled day's worked time less its planned time into the ledger
// (see Settlement), through yesterday unless told otherwise, as one action
// that `undo` takes back whole.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::SettleCommands {

void install(CommandSet& commands);

}  // namespace quillmont::SettleCommands
