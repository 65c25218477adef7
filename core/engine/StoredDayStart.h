// StoredDayStart: which day a stored day start (the calculation start, a
// schedule's first day) stands for when it is read in a time zone other than
// the one it was written in.
//
// Stores keep such days as instants: the start of the day in the zone of the
// program that wrote them. Taking "the start of the day the instant falls on"
// in the zone of the program that reads it moves the day whenever the writer
// lies east of the reader (Berlin's start of 5 January is 4 January 23:00 in
// UTC), and a store used in two zones would step back a day per change. So an
// instant on a quarter hour (as every zone's offset is) stands for the day it
// starts at the one UTC offset from −10:00 up to (not including) +14:00 at
// which it is midnight: the offsets people live at, and one offset for every
// instant, so the answer never depends on the reader. Any other instant (a
// time of day from an older store or a hand-made archive) stands for the day
// it falls on in the reader's zone.
#pragma once

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::StoredDayStart {

/// The start, in the calendar's zone, of the day `stored` stands for.
Date startOfDay(Date stored, const Calendar& calendar);

}  // namespace quillmont::StoredDayStart
