// WidgetSnapshotBuilder: the snapshot of the store as the widget shows it:
// the ledger balance (starting balance plus every booking up to `now`), and
// today's credits and debits (bookings from the start of today up to `now`,
// both ends included). It runs the store's maintenance first (activity,
// configuration, ledger migration, each saving what it changed), so the
// store's and the maintenance's errors pass through unchanged.
#pragma once

#include "core/widgetstate/WidgetSnapshot.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"

namespace quillmont::WidgetSnapshotBuilder {

WidgetSnapshot make(ModelContext& context, Date now);
/// make(), then WidgetSnapshotStore::save into the shared preferences; on an
/// error nothing is stored. Asking the widgets to reload is the caller's part.
WidgetSnapshot save(ModelContext& context, Date now);

}  // namespace quillmont::WidgetSnapshotBuilder
