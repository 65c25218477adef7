// PublicHolidays: the public holidays kept in the store (HolidayList), placed
// on the days of the person's calendar. On a public holiday nobody is
// expected to work: the balance engine takes these days as an extra input
// and plans 0:00 on them, and reports name them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContainer.h"

namespace quillmont::PublicHolidays {

struct Holiday {
  Date day;          ///< the start of the day
  std::string name;  ///< the names of the day's holidays, joined by " / "
  friend bool operator==(const Holiday&, const Holiday&) = default;
};

/// One per day, ascending, from `entries` (days that are no valid day are
/// left out).
std::vector<Holiday> place(const std::vector<HolidayList::Entry>& entries, const Calendar& calendar);
/// The holidays of the store `container`, placed in `calendar`.
std::vector<Holiday> read(const ModelContainer& container, const Calendar& calendar);

/// The days of `holidays`, for the balance engine.
std::vector<Date> days(const std::vector<Holiday>& holidays);
/// The name of the holiday on the day that starts at `day`, if any.
std::optional<std::string> name(const std::vector<Holiday>& holidays, Date day);

}  // namespace quillmont::PublicHolidays
