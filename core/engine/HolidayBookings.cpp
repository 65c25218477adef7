#include "core/engine/HolidayBookings.h"

#include <set>
#include <utility>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::HolidayBookings {
namespace {

// The namespace of holiday booking identifiers (a fixed random UUID).
constexpr UUID bookingSpace{{0x6E, 0x1F, 0x3C, 0x52, 0x9A, 0x04, 0x4B, 0x7D, 0x8C, 0x21, 0x5D, 0xE0, 0x33, 0x9F, 0x71,
                             0xA6}};

}  // namespace

UUID identifier(const std::string& uid, const std::string& day) { return UUID::named(bookingSpace, uid + "/" + day); }

std::vector<Plan> plan(const std::vector<Holiday>& holidays, const std::vector<HolidayList::Entry>& known,
                       ModelContext& context, const TimeBankSettings& settings, const Calendar& calendar) {
  std::set<UUID> booked;
  context.forEach<BalanceAdjustment>({"id"}, [&](const BalanceAdjustment& adjustment) { booked.insert(adjustment.id()); });
  std::set<std::pair<std::string, std::string>> kept;
  for (const HolidayList::Entry& entry : known) kept.emplace(entry.day, entry.uid);
  const auto schedules = context.fetch<WorkSchedule>();
  const Date start = calendar.startOfDay(settings.calculationStartDate());
  std::set<std::string> days;
  std::vector<Plan> plans;
  for (const Holiday& holiday : holidays) {
    if (!days.insert(holiday.day).second) continue;
    Plan next{holiday, Outcome::plannedTimeFreed, 0, identifier(holiday.uid, holiday.day)};
    next.minutes = TimeBankCalculator::scheduledMinutes(holiday.noon, settings, schedules, calendar);
    if (booked.contains(next.id)) {
      next.outcome = Outcome::bookedBefore;
    } else if (kept.contains({holiday.day, holiday.uid})) {
      next.outcome = Outcome::knownBefore;
    } else if (holiday.noon < start) {
      next.outcome = Outcome::beforeCalculationStart;
    } else if (next.minutes <= 0) {
      next.outcome = Outcome::notAWorkingDay;
    }
    plans.push_back(std::move(next));
  }
  return plans;
}

std::int64_t record(const std::vector<Plan>& plans, ModelContainer& container) {
  std::vector<HolidayList::Entry> entries;
  for (const Plan& next : plans) {
    if (!next.adds()) continue;
    entries.push_back({next.holiday.day, next.holiday.uid, NoteValidation::normalized(next.holiday.name)});
  }
  if (entries.empty()) return 0;
  return container.addHolidays(entries);
}

}  // namespace quillmont::HolidayBookings
