// BookingCommands: `book` books a signed amount of time into the bank through
// the core's transaction (refusals print its message and change nothing);
// `bookings list` and `bookings delete` show and remove bookings.
#pragma once

#include <string>

#include "cli/CommandSet.h"
#include "cli/DateInput.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont {

class StoreSession;

namespace BookingCommands {

inline constexpr int defaultListDays = 30;

void install(CommandSet& commands);
/// Prints the bookings dated inside `interval`, oldest first, under a title
/// naming the `range`, with the balance before and after the range.
void showList(StoreSession& session, const DateInterval& interval, const std::string& range);
/// "2026-03-01".
std::string dayText(const DateInput::Day& day);
/// "from 2026-03-01 to 2026-03-31", saying so when it is the default range.
std::string rangeText(const DateInput::Day& first, const DateInput::Day& last, bool byDefault);

}  // namespace BookingCommands
}  // namespace quillmont
