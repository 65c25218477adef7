#include "core/engine/PublicHolidays.h"

#include <algorithm>

#include "core/engine/DayKey.h"

namespace quillmont::PublicHolidays {

std::vector<Holiday> place(const std::vector<HolidayList::Entry>& entries, const Calendar& calendar) {
  std::vector<Holiday> holidays;
  for (const HolidayList::Entry& entry : entries) {
    const auto day = DayKey::startOfDay(entry.day, calendar);
    if (!day) continue;
    holidays.push_back({*day, entry.name});
  }
  std::stable_sort(holidays.begin(), holidays.end(), [](const Holiday& a, const Holiday& b) { return a.day < b.day; });
  // Two calendars naming one day: one holiday of their distinct names.
  std::vector<Holiday> merged;
  std::vector<std::string> names;  // of the last merged day
  for (Holiday& holiday : holidays) {
    if (!merged.empty() && merged.back().day == holiday.day) {
      if (std::find(names.begin(), names.end(), holiday.name) != names.end()) continue;
      names.push_back(holiday.name);
      merged.back().name += " / " + holiday.name;
      continue;
    }
    names.assign({holiday.name});
    merged.push_back(std::move(holiday));
  }
  return merged;
}

std::vector<Holiday> read(const ModelContainer& container, const Calendar& calendar) {
  return place(container.holidays(), calendar);
}

std::vector<Date> days(const std::vector<Holiday>& holidays) {
  std::vector<Date> result;
  result.reserve(holidays.size());
  for (const Holiday& holiday : holidays) result.push_back(holiday.day);
  return result;
}

std::optional<std::string> name(const std::vector<Holiday>& holidays, Date day) {
  const auto found = std::lower_bound(holidays.begin(), holidays.end(), day,
                                      [](const Holiday& holiday, Date value) { return holiday.day < value; });
  if (found == holidays.end() || found->day != day) return std::nullopt;
  return found->name;
}

}  // namespace quillmont::PublicHolidays
