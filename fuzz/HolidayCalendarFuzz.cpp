// Any text as an iCalendar file: events with days that exist, or a refusal,
// never a crash.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "app/Refusal.h"
#include "app/holidays/HolidayCalendar.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    for (const auto& event : HolidayCalendar::read(text, DateInput::Day{2027, 12, 31})) {
      if (event.day.month < 1 || event.day.month > 12 || event.day.day < 1 || event.day.day > 31) std::abort();
    }
  } catch (const Refusal&) {
  }
  return 0;
}
