// TypedValue: a value a person typed into a field, read or refused with one
// wording wherever it is typed: InvalidInput names the field and shows what
// is accepted. Hosts that spell a field otherwise (a positional argument)
// catch the refusal and show the reason under their own name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/input/DateInput.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::TypedValue {

/// Text as typed (notes, titles); it must be valid UTF-8, as every stored text is.
const std::string& text(const std::string& text, std::string_view field);
/// Signed whole minutes in any form DurationInput reads.
std::int64_t minutes(std::string_view text, std::string_view field);
/// A day in YYYY-MM-DD form, or today, yesterday, tomorrow.
DateInput::Day day(std::string_view text, const DateInput::Day& today, std::string_view field);
/// A day and time, or a time alone on `today`, as an instant of the calendar's zone.
Date dateTime(std::string_view text, const DateInput::Day& today, const Calendar& calendar, std::string_view field);

}  // namespace quillmont::TypedValue
