// SettingsCommands: set-up and the settings record: `setup` completes the
// set-up (calculation start, starting balance, weekly minutes, quick
// actions); `settings` shows or changes the same values; `schedule` keeps the
// history of weekly schedules; `kinds` chooses which built-in kinds are
// offered; `category` keeps the user's own categories. Every change stamps
// the record it changes with the present instant and saves.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont {

class StoreSession;

namespace SettingsCommands {

void install(CommandSet& commands);
/// Prints the settings of an open store.
void show(StoreSession& session);

}  // namespace SettingsCommands
}  // namespace quillmont
