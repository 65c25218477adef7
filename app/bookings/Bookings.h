// Bookings: time booked into (+) or out of (-) the bank by hand. A booking
// names its category by a built-in kind (raw value or title) or by the title
// of one of the person's own categories, ignoring letter case; a category
// keeps its amounts on its side of zero, so an amount on the other side is
// refused rather than cut to nothing. The core's transaction decides the
// rest (no zero, at most 24 hours, the day it is dated on). Every change is
// journaled as one action.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

class StoreSession;

namespace Bookings {

/// The stored category text a typed category names ("manual" for none);
/// InvalidInput("category") lists the choices when it names none.
std::string category(std::string_view typed, const TimeBankSettings& settings);

struct Request {
  std::int64_t minutes = 0;
  std::string category;  ///< as typed; empty for manual
  std::string note;      ///< as typed
  std::string day;       ///< as typed (YYYY-MM-DD, today, yesterday); empty for now
  /// The amount as typed, which names the action for undo ("book 1h30m").
  std::string amountText;
};

struct Booked {
  std::shared_ptr<BalanceAdjustment> booking;
  std::string categoryTitle;
  /// The ledger's balance now, the booking included.
  double balanceSeconds = 0;
};
Booked add(StoreSession& session, const Request& request);

/// The bookings dated inside an interval, oldest first (the ledger's start
/// marker, which books nothing, left out), their total, and the balance
/// before the interval (the starting balance and every booking dated
/// earlier), so that before + total is the balance after it.
struct Listing {
  std::vector<std::shared_ptr<BalanceAdjustment>> bookings;
  double beforeSeconds = 0;
  double totalSeconds = 0;
};
Listing list(StoreSession& session, const DateInterval& interval);

/// Deletes the booking named by identifier, prefix, "@N" or "last" (every
/// copy of its identifier) and returns it; the ledger's start marker stays.
std::shared_ptr<BalanceAdjustment> remove(StoreSession& session, std::string_view identifier);

}  // namespace Bookings
}  // namespace quillmont
