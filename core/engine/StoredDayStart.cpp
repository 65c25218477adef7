#include "core/engine/StoredDayStart.h"

#include <cmath>

namespace quillmont::StoredDayStart {
namespace {

constexpr double secondsPerDay = 86400;
constexpr double earliestOffset = -10 * 3600.0;  // the window is one day long: [−10:00, +14:00)
constexpr double offsetStep = 900;               // every zone's offset is a whole number of quarter hours
constexpr double tolerance = 0.001;

}  // namespace

Date startOfDay(Date stored, const Calendar& calendar) {
  const Date local = calendar.startOfDay(stored);
  const double seconds = stored.timeIntervalSince1970();
  if (local == stored || !std::isfinite(seconds)) return local;

  // The offset in the window at which `stored` is midnight.
  double offset = std::fmod(-seconds - earliestOffset, secondsPerDay);
  if (offset < 0) offset += secondsPerDay;
  const double step = std::fmod(offset, offsetStep);
  if (step > tolerance && offsetStep - step > tolerance) return local;
  offset = std::round(offset) + earliestOffset;

  // Noon of the day the instant starts at that offset, on the reader's
  // clock, lies inside that same day for the reader.
  const double readerOffset = static_cast<double>(calendar.secondsFromGMT(stored));
  return calendar.startOfDay(stored.addingTimeInterval(offset - readerOffset + secondsPerDay / 2));
}

}  // namespace quillmont::StoredDayStart
