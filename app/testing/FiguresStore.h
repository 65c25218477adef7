// FiguresStore: a fresh data home for one test of the figures a host shows,
// with the clock fixed, and short ways to set a bank up, record work and
// book time through a store session as any host would.
#pragma once

#include <optional>

#include "app/input/DateInput.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WeekdayMinutes.h"
#include "core/ledger/WorkEntry.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/UUID.h"

namespace quillmont::testing {

class FiguresStore {
 public:
  /// A new, empty data home; the clock stands at `now` (local wall time).
  explicit FiguresStore(const DateInput::DateTime& now) : home_(at(now)) {}

  static Date at(const DateInput::DateTime& time) { return DateInput::instant(time, Calendar::autoupdatingCurrent()); }
  static Date day(int year, int month, int dayOfMonth) { return at({{year, month, dayOfMonth}, 12, 0}); }

  /// Completes set-up as `quillmont setup` does.
  void setUp(const DateInput::Day& start, std::int64_t balanceMinutes = 0,
             const WeekdayMinutes& week = defaultWeekdayMinutes) {
    StoreSession session;
    session.settings().setCalculationStartDate(DateInput::midday(start, session.calendar()));
    session.settings().setStartingBalanceMinutes(balanceMinutes);
    session.settings().setWeekdayMinutes(week);
    session.settings().setHasCompletedOnboarding(true);
    ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
    session.saveSettings();
  }

  /// Records work from `start` to `end` (running when there is no end).
  void work(const DateInput::DateTime& start, std::optional<DateInput::DateTime> end, std::int64_t breakMinutes = 0) {
    StoreSession session;
    const Date now = session.now();
    session.context().insert(std::make_shared<WorkEntry>(
        UUID::random(), at(start), end ? std::optional(at(*end)) : std::nullopt, breakMinutes, "", now, now));
    session.context().save();
  }

  /// Books `minutes` of `kind` at noon of `day`.
  void book(const DateInput::Day& on, std::int64_t minutes, BalanceAdjustmentKind kind = BalanceAdjustmentKind::manual) {
    StoreSession session;
    const Date now = session.now();
    session.context().insert(std::make_shared<BalanceAdjustment>(UUID::random(), DateInput::midday(on, session.calendar()),
                                                                 minutes, "", kind, now, now));
    session.context().save();
  }

 private:
  ScratchHome home_;
};

}  // namespace quillmont::testing
