#include "core/ledger/WeeklyMinutesModel.h"

namespace quillmont {

WeekdayMinutes WeeklyMinutesModel::weekdayMinutes() const {
  return {mondayMinutes_, tuesdayMinutes_, wednesdayMinutes_, thursdayMinutes_, fridayMinutes_, saturdayMinutes_, sundayMinutes_};
}

void WeeklyMinutesModel::setWeekdayMinutes(std::span<const std::int64_t> minutes) {
  assignWeekdays(normalizedWeekdayMinutes(minutes, noWeekdayMinutes));
}

void WeeklyMinutesModel::assignWeekdays(const WeekdayMinutes& values) {
  setMondayMinutes(values[0]);
  setTuesdayMinutes(values[1]);
  setWednesdayMinutes(values[2]);
  setThursdayMinutes(values[3]);
  setFridayMinutes(values[4]);
  setSaturdayMinutes(values[5]);
  setSundayMinutes(values[6]);
}

std::int64_t WeeklyMinutesModel::scheduledMinutes(Date date, const Calendar& calendar) const {
  return clampedDailyMinutes(weekdayMinutes()[weekdayIndex(calendar.weekday(date))]);
}

}  // namespace quillmont
