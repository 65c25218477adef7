// WorkSchedule: the minutes expected on each weekday from `effectiveFrom`
// on. The user keeps a history of schedules; the balance engine picks the one
// that governs each day. Constructors and the weekdayMinutes setter clamp to
// 0...1440 (missing elements 0); single-day setters store what they are given.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/WeekdayMinutes.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Attribute.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class WorkSchedule final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "WorkSchedule";
  static std::span<const Attribute<WorkSchedule>> attributes();

  WorkSchedule();
  explicit WorkSchedule(ForLoading) {}
  WorkSchedule(UUID id, Date effectiveFrom, std::span<const std::int64_t> weekdayMinutes, Date createdAt,
               Date modifiedAt);

  const UUID& id() const { return id_; }
  Date effectiveFrom() const { return effectiveFrom_; }
  Date createdAt() const { return createdAt_; }
  Date modifiedAt() const { return modifiedAt_; }
  /// The seven stored values, Monday first, as stored.
  WeekdayMinutes weekdayMinutes() const;
  std::int64_t mondayMinutes() const { return mondayMinutes_; }
  std::int64_t tuesdayMinutes() const { return tuesdayMinutes_; }
  std::int64_t wednesdayMinutes() const { return wednesdayMinutes_; }
  std::int64_t thursdayMinutes() const { return thursdayMinutes_; }
  std::int64_t fridayMinutes() const { return fridayMinutes_; }
  std::int64_t saturdayMinutes() const { return saturdayMinutes_; }
  std::int64_t sundayMinutes() const { return sundayMinutes_; }

  void setId(UUID value) { assign(id_, value); }
  void setEffectiveFrom(Date value) { assign(effectiveFrom_, value); }
  void setCreatedAt(Date value) { assign(createdAt_, value); }
  void setModifiedAt(Date value) { assign(modifiedAt_, value); }
  /// Clamps each value to 0...1440; missing elements become 0.
  void setWeekdayMinutes(std::span<const std::int64_t> minutes);
  void setMondayMinutes(std::int64_t value) { assign(mondayMinutes_, value); }
  void setTuesdayMinutes(std::int64_t value) { assign(tuesdayMinutes_, value); }
  void setWednesdayMinutes(std::int64_t value) { assign(wednesdayMinutes_, value); }
  void setThursdayMinutes(std::int64_t value) { assign(thursdayMinutes_, value); }
  void setFridayMinutes(std::int64_t value) { assign(fridayMinutes_, value); }
  void setSaturdayMinutes(std::int64_t value) { assign(saturdayMinutes_, value); }
  void setSundayMinutes(std::int64_t value) { assign(sundayMinutes_, value); }

  /// Minutes expected on the day of `date` in `calendar`, clamped to 0...1440.
  std::int64_t scheduledMinutes(Date date, const Calendar& calendar) const;

 private:
  UUID id_;
  Date effectiveFrom_;
  std::int64_t mondayMinutes_ = 480;
  std::int64_t tuesdayMinutes_ = 480;
  std::int64_t wednesdayMinutes_ = 480;
  std::int64_t thursdayMinutes_ = 480;
  std::int64_t fridayMinutes_ = 480;
  std::int64_t saturdayMinutes_ = 0;
  std::int64_t sundayMinutes_ = 0;
  Date createdAt_;
  Date modifiedAt_;
};

}  // namespace quillmont
