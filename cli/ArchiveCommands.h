// ArchiveCommands: the whole ledger in and out. `export` writes the archive
// of every record (atomically to a file, or to standard output); `import`
// merges an archive into the store, last writer wins, and prints what it
// inserted, updated and left unchanged (`--dry-run` merges into a copy held
// in memory and saves nothing); `import-legacy` brings the legacy
// prototype's balance entries in as manual bookings that keep their
// identifiers, so importing a file twice adds nothing.
#pragma once

#include "cli/CommandSet.h"

namespace quillmont::ArchiveCommands {

void install(CommandSet& commands);

}  // namespace quillmont::ArchiveCommands
