// BookingCommands: `book` books a signed amount of time into the bank through
// the core's transaction (refusals print its message and change nothing);
// `bookings list` and `bookings delete` show and remove bookings.
#pragma once

#include "cli/CommandSet.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

class StoreSession;

namespace BookingCommands {

inline constexpr int defaultListDays = 30;

void install(CommandSet& commands);
/// Prints the bookings dated inside `interval`, oldest first.
void showList(StoreSession& session, const DateInterval& interval);

}  // namespace BookingCommands
}  // namespace quillmont
