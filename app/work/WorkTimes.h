// WorkTimes: the instants of work as a person types them: "YYYY-MM-DD HH:MM"
// stands as typed; a time of day alone (17:30) is placed by what it changes
// and must not slip silently. Every refusal is InvalidInput naming the field
// ("start", "end", "at") and, where a time alone was refused, a Remedy with
// the dated form to type if it is meant (writeTheDay, writeYesterday).
#pragma once

#include <string_view>

#include "app/input/DateInput.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::WorkTimes {

/// A night carried over midnight by an end typed alone may last this long.
inline constexpr double maximumNightSeconds = 12 * 60 * 60;

/// A time that begins something: a time of day alone is on `day` (the day
/// of the record being changed), a full time stands as typed.
Date startTime(std::string_view text, const DateInput::Day& day, const DateInput::Day& today, const Calendar& calendar,
               std::string_view field);
/// A time that ends what began at `start`: a time of day alone is on the
/// start's day, or on the next day when that would come before the start.
Date endTime(std::string_view text, Date start, const DateInput::Day& today, const Calendar& calendar,
             std::string_view field);
/// endTime() for work recorded by hand, whose end has passed: a time of day
/// alone that would end the work later than `now`, or carry it over midnight
/// into more than maximumNightSeconds, is refused.
Date workEndTime(std::string_view text, Date start, Date now, const Calendar& calendar, std::string_view field);
/// A time that has passed (when the timer starts or stops): a time of day
/// alone is today's and must not lie after `now` (the refusal shows the
/// dated form for yesterday); a full time must not lie after `now` either.
Date pastTime(std::string_view text, Date now, const Calendar& calendar, std::string_view field);

}  // namespace quillmont::WorkTimes
