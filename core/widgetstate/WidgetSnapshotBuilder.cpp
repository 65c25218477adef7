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

  // The bookings are summed straight from the table, two columns each,
  // without a record object per row. In any order: every figure below is a
  // sum of whole minutes times 60, which doubles hold exactly.
  const Date startOfToday = Calendar::autoupdatingCurrent().startOfDay(now);
  double credits = 0;
  double debits = 0;
  double booked = 0;
  context.forEach<BalanceAdjustment>({"date", "minutes"}, [&](const BalanceAdjustment& adjustment) {
    const Date date = adjustment.date();
    const std::int64_t minutes = adjustment.minutes();
    booked += TimeBankCalculator::ledgerSecondsOf(date, minutes, now);
    if (date < startOfToday || date > now) return;
    if (minutes > 0) credits += static_cast<double>(minutes) * 60.0;
    if (minutes < 0) debits += static_cast<double>(-minutes) * 60.0;
  });
  const double balance = TimeBankCalculator::ledgerBalanceSeconds({}, settings->startingBalanceMinutes(), now) + booked;
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
