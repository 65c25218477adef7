#include "app/holidays/HolidayImport.h"

#include <algorithm>
#include <cstdio>

#include "app/holidays/HolidayCalendar.h"

namespace quillmont::HolidayImport {
namespace {

std::string dayKey(const DateInput::Day& day) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", day.year, day.month, day.day);
  return buffer;
}

}  // namespace

Preview preview(StoreSession& session, const std::string& text) {
  const DateInput::Day today = session.today();
  std::vector<HolidayBookings::Holiday> holidays;
  for (const auto& event : HolidayCalendar::read(text, DateInput::Day{today.year + 1, 12, 31})) {
    holidays.push_back({event.uid, event.name, dayKey(event.day), DateInput::midday(event.day, session.calendar())});
  }
  std::stable_sort(holidays.begin(), holidays.end(), [](const auto& a, const auto& b) { return a.day < b.day; });
  Preview result;
  result.plans = HolidayBookings::plan(holidays, session.container()->holidays(), session.context(),
                                       session.settings(), session.calendar());
  for (const auto& plan : result.plans) {
    if (plan.adds()) ++result.added;
    if (plan.outcome == HolidayBookings::Outcome::plannedTimeFreed) result.freedMinutes += plan.minutes;
  }
  return result;
}

std::int64_t record(StoreSession& session, const Preview& preview) {
  if (preview.added == 0) return 0;
  return HolidayBookings::record(preview.plans, *session.container());
}

}  // namespace quillmont::HolidayImport
