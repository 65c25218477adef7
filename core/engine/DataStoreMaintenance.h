// DataStoreMaintenance: repairs the shared store in place: clamps and
// normalises stored values, keeps exactly one settings record and at most one
// schedule per day (starting at midnight), and erases everything on request.
// Every writer runs reconcile() (activity, configuration, ledger migration)
// before it books. Operations save only when `saveChanges` is set and they
// changed something; the store's errors pass through unchanged.
#pragma once

#include <memory>

#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"

namespace quillmont::DataStoreMaintenance {

inline constexpr std::int64_t maximumBreakMinutes = 240;
inline constexpr std::int64_t maximumBalanceMinutes = 60000;

/// Activity, configuration and ledger migration in that order; the settings record to use.
std::shared_ptr<TimeBankSettings> reconcile(ModelContext& context, const Calendar& calendar, Date now, bool saveChanges);
/// Normalises every work entry and balance adjustment.
void reconcileActivity(ModelContext& context, Date now, bool saveChanges);
/// One settings record (made when there is none) and one schedule per day; the surviving settings.
std::shared_ptr<TimeBankSettings> reconcileConfiguration(ModelContext& context, const Calendar& calendar, Date now,
                                                         bool saveChanges);
/// Deletes every record of every type, then saves.
void eraseAll(ModelContext& context);

}  // namespace quillmont::DataStoreMaintenance
