// SyncJoin: what happens when a machine whose ledger is set up joins a sync
// folder whose ledger is set up too, with other settings (start, starting
// balance, week). Merging would silently make one machine's settings win on
// every machine, so the person chooses first: this machine's settings or
// the folder's. Either way the chosen values are written to this machine's
// settings record as a fresh change, which then wins on every machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/archive/TimeBankArchive.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WeekdayMinutes.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont {

class ModelContext;

namespace SyncJoin {

/// One side's settings as the person compares them.
struct Side {
  Date calculationStartDate;
  std::int64_t startingBalanceMinutes = 0;
  WeekdayMinutes weekdayMinutes{};
  /// The ledger balance now: the starting balance and the bookings up to now.
  double balanceSeconds = 0;
};

/// Another machine's ledger as read from the folder.
struct Ledger {
  std::string deviceName;
  TimeBankArchive archive;
};

struct Conflict {
  Side here;
  Side folder;
  /// The machine whose settings the folder's side shows.
  std::string folderDeviceName;
  /// The folder's settings, whole, for adopting them.
  TimeBankArchive::SettingsRecord folderSettings;
};

/// The conflict between this store's settings and the folder's ledgers,
/// if both are set up, are not one record already, and differ in start day,
/// starting balance or week. The folder's settings are the set-up record
/// last changed among `folder`. Reads only.
std::optional<Conflict> conflict(ModelContext& context, const TimeBankSettings& own, const std::vector<Ledger>& folder,
                                 const Calendar& calendar, Date now);

/// Keeps this machine's settings: they are marked as changed `now`, so they
/// win on every machine. Does not save.
void keepOwn(TimeBankSettings& own, Date now);
/// Takes the folder's settings into this machine's record, changed `now`,
/// so the folder's values stay on every machine. Does not save.
void adoptFolder(TimeBankSettings& own, const TimeBankArchive::SettingsRecord& folder, Date now);

}  // namespace SyncJoin
}  // namespace quillmont
