// ArchiveExport: the whole ledger as one archive document: every work entry,
// booking, schedule and settings record, dated now. Reports reading,
// encoding and (for a file) writing through the progress callback.
#pragma once

#include <cstddef>
#include <string>

#include "app/Progress.h"
#include "app/session/StoreSession.h"

namespace quillmont::ArchiveExport {

struct Exported {
  /// The archive's JSON text, ending in a line feed.
  std::string document;
  std::size_t workEntries = 0;
  std::size_t bookings = 0;
  std::size_t schedules = 0;
  std::size_t settingsRecords = 0;
};

/// The archive of every record in the session's store.
Exported document(StoreSession& session, const Progress::Report& progress = {});
/// The same, written atomically to `path` (a file replaced keeps its
/// permissions, a new one is private). Throws Refusal naming the file.
Exported toFile(StoreSession& session, const std::string& path, const Progress::Report& progress = {});

}  // namespace quillmont::ArchiveExport
