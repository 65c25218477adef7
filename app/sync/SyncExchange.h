// SyncExchange: one exchange through the sync folder. This machine's news
// goes out first (its ledger and device file, when the store changed since
// they were written), then what every other device wrote since the last
// exchange is merged (SyncMerge: last writer wins, deletions travel, one
// timer runs at a time), saved at once in one transaction or not at all,
// and written out again. A device whose files cannot be read or are refused
// is skipped, with the reason, and changes nothing. The result is kept for
// the status, its report in the system's words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/sync/SyncSettings.h"
#include "core/archive/TimeBankArchive.h"
#include "core/sync/SyncMerge.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont::SyncExchange {

struct Merged {
  UUID device;
  std::string label;  ///< "laptop (1A2B3C4D)"
  TimeBankArchiveMergeResult counts;
  std::int64_t deleted = 0;
};

struct Skipped {
  UUID device;
  std::string label;
  std::string reason;
};

/// A running timer the merge ended because another one runs on.
struct EndedTimer {
  SyncMerge::EndedTimer ended;
  SyncMerge::RunningTimer kept;
  std::string device;  ///< the other machine's name ("a device" unnamed)
  bool noteMoved = false;
};

struct Result {
  std::vector<Merged> merged;
  std::vector<Skipped> skipped;
  std::vector<EndedTimer> endedTimers;
  std::int64_t holidaysAdded = 0;
  /// Whether any other device's files were new since the last exchange.
  bool readAny = false;
  /// Whether this machine's files were written, and their ledger's name.
  bool wroteOwn = false;
  std::string ownLedgerFile;
  /// Why the merged ledger could not be written out now (it is written at
  /// the next exchange; the merge stands); empty when it was.
  std::string deferredWrite;
  /// The exchange in words, a sentence per line, as the status keeps it.
  std::vector<std::string> report;
};

/// One exchange for `configuration`; throws Refusal when the folder is
/// missing (with the chooseSyncFolder Remedy) or this machine's files cannot be written before the merge, and
/// passes the store's errors through (nothing of the exchange stays then).
Result exchange(const UserDefaults& defaults, const SyncSettings::Configuration& configuration);

}  // namespace quillmont::SyncExchange
