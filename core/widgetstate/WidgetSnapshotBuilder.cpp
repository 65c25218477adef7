#include "core/widgetstate/WidgetSnapshotBuilder.h"

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/LedgerTotal.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/Calendar.h"
#include "platform/store/RowFilter.h"

namespace quillmont::WidgetSnapshotBuilder {

WidgetSnapshot make(ModelContext& context, Date now) {
  // Maintenance works on the clock's own instant, not on `now`.
  const auto settings = DataStoreMaintenance::reconcile(context, Calendar::autoupdatingCurrent(), Date::now(), true);

  // Today's credits and debits come from today's bookings alone, found
  // through the date index; the ledger's total from its recorded sum.
  const Date startOfToday = Calendar::autoupdatingCurrent().startOfDay(now);
  double credits = 0;
  double debits = 0;
  using Op = RowFilter::Op;
  const RowFilter today = RowFilter::allOf({{"date", Op::greaterOrEqual, startOfToday}, {"date", Op::lessOrEqual, now}});
  context.forEach<BalanceAdjustment>({"date", "minutes"}, today, [&](const BalanceAdjustment& adjustment) {
    const std::int64_t minutes = adjustment.minutes();
    if (minutes > 0) credits += static_cast<double>(minutes) * 60.0;
    if (minutes < 0) debits += static_cast<double>(-minutes) * 60.0;
  });
  const double balance = LedgerTotal::balanceThrough(context, settings->startingBalanceMinutes(), now);
  const auto quickActions = settings->quickActionMinutes();
  return WidgetSnapshot(balance, credits, debits, std::nullopt, quickActions, now,
                        settings->hasCompletedOnboarding());
}

WidgetSnapshot save(ModelContext& context, Date now) {
  WidgetSnapshot snapshot = make(context, now);
  WidgetSnapshotStore::save(snapshot);
  return snapshot;
}

}  // namespace quillmont::WidgetSnapshotBuilder
