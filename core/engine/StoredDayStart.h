// StoredDayStart: which day a stored day start (the calculation start, a
// schedule's first day) stands for when the program runs in a time zone other
// than the one the store's days were last written in.
//
// Stores keep such days as instants: the start of the day in the zone of the
// program that wrote them. Taking "the start of the day the instant falls on"
// in the reader's zone moves the day whenever the writer lies east of the
// reader (Berlin's start of 5 January is 4 January 23:00 in UTC), and since
// maintenance writes the result back, a store used alternately in two zones
// would step back a day per change. So the store remembers the zone its days
// were last written in: an instant that starts a day there stands for that
// day; any other instant (a time of day) stands for the day it falls on in
// the reader's zone, as before.
#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont {

class ModelContext;

namespace StoredDayStart {

/// The start, in `calendar`'s zone, of the day `stored` stands for, given
/// the zone the store's days were written in (nothing when unknown).
Date startOfDay(Date stored, const Calendar& calendar, const std::optional<Calendar>& writtenIn);

/// The zone the store's days were last written in, as a calendar; nothing
/// when the store does not say or says the zone of `calendar`.
std::optional<Calendar> writtenIn(ModelContext& context, const Calendar& calendar);
/// Records that the store's days are now written in `calendar`'s zone (a
/// transaction of its own; a failure leaves the old zone, whose day starts
/// then no longer match and are read as before).
void recordWrittenIn(ModelContext& context, const Calendar& calendar);

}  // namespace StoredDayStart
}  // namespace quillmont
