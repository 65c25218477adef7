// CommandInput: reads the values of options and arguments for the commands,
// with one wording for every refusal: a value that cannot be read throws
// UsageError naming the option and showing what is accepted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/input/DateInput.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"

namespace quillmont::CommandInput {

/// Text as typed (notes, titles); it must be valid UTF-8, as every stored text is.
const std::string& text(const std::string& text, std::string_view option);
std::int64_t minutes(std::string_view text, std::string_view option);
/// Exactly `count` durations separated by commas.
std::vector<std::int64_t> minutesList(std::string_view text, std::string_view option, std::size_t count);
DateInput::Day day(std::string_view text, const DateInput::Day& today, std::string_view option);
Date dateTime(std::string_view text, const DateInput::Day& today, const Calendar& calendar, std::string_view option);
/// A time that begins something: a time of day alone is on `day` (the day
/// of the record being changed), a full time stands as typed.
Date startTime(std::string_view text, const DateInput::Day& day, const DateInput::Day& today, const Calendar& calendar,
               std::string_view option);
/// A time that ends what began at `start`: a time of day alone is on the
/// start's day, or on the next day when that would come before the start.
Date endTime(std::string_view text, Date start, const DateInput::Day& today, const Calendar& calendar,
             std::string_view option);
/// endTime() for work being recorded by hand, whose end has passed: a time
/// of day alone that would end the work later than `now`, or carry it over
/// midnight into more than `maximumNightSeconds`, is refused with the dated
/// form to type if it is meant. A time with its day stands as typed.
Date workEndTime(std::string_view text, Date start, Date now, const Calendar& calendar, std::string_view option);
inline constexpr double maximumNightSeconds = 12 * 60 * 60;
/// A time that has passed (the timer's --at): a time of day alone is today's
/// and must not lie after `now` (the refusal shows the dated form for
/// yesterday); a full time must not lie after `now` either.
Date pastTime(std::string_view text, Date now, const Calendar& calendar, std::string_view option);

/// The days from `from` through `to` as an interval from the first one's
/// start to the end of the last; missing ends default to the given days.
DateInterval days(const std::string& from, const std::string& to, const DateInput::Day& defaultFrom,
                  const DateInput::Day& defaultTo, const DateInput::Day& today, const Calendar& calendar);

}  // namespace quillmont::CommandInput
