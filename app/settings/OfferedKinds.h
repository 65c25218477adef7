// OfferedKinds: which of the built-in kinds that can be chosen are offered
// for bookings (the others are always offered). A kind is named by its raw
// value or its title, ignoring letter case.
#pragma once

#include <string_view>

#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont {

class StoreSession;

namespace OfferedKinds {

/// The configurable kind `typed` names; InvalidInput lists the choices when none.
BalanceAdjustmentKind kind(std::string_view typed);
/// Offers exactly `kinds` from now on (a journaled action) and returns them as kept.
AdjustmentKindConfiguration::KindSet offer(StoreSession& session, const AdjustmentKindConfiguration::KindSet& kinds);
/// The kinds offered now.
AdjustmentKindConfiguration::KindSet offered(StoreSession& session);

}  // namespace OfferedKinds
}  // namespace quillmont
