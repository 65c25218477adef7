// TimeBankDateBounds: no calculation of the time bank starts before
// 1 January 2000 (in the caller's calendar), nor after the day it runs to.
#pragma once

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::TimeBankDateBounds {

inline constexpr int earliestCalculationYear = 2000;
/// 2000-01-01 00:00:00 UTC, for a calendar that cannot place 1 January 2000.
inline constexpr Date fallbackEarliestCalculationDate = Date::fromTimeIntervalSince1970(946'684'800.0);

/// Midnight of 1 January `earliestCalculationYear` in the calendar's system and zone.
Date earliestCalculationDate(const Calendar& calendar);

/// The start of day from which a calculation proposed to begin at `start`
/// begins: never before the earliest calculation date, never after the day of `through`.
Date normalizedCalculationStartDate(Date start, Date through, const Calendar& calendar);

}  // namespace quillmont::TimeBankDateBounds
