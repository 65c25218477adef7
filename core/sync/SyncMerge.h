// SyncMerge: brings what another machine wrote (its ledger as an archive,
// and the deletions it knows) into this machine's store, so that copies of
// one ledger kept on several machines agree.
//
// The archive merge decides between two copies of a record: the later
// `modifiedAt` wins. Deletions add one rule: a deletion wins over a copy
// modified at or before it, and a later change wins over the deletion. A
// running entry stays running, so a timer runs on every machine; where two
// machines each started one, the timer's repair keeps the earliest. A
// settings record nobody set up or changed (each store makes one when it
// first opens) gives way to settings chosen on another machine, however
// much newer it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/archive/TimeBankArchive.h"
#include "core/archive/TimeBankArchiveMergeResult.h"
#include "platform/foundation/Date.h"
#include "platform/store/DeletionLog.h"

namespace quillmont {

class ModelContext;

namespace SyncMerge {

/// How long a deletion is remembered. A machine that comes back after
/// longer may bring back records deleted meanwhile.
inline constexpr std::int64_t deletionRetentionDays = 400;

/// A timer that ran here or in the archive and that the merge ended,
/// because another one, started earlier, keeps running (one timer at a time).
struct EndedTimer {
  Date startedAt;
  std::string note;
  bool ranHere = false;  ///< in this store before the merge; else in the archive only
};

/// The timer that keeps running when the merge ended others.
struct RunningTimer {
  Date startedAt;
  bool ranHere = false;
};

struct Result {
  TimeBankArchiveMergeResult merged;
  /// Timers the merge ended, with the one that runs on; a note of an ended
  /// timer moved to the running one when that had none (`noteMoved`).
  std::vector<EndedTimer> endedTimers;
  std::optional<RunningTimer> keptTimer;
  bool noteMoved = false;
  /// Deletions that were new to this store (or later than the ones it had).
  std::int64_t deletionsLearnt = 0;
  /// Records removed because a deletion covers them.
  std::int64_t recordsDeleted = 0;
  /// Records of the archive left out: a deletion covers them, or they are
  /// untouched settings and the store has settings of its own.
  std::int64_t recordsSkipped = 0;
};

/// Keeps `deletions` in the store (forgetting those older than the
/// retention; one dated more than five minutes after `now` counts as made
/// `now`, as a record's modification does), removes the stored records they
/// cover, then merges what of `archive` they do not cover, with the archive
/// merge's maintenance. The archive is validated first: an invalid one
/// throws TimeBankArchiveError and changes nothing. Store errors pass
/// through. `context` must not be journaled: what a merge removes is not a
/// person's deletion. With `saveChanges` false nothing is saved (the
/// deletions wait in the context too), so that several merges become one
/// save, or none.
Result merge(ModelContext& context, TimeBankArchive archive, const std::vector<DeletionLog::Entry>& deletions,
             Date now, bool saveChanges = true);

/// Removes the stored records that the store's deletions cover and saves;
/// returns how many.
std::int64_t applyDeletions(ModelContext& context);

}  // namespace SyncMerge
}  // namespace quillmont
