// WeeklyMinutesModel: the base of the two records that persist minutes for
// each weekday (WorkSchedule and TimeBankSettings): seven attributes, Monday
// first, also read and written as one seven-element sequence. Writing the
// sequence clamps every value to 0...1440 (missing elements 0); the
// single-day setters store what they are given, and scheduledMinutes clamps
// again when it reads.
#pragma once

#include <cstdint>
#include <span>

#include "core/ledger/WeekdayMinutes.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class WeeklyMinutesModel : public PersistentModel {
 public:
  /// The seven stored values, Monday first, as stored.
  WeekdayMinutes weekdayMinutes() const;
  /// Clamps each value to 0...1440; missing elements become 0.
  void setWeekdayMinutes(std::span<const std::int64_t> minutes);

  std::int64_t mondayMinutes() const { return mondayMinutes_; }
  std::int64_t tuesdayMinutes() const { return tuesdayMinutes_; }
  std::int64_t wednesdayMinutes() const { return wednesdayMinutes_; }
  std::int64_t thursdayMinutes() const { return thursdayMinutes_; }
  std::int64_t fridayMinutes() const { return fridayMinutes_; }
  std::int64_t saturdayMinutes() const { return saturdayMinutes_; }
  std::int64_t sundayMinutes() const { return sundayMinutes_; }
  void setMondayMinutes(std::int64_t value) { assign(mondayMinutes_, value); }
  void setTuesdayMinutes(std::int64_t value) { assign(tuesdayMinutes_, value); }
  void setWednesdayMinutes(std::int64_t value) { assign(wednesdayMinutes_, value); }
  void setThursdayMinutes(std::int64_t value) { assign(thursdayMinutes_, value); }
  void setFridayMinutes(std::int64_t value) { assign(fridayMinutes_, value); }
  void setSaturdayMinutes(std::int64_t value) { assign(saturdayMinutes_, value); }
  void setSundayMinutes(std::int64_t value) { assign(sundayMinutes_, value); }

  /// Minutes expected on the day of `date` in `calendar`, clamped to 0...1440.
  std::int64_t scheduledMinutes(Date date, const Calendar& calendar) const;

 protected:
  WeeklyMinutesModel() = default;
  ~WeeklyMinutesModel() = default;
  void assignWeekdays(const WeekdayMinutes& values);

  std::int64_t mondayMinutes_ = 480;
  std::int64_t tuesdayMinutes_ = 480;
  std::int64_t wednesdayMinutes_ = 480;
  std::int64_t thursdayMinutes_ = 480;
  std::int64_t fridayMinutes_ = 480;
  std::int64_t saturdayMinutes_ = 0;
  std::int64_t sundayMinutes_ = 0;
};

}  // namespace quillmont
