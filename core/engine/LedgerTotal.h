// LedgerTotal: what the bookings add to the ledger balance at an instant
// (every booking dated at or before it), without reading every booking on
// every command.
//
// The store keeps the total as of an instant beside the bookings'
// generation. While the generation is the same, the total at a later
// instant is that total plus the bookings dated after its instant, and at
// an earlier one the total less the bookings dated between the two: few
// rows, which the date index finds. Once many bookings have piled up behind
// the instant, a read records the total anew as of its own. A save through
// a context that only inserts bookings carries the total to the new
// generation in its own transaction; any other write leaves it behind, and
// the next read sums every booking again and records a fresh total. Every
// term is whole minutes times 60, so the sums are exact in any order and
// the result is the same as summing every booking.
#pragma once

#include <cstdint>

#include "platform/foundation/Date.h"

namespace quillmont {

class ModelContext;

namespace LedgerTotal {

/// The seconds that the bookings `context` sees add to the ledger balance
/// at `through` (TimeBankCalculator::ledgerSecondsOf summed over them);
/// the starting balance is not included. A full sum over a writable store
/// is recorded for later reads, and so is a total that had many bookings
/// added behind it; failing to record one changes nothing.
TimeInterval bookedThrough(ModelContext& context, Date through);

/// The ledger balance at `through`: the starting balance plus bookedThrough().
TimeInterval balanceThrough(ModelContext& context, std::int64_t startingBalanceMinutes, Date through);

/// Carries the recorded total through this context's later saves that
/// insert bookings and change or delete none.
void keepCurrent(ModelContext& context);

}  // namespace LedgerTotal
}  // namespace quillmont
