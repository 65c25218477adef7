// SyncCommands: one ledger on every machine, through a folder that a
// file-sync service keeps equal (see SyncFolder):
// - `sync setup DIR [--name NAME]` chooses the folder and gives this
//   machine a stable identity, then exchanges once;
// - `sync` exchanges once: merges what other devices wrote since the last
//   exchange (SyncMerge: last writer wins, deletions travel), then writes
//   this machine's ledger when the store changed;
// - `sync --watch` exchanges whenever this machine's store or another
//   device's file changes (inotify, no polling);
// - `sync status` shows the folder, the devices seen and the last exchange.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::SyncCommands {

void install(CommandSet& commands);

/// One line on the folder sync for `doctor`: the folder, this machine, the
/// machines seen, files left aside and the last exchange; or that it is not
/// set up. Reads only this machine's sync settings and state.
std::string summary();

}  // namespace quillmont::SyncCommands
