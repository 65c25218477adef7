// ManualLedgerMigration: the one-time switch from the computed time bank
// (worked time against schedules) to the manual ledger. Once set-up is
// complete it closes running timers, folds the balance that worked time
// earned into the settings' starting balance and leaves a marker adjustment
// of 0 minutes, so it never runs twice; markers that arrive later from
// elsewhere are reduced to one.
#pragma once

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"

namespace quillmont::ManualLedgerMigration {

/// The marker's identifier, AppConstants::manualLedgerMigrationAdjustmentID().
const UUID& adjustmentID();

/// True when it changed the store (migrated, or removed duplicate markers).
bool reconcile(ModelContext& context, TimeBankSettings& settings, const Calendar& calendar, Date now, bool saveChanges);

bool isCarryover(const BalanceAdjustment& adjustment);

/// Starts the manual ledger as it stands: inserts the marker when there is
/// none, folding nothing into the starting balance. For a bank set up from
/// scratch, where the balance the person states is the balance; reconcile()
/// then finds the ledger migrated. True when it inserted the marker.
bool beginLedger(ModelContext& context, Date now, bool saveChanges);

}  // namespace quillmont::ManualLedgerMigration
