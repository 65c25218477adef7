// Settlement: worked time brought into the ledger. The balance is the ledger
// of bookings, and worked time by itself only feeds the reports; settling a
// day books its worked time less its planned time (the day's own bookings
// are in the ledger already) as a "manual" booking dated at the day's noon
// with a note naming the day.
//
// A day is settled at most once in the whole ledger: the booking's
// identifier is derived from the day's key (DayKey), so two machines that
// settle the same day make the same record, and a merge keeps one. A day
// whose difference rounds to 0:00 needs no booking: nothing is owed, so it
// counts as settled for as long as it stays 0:00 (work recorded on it later
// makes it unsettled, and the next settlement books it). A difference
// beyond the 24 hours one booking may hold (a 25-hour day without planned
// time) is split into a second booking of the rest, with an identifier
// derived from the day's key too. A settled day keeps its booking when its
// work changes later; deleting the booking makes it unsettled again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/ModelContext.h"

namespace quillmont::Settlement {

/// The identifier of part `part` (0 first) of the settlement of the day `dayKey`.
UUID identifier(const std::string& dayKey, int part = 0);
/// Whether a booking with identifier `id` dated `date` is (a part of) the
/// settlement of its day. Cheap for every other booking: settlement
/// identifiers are name-based, so a random one is told apart by its version.
bool isSettlement(const UUID& id, Date date, const Calendar& calendar);
/// The note of a settlement booking: "Settlement of YYYY-MM-DD".
std::string note(const std::string& dayKey);
/// The amounts of the bookings that settle a difference of `minutes`: none
/// for 0, else parts of at most 24 hours of the same sign.
std::vector<std::int64_t> parts(std::int64_t minutes);

struct Day {
  Date date;  ///< the start of the day
  std::string key;
  /// Worked less planned time, rounded to whole minutes (half a minute away from 0).
  std::int64_t minutes = 0;
  bool settledBefore = false;

  /// Whether settling books anything for this day.
  bool toSettle() const { return !settledBefore && minutes != 0; }
};

/// Every day from the day of `first` through the day of `last`, not before
/// the calculation start, with its difference and whether it was settled
/// before. Work counts through the end of the last day.
std::vector<Day> plan(ModelContext& context, const TimeBankSettings& settings, Date first, Date last,
                      TimeBankCalculator::HolidayDays holidays, const Calendar& calendar);

/// The first day a settlement covers by default: the later of the
/// calculation start and the day of the earliest recorded work; nothing
/// when no work is recorded. A ledger kept by bookings alone has nothing to
/// settle, and the days before someone began recording work owe nothing.
std::optional<Date> firstDay(ModelContext& context, const TimeBankSettings& settings, const Calendar& calendar);

/// Inserts the bookings that settle the days of `days` to settle, and saves
/// once; returns how many bookings were made. The store's errors pass through.
std::size_t settle(const std::vector<Day>& days, ModelContext& context, Date now);

/// The start of the latest day that has a settlement booking; nothing when
/// no day has one.
std::optional<Date> lastSettledDay(ModelContext& context, const Calendar& calendar);

struct Unsettled {
  std::int64_t minutes = 0;    ///< the sum of the unsettled days' differences
  std::optional<Date> since;   ///< the first unsettled day with a difference
};

/// What settling through yesterday would book, counted from the day after
/// the latest settled day (or from firstDay() when none is), so
/// that a ledger settled regularly reads only its last days. The count is
/// recorded in the store's metadata with the day it reaches and what it
/// depends on (the record types' generations, the number of holiday days,
/// the time zone); while those stay, a later read counts only the days
/// after it, so a ledger never settled is not walked from its start on
/// every read. Failing to record it changes nothing.
Unsettled unsettled(ModelContext& context, const TimeBankSettings& settings, Date now,
                    TimeBankCalculator::HolidayDays holidays, const Calendar& calendar);

/// Carries the recorded count through this context's later saves that only
/// insert bookings, none of them a settlement: a booking enters neither a
/// day's worked nor its planned time, and only a settlement decides which
/// days are settled. Any other write leaves the count behind, and the next
/// read counts again.
void keepCurrent(ModelContext& context);

}  // namespace quillmont::Settlement
