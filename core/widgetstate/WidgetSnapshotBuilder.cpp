#include "core/widgetstate/WidgetSnapshotBuilder.h"

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/Calendar.h"

namespace quillmont::WidgetSnapshotBuilder {

WidgetSnapshot make(ModelContext& context, Date now) {
  // Maintenance works on the clock's own instant, not on `now`.
  const auto settings = DataStoreMaintenance::reconcile(context, Calendar::autoupdatingCurrent(), Date::now(), true);

  // In any order: every figure below is a sum of whole minutes times 60,
  // which doubles hold exactly, so sorting 100,000 bookings by date (newest
  // first, as a reader would list them) would change nothing but the cost.
  const auto adjustments = context.fetch<BalanceAdjustment>();
  const Date startOfToday = Calendar::autoupdatingCurrent().startOfDay(now);
  double credits = 0;
  double debits = 0;
  for (const auto& adjustment : adjustments) {
    if (adjustment->date() < startOfToday || adjustment->date() > now) continue;
    const std::int64_t minutes = adjustment->minutes();
    if (minutes > 0) credits += static_cast<double>(minutes) * 60.0;
    if (minutes < 0) debits += static_cast<double>(-minutes) * 60.0;
  }
  const double balance =
      TimeBankCalculator::ledgerBalanceSeconds(adjustments, settings->startingBalanceMinutes(), now);
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
