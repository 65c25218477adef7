#include "core/WorkSchedule.h"

#include <array>

namespace quillmont {

std::span<const Attribute<WorkSchedule>> WorkSchedule::attributes() {
  static const std::array<Attribute<WorkSchedule>, 11> list{{
      {"id", &WorkSchedule::id_},
      {"effectiveFrom", &WorkSchedule::effectiveFrom_},
      {"mondayMinutes", &WorkSchedule::mondayMinutes_},
      {"tuesdayMinutes", &WorkSchedule::tuesdayMinutes_},
      {"wednesdayMinutes", &WorkSchedule::wednesdayMinutes_},
      {"thursdayMinutes", &WorkSchedule::thursdayMinutes_},
      {"fridayMinutes", &WorkSchedule::fridayMinutes_},
      {"saturdayMinutes", &WorkSchedule::saturdayMinutes_},
      {"sundayMinutes", &WorkSchedule::sundayMinutes_},
      {"createdAt", &WorkSchedule::createdAt_},
      {"modifiedAt", &WorkSchedule::modifiedAt_},
  }};
  return list;
}

WorkSchedule::WorkSchedule() : id_(UUID::random()), effectiveFrom_(Date::now()), createdAt_(effectiveFrom_), modifiedAt_(effectiveFrom_) {}

WorkSchedule::WorkSchedule(UUID id, Date effectiveFrom, std::span<const std::int64_t> weekdayMinutes, Date createdAt,
                           Date modifiedAt)
    : id_(id), effectiveFrom_(effectiveFrom), createdAt_(createdAt), modifiedAt_(modifiedAt) {
  setWeekdayMinutes(weekdayMinutes);
}

WeekdayMinutes WorkSchedule::weekdayMinutes() const {
  return {mondayMinutes_, tuesdayMinutes_, wednesdayMinutes_, thursdayMinutes_, fridayMinutes_, saturdayMinutes_, sundayMinutes_};
}

void WorkSchedule::setWeekdayMinutes(std::span<const std::int64_t> minutes) {
  const WeekdayMinutes values = normalizedWeekdayMinutes(minutes, noWeekdayMinutes);
  mondayMinutes_ = values[0];
  tuesdayMinutes_ = values[1];
  wednesdayMinutes_ = values[2];
  thursdayMinutes_ = values[3];
  fridayMinutes_ = values[4];
  saturdayMinutes_ = values[5];
  sundayMinutes_ = values[6];
  didChange();
}

std::int64_t WorkSchedule::scheduledMinutes(Date date, const Calendar& calendar) const {
  return clampedDailyMinutes(weekdayMinutes()[weekdayIndex(calendar.weekday(date))]);
}

}  // namespace quillmont
