// DurationInput: amounts of time as the user types them on the command line,
// read as signed whole minutes. Accepted forms, each with an optional leading
// "+" or "-" and surrounding blanks:
//   90, -45        plain minutes
//   1:30, -0:45    hours and two-digit minutes (00-59)
//   1h30m, -2h, 45m, 1h 30m   hours and/or minutes with unit letters (h/m, any case)
// Anything else, and amounts beyond what 64-bit minutes can hold, read as nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quillmont::DurationInput {

std::optional<std::int64_t> minutes(std::string_view text);

/// A comma-separated list of durations ("8h,8h,8h,8h,8h,0,0"); nothing when
/// any element is not a duration. An empty text is an empty list.
std::optional<std::vector<std::int64_t>> minutesList(std::string_view text);

}  // namespace quillmont::DurationInput
