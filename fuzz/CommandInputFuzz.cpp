// Any text as a typed duration, day or time: an answer or a refusal, never
// a crash, and a duration within the range a booking can hold.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "app/input/DateInput.h"
#include "app/input/DurationInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  (void)DurationInput::minutes(text);
  (void)DurationInput::minutesList(text);
  const DateInput::Day today{2026, 11, 23};
  if (const auto day = DateInput::day(text, today); day && (day->month < 1 || day->month > 12 || day->day < 1)) {
    std::abort();
  }
  if (const auto time = DateInput::dateTime(text, today); time && (time->hour > 23 || time->minute > 59)) std::abort();
  return 0;
}
