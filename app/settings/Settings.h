// Settings: set-up and the settings record: the calculation start, the
// starting balance, the expected time of each weekday and the quick-action
// amounts. Values are checked before anything changes, so a bad one changes
// nothing; every change stamps the record with the present instant, saves
// and is journaled as one action.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "app/input/DateInput.h"
#include "core/ledger/WeekdayMinutes.h"

namespace quillmont {

class StoreSession;

namespace Settings {

/// The starting balance, refused (InvalidInput "balance") beyond what the store keeps.
std::int64_t startingBalance(std::int64_t minutes);
/// A week's expected minutes, Monday first; a day outside 0:00 to 24:00 is
/// refused as InvalidInput(`field`).
WeekdayMinutes week(const std::vector<std::int64_t>& minutes, std::string_view field);

/// The values to change; those absent keep their settings.
struct Change {
  std::optional<DateInput::Day> start;
  std::optional<std::int64_t> balanceMinutes;  ///< checked by startingBalance()
  std::optional<WeekdayMinutes> week;
  std::optional<std::vector<std::int64_t>> quickActionMinutes;

  bool empty() const { return !start && !balanceMinutes && !week && !quickActionMinutes; }
};

struct Applied {
  /// A quick-action amount was not one offered, and the nearest was kept.
  bool quickActionsMoved = false;
};

/// Applies the change, completes the set-up and begins the manual ledger
/// from the balance stated.
Applied setup(StoreSession& session, const Change& change);
/// Applies the change, when there is one.
Applied change(StoreSession& session, const Change& change);

}  // namespace Settings
}  // namespace quillmont
