#include "core/engine/TimeBankDateBounds.h"

namespace quillmont::TimeBankDateBounds {

Date earliestCalculationDate(const Calendar& calendar) {
  return calendar.date(earliestCalculationYear, 1, 1).value_or(fallbackEarliestCalculationDate);
}

Date normalizedCalculationStartDate(Date start, Date through, const Calendar& calendar) {
  const Date earliest = earliestCalculationDate(calendar);
  const Date firstDay = calendar.startOfDay(start > earliest ? start : earliest);
  const Date lastDay = calendar.startOfDay(through);
  return lastDay < firstDay ? lastDay : firstDay;
}

}  // namespace quillmont::TimeBankDateBounds
