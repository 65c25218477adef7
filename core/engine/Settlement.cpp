#include "core/engine/Settlement.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "core/engine/DayKey.h"
#include "core/engine/PeriodBalances.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/TimeBankTransactionController.h"

namespace quillmont::Settlement {
namespace {

// The namespace of settlement booking identifiers (a fixed random UUID).
constexpr UUID settlementSpace{{0x3B, 0xA8, 0x52, 0x0E, 0xC7, 0x61, 0x4F, 0x19, 0x9D, 0x44, 0x7A, 0x2C, 0xE5, 0x08,
                                0xB3, 0x6F}};

constexpr TimeInterval halfDay = 12 * 3600.0;

std::int64_t roundedMinutes(TimeInterval seconds) {
  if (!std::isfinite(seconds)) return 0;
  return static_cast<std::int64_t>(std::llround(seconds / 60.0));
}

}  // namespace

UUID identifier(const std::string& dayKey, int part) {
  return UUID::named(settlementSpace, part == 0 ? dayKey : dayKey + "/" + std::to_string(part + 1));
}

std::string note(const std::string& dayKey) { return "Settlement of " + dayKey; }

std::vector<std::int64_t> parts(std::int64_t minutes) {
  std::vector<std::int64_t> amounts;
  constexpr std::int64_t cap = TimeBankTransactionController::maximumAbsoluteMinutes;
  while (minutes != 0) {
    const std::int64_t part = std::clamp(minutes, -cap, cap);
    amounts.push_back(part);
    minutes -= part;
  }
  return amounts;
}

std::vector<Day> plan(ModelContext& context, const TimeBankSettings& settings, Date first, Date last,
                      TimeBankCalculator::HolidayDays holidays, const Calendar& calendar) {
  const Date lastDay = calendar.startOfDay(last);
  const std::optional<Date> dayAfter = calendar.dateByAddingDays(1, lastDay);
  if (!dayAfter || calendar.startOfDay(first) > lastDay) return {};
  // Through the start of the day after: the last day's work counts whole.
  const auto balances = PeriodBalances::read(context, settings, first, *dayAfter, calendar, holidays);

  std::set<UUID> booked;
  context.forEach<BalanceAdjustment>({"id"}, [&](const BalanceAdjustment& booking) { booked.insert(booking.id()); });
  std::vector<Day> days;
  for (const DayBalance& balance : balances) {
    if (!(balance.date < *dayAfter)) break;
    Day day{balance.date, DayKey::of(balance.date, calendar),
            roundedMinutes(balance.workedSeconds - balance.expectedSeconds), false};
    day.settledBefore = booked.contains(identifier(day.key));
    days.push_back(std::move(day));
  }
  return days;
}

std::size_t settle(const std::vector<Day>& days, ModelContext& context, Date now) {
  std::size_t count = 0;
  for (const Day& day : days) {
    if (!day.toSettle()) continue;
    const Date noon = day.date + halfDay;
    const auto amounts = parts(day.minutes);
    for (std::size_t part = 0; part < amounts.size(); ++part) {
      context.insert(std::make_shared<BalanceAdjustment>(identifier(day.key, static_cast<int>(part)), noon,
                                                         amounts[part], NoteValidation::normalized(note(day.key)),
                                                         BalanceAdjustmentKind::manual, now, now));
      ++count;
    }
  }
  if (count > 0) context.save();
  return count;
}

std::optional<Date> lastSettledDay(ModelContext& context, const Calendar& calendar) {
  // Settlements are "manual" bookings; the newest first, so a ledger settled
  // regularly finds its latest one at once.
  std::vector<std::pair<Date, UUID>> manual;
  context.forEach<BalanceAdjustment>({"date", "id", "kindRawValue"}, [&](const BalanceAdjustment& booking) {
    if (booking.kindRawValue() == "manual") manual.emplace_back(booking.date(), booking.id());
  });
  std::sort(manual.begin(), manual.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  for (const auto& [date, id] : manual) {
    if (!std::isfinite(date.timeIntervalSinceReferenceDate)) continue;
    if (id == identifier(DayKey::of(date, calendar))) return calendar.startOfDay(date);
  }
  return std::nullopt;
}

Unsettled unsettled(ModelContext& context, const TimeBankSettings& settings, Date now,
                    TimeBankCalculator::HolidayDays holidays, const Calendar& calendar) {
  Unsettled result;
  const Date today = calendar.startOfDay(now);
  const std::optional<Date> yesterday = calendar.dateByAddingDays(-1, today);
  if (!yesterday) return result;
  Date first = settings.calculationStartDate();
  if (const auto settled = lastSettledDay(context, calendar)) {
    if (const auto next = calendar.dateByAddingDays(1, *settled)) first = std::max(first, *next);
  }
  for (const Day& day : plan(context, settings, first, *yesterday, holidays, calendar)) {
    if (!day.toSettle()) continue;
    result.minutes += day.minutes;
    if (!result.since) result.since = day.date;
  }
  return result;
}

}  // namespace quillmont::Settlement
