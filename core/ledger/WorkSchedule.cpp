#include "core/ledger/WorkSchedule.h"

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

}  // namespace quillmont
