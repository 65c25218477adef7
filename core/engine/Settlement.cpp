#include "core/engine/Settlement.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include "core/engine/DayKey.h"
#include "core/engine/PeriodBalances.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/StoreError.h"

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

constexpr std::uint8_t nameBased = 0x50;  // version 5, the high nibble of byte 6

// What the unsettled time depends on besides the clock: every record type's
// generation, the holiday days and the zone that cuts the days. While it
// stays the same, the days up to a past day keep their differences. The
// bookings' generation comes first, so a save can carry it (keepCurrent).
std::string signatureOf(ModelContext& context, std::size_t holidays, const Calendar& calendar) {
  return std::to_string(context.generation<BalanceAdjustment>()) + " " +
         std::to_string(context.generation<WorkEntry>()) + " " +
         std::to_string(context.generation<WorkSchedule>()) + " " +
         std::to_string(context.generation<TimeBankSettings>()) + " " + std::to_string(holidays) + " " +
         calendar.timeZoneIdentifier();
}

// The unsettled time recorded in the store's metadata: through which day it
// was counted and under which signature; as text
// "signature|lastDay minutes since" (since NaN when none).
constexpr std::string_view cacheKey = "settlement.unsettled";

struct Counted {
  std::string signature;
  Date lastDay;
  Unsettled unsettled;

  static std::optional<Counted> read(ModelContainer& container) {
    const auto text = container.metadata(cacheKey);
    if (!text) return std::nullopt;
    const auto bar = text->rfind('|');
    if (bar == std::string::npos) return std::nullopt;
    Counted counted{text->substr(0, bar), Date(), {}};
    const char* position = text->data() + bar + 1;
    const char* const end = text->data() + text->size();
    const auto field = [&](auto& value) {
      const auto [after, error] = std::from_chars(position, end, value);
      if (error != std::errc{} || (after != end && *after != ' ')) return false;
      position = after == end ? end : after + 1;
      return true;
    };
    double lastDay = 0;
    double since = 0;
    if (!field(lastDay) || !field(counted.unsettled.minutes) || !field(since) || position != end) return std::nullopt;
    counted.lastDay = Date(lastDay);
    if (std::isfinite(since)) counted.unsettled.since = Date(since);
    return counted;
  }

  void write(ModelContainer& container) const {
    if (container.isReadOnly()) return;
    char buffer[96];
    char* out = buffer;
    const auto append = [&](auto value) { out = std::to_chars(out, buffer + sizeof buffer, value).ptr; };
    append(lastDay.timeIntervalSinceReferenceDate);
    *out++ = ' ';
    append(unsettled.minutes);
    *out++ = ' ';
    append(unsettled.since ? unsettled.since->timeIntervalSinceReferenceDate : NAN);
    try {
      container.setMetadata(cacheKey, signature + "|" + std::string(buffer, static_cast<std::size_t>(out - buffer)));
    } catch (const StoreError&) {
      // The next read counts again.
    }
  }
};

}  // namespace

UUID identifier(const std::string& dayKey, int part) {
  return UUID::named(settlementSpace, part == 0 ? dayKey : dayKey + "/" + std::to_string(part + 1));
}

