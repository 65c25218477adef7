// HolidayBookings: how the public holidays of a calendar file enter the
// ledger. A public holiday is kept in the store's list of holidays
// (HolidayList, read back through PublicHolidays), and on it nothing is
// expected: the day's planned time is 0:00. Nothing is booked, so importing
// holidays leaves the balance as it was; nobody owed or worked anything.
//
// Earlier versions booked a holiday on a working day as a "holiday" credit of
// the day's planned minutes, with an identifier derived from the calendar
// event's UID and the day. Such a booking is left as it is, and its day is
// not added to the list: the day keeps its planned time, which the credit
// meets, so nothing counts twice.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/HolidayList.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/ModelContext.h"

namespace quillmont::HolidayBookings {

struct Holiday {
  std::string uid;
  std::string name;
  std::string day;  ///< "YYYY-MM-DD" (see DayKey): with the UID, what identifies the holiday
  Date noon;        ///< an instant inside the day
};

enum class Outcome {
  plannedTimeFreed,        ///< added: the day had planned time, now 0:00
  notAWorkingDay,          ///< added: nothing was planned on the day anyway
  beforeCalculationStart,  ///< added: the day lies before the calculation start
  knownBefore,             ///< the day was in the list already
  bookedBefore,            ///< an earlier version booked it as a credit; left as it is
};

struct Plan {
  Holiday holiday;
  Outcome outcome = Outcome::plannedTimeFreed;
  std::int64_t minutes = 0;  ///< the day's planned minutes by the schedules alone
  UUID id;                   ///< the identifier an earlier version's booking of it has

  /// Whether importing adds the day to the list of holidays.
  bool adds() const {
    return outcome == Outcome::plannedTimeFreed || outcome == Outcome::notAWorkingDay ||
           outcome == Outcome::beforeCalculationStart;
  }
};

/// The identifier an earlier version gave its booking of the holiday `uid` on `day`.
UUID identifier(const std::string& uid, const std::string& day);

/// What importing `holidays` would do, in their order, given the holidays
/// kept already; a day listed twice (two events, or an event twice) counts once.
std::vector<Plan> plan(const std::vector<Holiday>& holidays, const std::vector<HolidayList::Entry>& known,
                       ModelContext& context, const TimeBankSettings& settings, const Calendar& calendar);

/// Adds the holidays of the plans that add one to the store's list;
/// returns how many were new. The store's errors pass through.
std::int64_t record(const std::vector<Plan>& plans, ModelContainer& container);

}  // namespace quillmont::HolidayBookings
