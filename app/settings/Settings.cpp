#include "app/settings/Settings.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "app/InvalidInput.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/ManualLedgerMigration.h"

namespace quillmont::Settings {
namespace {

Applied apply(StoreSession& session, const Change& change) {
  TimeBankSettings& settings = session.settings();
  Applied applied;
  if (change.start) settings.setCalculationStartDate(DateInput::startOfDay(*change.start, session.calendar()));
  if (change.balanceMinutes) settings.setStartingBalanceMinutes(startingBalance(*change.balanceMinutes));
  if (change.week) settings.setWeekdayMinutes(*change.week);
  if (change.quickActionMinutes) {
    const auto& wanted = *change.quickActionMinutes;
    settings.setQuickActionMinutes(wanted);
    const auto stored = settings.quickActionMinutes();
    applied.quickActionsMoved = !std::equal(stored.begin(), stored.end(), wanted.begin(), wanted.end());
  }
  return applied;
}

}  // namespace

std::int64_t startingBalance(std::int64_t minutes) {
  if (std::abs(minutes) > DataStoreMaintenance::maximumBalanceMinutes) {
    throw InvalidInput("balance", "the starting balance lies between " +
                                      Display::amountOfMinutes(-DataStoreMaintenance::maximumBalanceMinutes) +
                                      " and " + Display::amountOfMinutes(DataStoreMaintenance::maximumBalanceMinutes));
  }
  return minutes;
}

WeekdayMinutes week(const std::vector<std::int64_t>& minutes, std::string_view field) {
  WeekdayMinutes week{};
  if (minutes.size() != week.size()) {
    throw InvalidInput(std::string(field), "a week has " + std::to_string(week.size()) + " days");
  }
  for (std::size_t i = 0; i < week.size(); ++i) {
    if (minutes[i] < 0 || minutes[i] > maximumDailyMinutes) {
      throw InvalidInput(std::string(field), "a day's expected time lies between 0:00 and 24:00");
    }
    week[i] = minutes[i];
  }
  return week;
}

Applied setup(StoreSession& session, const Change& change) {
  session.journal("setup");
  const Applied applied = apply(session, change);
  session.settings().setHasCompletedOnboarding(true);
  // A bank set up here starts the manual ledger from the balance stated.
  ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
  session.saveSettings();
  return applied;
}

Applied change(StoreSession& session, const Change& change) {
  if (change.empty()) return {};
  session.journal("settings");
  const Applied applied = apply(session, change);
  session.saveSettings();
  return applied;
}

}  // namespace quillmont::Settings
