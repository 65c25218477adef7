#include "core/engine/StoredDayStart.h"

#include <cmath>

#include "platform/store/ModelContext.h"
#include "platform/store/StoreError.h"

namespace quillmont::StoredDayStart {
namespace {

constexpr std::string_view zoneKey = "days.timeZone";
constexpr double secondsPerDay = 86400;

}  // namespace

Date startOfDay(Date stored, const Calendar& calendar, const std::optional<Calendar>& writtenIn) {
  const Date local = calendar.startOfDay(stored);
  if (local == stored || !writtenIn || !std::isfinite(stored.timeIntervalSinceReferenceDate)) return local;
  if (writtenIn->startOfDay(stored) != stored) return local;  // a time of day, not a day start there
  // Noon of that day on the writer's clock, moved to the same wall-clock
  // time on the reader's, lies inside the same calendar day for the reader.
  const Date noon = stored.addingTimeInterval(secondsPerDay / 2);
  const auto shift = static_cast<double>(writtenIn->secondsFromGMT(noon) - calendar.secondsFromGMT(noon));
  return calendar.startOfDay(noon.addingTimeInterval(shift));
}

std::optional<Calendar> writtenIn(ModelContext& context, const Calendar& calendar) {
  const auto zone = context.container()->metadata(zoneKey);
  if (!zone || *zone == calendar.timeZoneIdentifier()) return std::nullopt;
  return Calendar::make(*zone);
}

void recordWrittenIn(ModelContext& context, const Calendar& calendar) {
  const std::string zone = calendar.timeZoneIdentifier();
  if (context.container()->metadata(zoneKey) == zone) return;
  try {
    context.container()->setMetadata(zoneKey, zone);
  } catch (const StoreError&) {
  }
}

}  // namespace quillmont::StoredDayStart
