// TimeBankArchiveMergeResult: what an archive merge did with the archive's
// records, each counted once over all four lists: added to the store,
// replacing a stored record's values, or left aside because the stored
// record was as new or newer.
#pragma once

#include <cstdint>

namespace quillmont {

struct TimeBankArchiveMergeResult {
  std::int64_t inserted = 0;
  std::int64_t updated = 0;
  std::int64_t unchanged = 0;

  /// The number of records in the merged archive.
  constexpr std::int64_t total() const { return inserted + updated + unchanged; }

  friend constexpr bool operator==(const TimeBankArchiveMergeResult&, const TimeBankArchiveMergeResult&) = default;
};

}  // namespace quillmont