bool isSettlement(const UUID& id, Date date, const Calendar& calendar) {
  if ((id.bytes[6] & 0xF0) != nameBased || !std::isfinite(date.timeIntervalSinceReferenceDate)) return false;
  const std::string key = DayKey::of(date, calendar);
  return id == identifier(key, 0) || id == identifier(key, 1);
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

  // Only name-based identifiers can be a settlement's; a ledger without
  // any needs no day's identifier worked out (a hash each).
  std::set<UUID> named;
  context.forEach<BalanceAdjustment>({"id"}, [&](const BalanceAdjustment& booking) {
    if ((booking.id().bytes[6] & 0xF0) == nameBased) named.insert(booking.id());
  });
  std::vector<Day> days;
  for (const DayBalance& balance : balances) {
    if (!(balance.date < *dayAfter)) break;
    Day day{balance.date, DayKey::of(balance.date, calendar),
            roundedMinutes(balance.workedSeconds - balance.expectedSeconds), false};
    day.settledBefore = !named.empty() && named.contains(identifier(day.key));
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

std::optional<Date> firstDay(ModelContext& context, const TimeBankSettings& settings, const Calendar& calendar) {
  std::optional<Date> earliest;
  context.forEach<WorkEntry>({"startedAt"}, [&](const WorkEntry& entry) {
    const Date at = entry.startedAt();
    if (std::isfinite(at.timeIntervalSinceReferenceDate) && (!earliest || at < *earliest)) earliest = at;
  });
  if (!earliest) return std::nullopt;
  return std::max(calendar.startOfDay(settings.calculationStartDate()), calendar.startOfDay(*earliest));
}

std::optional<Date> lastSettledDay(ModelContext& context, const Calendar& calendar) {
  // Settlements are "manual" bookings; the newest first (a heap, not a
  // sort), so a ledger settled regularly finds its latest one at once.
  std::vector<std::pair<Date, UUID>> manual;
  context.forEach<BalanceAdjustment>({"date", "id", "kindRawValue"}, [&](const BalanceAdjustment& booking) {
    if (booking.kindRawValue() == "manual" && std::isfinite(booking.date().timeIntervalSinceReferenceDate)) {
      manual.emplace_back(booking.date(), booking.id());
    }
  });
  const auto earlier = [](const auto& a, const auto& b) { return a.first < b.first; };
  std::make_heap(manual.begin(), manual.end(), earlier);
  for (auto end = manual.end(); end != manual.begin(); --end) {
    std::pop_heap(manual.begin(), end, earlier);
    const auto& [date, id] = *(end - 1);
    if (isSettlement(id, date, calendar)) return calendar.startOfDay(date);
  }
  return std::nullopt;
}

Unsettled unsettled(ModelContext& context, const TimeBankSettings& settings, Date now,
                    TimeBankCalculator::HolidayDays holidays, const Calendar& calendar) {
  const Date today = calendar.startOfDay(now);
  const std::optional<Date> yesterday = calendar.dateByAddingDays(-1, today);
  if (!yesterday) return {};
  ModelContainer& container = *context.container();
  // Unsaved records are in no recorded count; the generations are read
  // before the rows, so a write in between makes a count stale, never wrong.
  const bool asStored = !context.hasChanges<WorkEntry>() && !context.hasChanges<BalanceAdjustment>() &&
                        !context.hasChanges<WorkSchedule>() && !context.hasChanges<TimeBankSettings>();
  const std::string signature = asStored ? signatureOf(context, holidays.size(), calendar) : std::string();

  // The days before today are over: what they owe changes only with the
  // records, the holidays or the zone, so a count recorded through an
  // earlier day goes on from the day after it.
  Counted counted{signature, *yesterday, {}};
  Date first = settings.calculationStartDate();
  const auto recorded = asStored ? Counted::read(container) : std::nullopt;
  if (recorded && recorded->signature == signature && recorded->lastDay < today) {
    if (!(recorded->lastDay < *yesterday)) return recorded->unsettled;
    counted.unsettled = recorded->unsettled;
    first = calendar.dateByAddingDays(1, recorded->lastDay).value_or(today);
  } else if (const auto settled = lastSettledDay(context, calendar)) {
    // Work was recorded before a settlement, so only a ledger never settled
    // needs the scan for its first work.
    if (const auto next = calendar.dateByAddingDays(1, *settled)) first = std::max(first, *next);
  } else {
    const auto firstWorked = firstDay(context, settings, calendar);
    if (!firstWorked) return {};  // nothing recorded, nothing to settle
    first = *firstWorked;
  }
  for (const Day& day : plan(context, settings, first, *yesterday, holidays, calendar)) {
    if (!day.toSettle()) continue;
    counted.unsettled.minutes += day.minutes;
    if (!counted.unsettled.since) counted.unsettled.since = day.date;
  }
  if (asStored) counted.write(container);
  return counted.unsettled;
}

void keepCurrent(ModelContext& context) {
  ModelContainer* container = context.container().get();  // outlives the context's observers
  context.setSaveObserver<BalanceAdjustment>(
      std::string(cacheKey), [container](const ModelContext::SavedRecords<BalanceAdjustment>& saved) {
        if (!saved.deleted.empty() || saved.inserted != saved.written.size()) return;
        // Settlement identifiers are name-based; any other booking leaves
        // every day's settledness as it was.
        const auto mayBeSettlement = [](const BalanceAdjustment* booking) {
          return (booking->id().bytes[6] & 0xF0) == nameBased;
        };
        if (std::any_of(saved.written.begin(), saved.written.end(), mayBeSettlement)) return;
        auto counted = Counted::read(*container);
        const std::string previous = std::to_string(saved.previousGeneration) + " ";
        if (!counted || !counted->signature.starts_with(previous)) return;
        counted->signature.replace(0, previous.size(), std::to_string(saved.generation) + " ");
        counted->write(*container);
      });
}

}  // namespace quillmont::Settlement
