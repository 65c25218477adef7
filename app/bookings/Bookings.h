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
#include <optional>
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

/// What an edit changes; what is absent stays as it is.
struct Change {
  std::optional<std::string> amount;    ///< as typed, in any form `book` reads (90, -1:30, 45m)
  std::optional<std::string> category;  ///< as typed, as add() reads it; empty for manual
  std::optional<std::string> note;      ///< as typed; empty clears it
  std::optional<std::string> day;       ///< as typed (YYYY-MM-DD, today, yesterday)

  bool empty() const { return !amount && !category && !note && !day; }
};

/// A booking's values, to say what an edit changed.
struct Values {
  std::int64_t minutes = 0;
  std::string category;  ///< the stored category text
  std::string categoryTitle;
  std::string note;
  Date date;
};

struct Edited {
  std::shared_ptr<BalanceAdjustment> booking;  ///< as saved
  Values before;
  Values after;
  /// The ledger's balance now, the edit included.
  double balanceSeconds = 0;
};

/// Changes the booking named as remove() names it, under the rules add()
/// applies to a new one (the category's side of zero, no zero, at most 24
/// hours; a day is dated as add() dates it), keeping its identifier and
/// when it was made; saves once as one journaled action. An empty change is
/// InvalidInput; the ledger's start marker is refused.
Edited edit(StoreSession& session, std::string_view identifier, const Change& change);

}  // namespace Bookings
}  // namespace quillmont
