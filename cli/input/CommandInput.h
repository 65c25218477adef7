// CommandInput: reads the values of options and arguments for the commands,
// with one wording for every refusal: a value that cannot be read throws
// UsageError naming the option and showing what is accepted (the wording is
// the application layer's TypedValue; times of work are read there, by the
// use cases, which place a time typed without a day).
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
/// The days from `from` through `to` as an interval from the first one's
/// start to the end of the last; missing ends default to the given days.
DateInterval days(const std::string& from, const std::string& to, const DateInput::Day& defaultFrom,
                  const DateInput::Day& defaultTo, const DateInput::Day& today, const Calendar& calendar);

}  // namespace quillmont::CommandInput
