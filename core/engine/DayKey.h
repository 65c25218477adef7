// DayKey: a calendar day written "YYYY-MM-DD", the day as the wall clock of
// the calendar's time zone shows it, counted in the proleptic Gregorian
// calendar whatever calendar system the person uses. The same day has the
// same key on every machine in the same zone, so records derived from a day
// (a settlement, a public holiday) are keyed by it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::DayKey {

/// The key of the day that contains `date`; empty when `date` is not finite.
std::string of(Date date, const Calendar& calendar);

/// The start of the day `key` names; nothing when `key` is not a valid
/// "YYYY-MM-DD" day.
std::optional<Date> startOfDay(std::string_view key, const Calendar& calendar);

}  // namespace quillmont::DayKey
