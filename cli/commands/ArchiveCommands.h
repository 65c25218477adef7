// ArchiveCommands: the whole ledger in and out. `export` writes the archive
// of every record (atomically to a file, or to standard output); `import`
// merges an archive into the store, last writer wins, and prints what it
// inserted, updated and left unchanged (`--dry-run` counts what it would do
// and saves nothing); `import-legacy` brings the legacy prototype's balance
// entries in (see ArchiveImport). The use cases live in app/archive.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::ArchiveCommands {

void install(CommandSet& commands);

}  // namespace quillmont::ArchiveCommands
