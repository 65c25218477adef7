// HousekeepingCommands: `erase --yes` deletes every record (and refuses
// without the flag); `doctor` tells where the store and the data home are,
// what the entitlements allow, how many records there are and whether the
// store's integrity check passes.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::HousekeepingCommands {

void install(CommandSet& commands);

}  // namespace quillmont::HousekeepingCommands
