#include "app/overview/Overview.h"

#include <vector>

#include "app/session/StoreSession.h"
#include "core/engine/PeriodBalances.h"
#include "core/engine/PublicHolidays.h"
#include "core/engine/Settlement.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/engine/TimerSessionController.h"
#include "core/widgetstate/WidgetSnapshotBuilder.h"

namespace quillmont::Overview {

// The balance and today's credits and debits are the widget's own figures.
Figures read(StoreSession& session) {
  Figures figures;
  const Date now = session.now();
  const WidgetSnapshot snapshot = WidgetSnapshotBuilder::make(session.context(), now);
  figures.balanceSeconds = snapshot.balanceSeconds;
  figures.todayCreditSeconds = snapshot.todayWorkedSeconds;
  figures.todayDebitSeconds = snapshot.todayExpectedSeconds;
  figures.isConfigured = snapshot.isConfigured;
  // Worked time of today, a running entry up to now, counted as the day
  // balances count it (time several entries cover once). Three columns of
  // the entries that run or reach today; only when one of them began before
  // today are the entries chained to it read as well.
  const Date today = session.calendar().startOfDay(now);
  const RowFilter runningOrToday =
      PeriodBalances::reaching(today, now).orElse(RowFilter::allOf({{"endedAt", RowFilter::Op::isNull, {}}}));
  std::size_t running = 0;
  std::optional<Date> runningStart;
  const auto sumToday = [&] {
    running = 0;
    std::vector<TimeBankCalculator::detail::ObservedWorkInterval> found;
    session.context().forEach<WorkEntry>(
        {"startedAt", "endedAt", "breakMinutes"}, runningOrToday, [&](const WorkEntry& entry) {
          if (entry.isRunning()) {
            ++running;
            runningStart = entry.startedAt();
          }
          if (auto seen = TimeBankCalculator::detail::observedInterval(entry, now)) found.push_back(*seen);
        });
    figures.todayWorkedSeconds =
        PeriodBalances::workedToday(session.context(), std::move(found), now, session.calendar());
  };
  sumToday();
  // One running entry that started by now is what the timer's repairs would
  // keep as it is; anything else (several, or a start still to come) gets
  // them, and today's sum is taken again from the repaired entries.
  if (running == 1 && *runningStart <= now) {
    figures.runningSince = runningStart;
  } else if (running > 0) {
    if (const auto kept = TimerSessionController::runningEntry(session.context(), now)) {
      figures.runningSince = kept->startedAt();
    }
    sumToday();
  }
  if (figures.isConfigured) {
    const auto holidays = PublicHolidays::days(PublicHolidays::read(*session.container(), session.calendar()));
    const auto unsettled =
        Settlement::unsettled(session.context(), session.settings(), now, holidays, session.calendar());
    figures.unsettledSeconds = static_cast<double>(unsettled.minutes) * 60.0;
    figures.unsettledSince = unsettled.since;
  }
  return figures;
}

}  // namespace quillmont::Overview
