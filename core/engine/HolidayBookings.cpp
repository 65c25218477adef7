#include "core/engine/HolidayBookings.h"

#include <algorithm>
#include <set>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::HolidayBookings {
namespace {

// The namespace of holiday booking identifiers (a fixed random UUID).
constexpr UUID bookingSpace{{0x6E, 0x1F, 0x3C, 0x52, 0x9A, 0x04, 0x4B, 0x7D, 0x8C, 0x21, 0x5D, 0xE0, 0x33, 0x9F, 0x71,
                             0xA6}};

}  // namespace

UUID identifier(const std::string& uid, const std::string& day) { return UUID::named(bookingSpace, uid + "/" + day); }

std::vector<Plan> plan(const std::vector<Holiday>& holidays, ModelContext& context, const TimeBankSettings& settings,
                       const Calendar& calendar) {
  std::set<UUID> booked;
  context.forEach<BalanceAdjustment>({"id"}, [&](const BalanceAdjustment& adjustment) { booked.insert(adjustment.id()); });
  const auto schedules = context.fetch<WorkSchedule>();
  const Date start = calendar.startOfDay(settings.calculationStartDate());
  std::set<std::string> days;
  std::vector<Plan> plans;
  for (const Holiday& holiday : holidays) {
    if (!days.insert(holiday.day).second) continue;
    Plan next{holiday, Outcome::booked, 0, identifier(holiday.uid, holiday.day)};
    if (holiday.noon < start) {
      next.outcome = Outcome::beforeCalculationStart;
    } else if (booked.contains(next.id)) {
      next.outcome = Outcome::alreadyBooked;
    } else {
      next.minutes = TimeBankCalculator::scheduledMinutes(holiday.noon, settings, schedules, calendar);
      if (next.minutes <= 0) next.outcome = Outcome::notAWorkingDay;
    }
    plans.push_back(std::move(next));
  }
  return plans;
}

std::size_t book(const std::vector<Plan>& plans, ModelContext& context, Date now) {
  std::size_t count = 0;
  for (const Plan& next : plans) {
    if (next.outcome != Outcome::booked) continue;
    context.insert(std::make_shared<BalanceAdjustment>(next.id, next.holiday.noon, next.minutes,
                                                       NoteValidation::normalized(next.holiday.name),
                                                       BalanceAdjustmentKind::holiday, now, now));
    ++count;
  }
  if (count > 0) context.save();
  return count;
}

}  // namespace quillmont::HolidayBookings
