// Settling: books each ended day's worked time less its planned time into
// the ledger, once per day, as manual bookings of that day (one action that
// undo takes back whole); a day that balances to 0:00 needs none. A dry run
// plans the same and saves nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/input/DateInput.h"
#include "core/engine/Settlement.h"

namespace quillmont {

class StoreSession;

namespace Settling {

struct Request {
  /// First day; by default the first day of recorded work.
  std::optional<DateInput::Day> from;
  /// Last day; by default yesterday. It must lie before today.
  std::optional<DateInput::Day> through;
  bool dryRun = false;
};

struct Result {
  /// No work is recorded and no first day was given: nothing was planned.
  bool noWork = false;
  /// Every day of the range, as planned.
  std::vector<Settlement::Day> planned;
  /// The days that get (or would get) a booking.
  std::vector<Settlement::Day> booked;
  /// Their sum.
  std::int64_t minutes = 0;
  /// Whether the bookings were saved.
  bool saved = false;
};

/// Refuses (Refusal, finishSetup) while set-up is not complete; InvalidInput "through"
/// for a last day that is not over yet, "from" for a first day after it.
Result settle(StoreSession& session, const Request& request);

}  // namespace Settling
}  // namespace quillmont
