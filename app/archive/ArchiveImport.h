// ArchiveImport: an archive document merged into the store, the later change
// winning record by record. A dry run counts what the merge would insert,
// update and leave unchanged and changes nothing. The legacy prototype's file
// comes in the same way: each of its balance entries becomes a manual booking
// that keeps the entry's identifier, so importing a file twice adds nothing.
//
// Decoding comes first and needs no store: the text is let go as it is
// decoded, before the store is read.
#pragma once

#include <cstddef>
#include <string>

#include "app/Progress.h"
#include "app/session/StoreSession.h"
#include "core/archive/TimeBankArchive.h"

namespace quillmont::ArchiveImport {

/// The archive in `document` (the text of the file called `name`). Throws
/// Refusal naming the file when it is no readable archive.
TimeBankArchive decode(std::string document, const std::string& name, const Progress::Report& progress = {});

struct LegacyFile {
  /// One manual booking per entry, made and changed at the entry's date.
  TimeBankArchive archive;
  /// Entries that repeat an identifier seen before (the first one is kept).
  std::size_t repeated = 0;
};
/// The balance entries of the legacy prototype's file; throws Refusal naming
/// the file when it cannot be read as one.
LegacyFile decodeLegacy(const std::string& document, const std::string& name, const Progress::Report& progress = {});

/// Merges `archive` into the store and saves, or with `dryRun` only counts
/// what the merge would do. The archive's own refusals pass through.
TimeBankArchiveMergeResult merge(StoreSession& session, const TimeBankArchive& archive, bool dryRun,
                                 const Progress::Report& progress = {});
/// The same for a legacy file, dated now.
TimeBankArchiveMergeResult merge(StoreSession& session, LegacyFile legacy, bool dryRun,
                                 const Progress::Report& progress = {});

}  // namespace quillmont::ArchiveImport
