// HolidayBookings: public holidays booked into the ledger. A holiday on a
// working day is a "holiday" credit of that day's planned minutes, dated at
// the holiday's noon, so the day's planned time and the credit cancel in the
// reports and the balance keeps what the person did not have to work. Each
// booking's identifier is derived from the calendar event's UID and the day,
// so the same holiday booked twice (the same file imported again, on this
// machine or another) is the same record and is booked once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/ModelContext.h"

namespace quillmont::HolidayBookings {

struct Holiday {
  std::string uid;
  std::string name;
  std::string day;  ///< "YYYY-MM-DD": with the UID, what identifies the booking
  Date noon;        ///< the instant the booking is dated at
};

enum class Outcome { booked, alreadyBooked, notAWorkingDay, beforeCalculationStart };

struct Plan {
  Holiday holiday;
  Outcome outcome = Outcome::booked;
  std::int64_t minutes = 0;  ///< the day's planned minutes (0 when not a working day)
  UUID id;
};

/// The booking's identifier for the holiday `uid` on `day`.
UUID identifier(const std::string& uid, const std::string& day);

/// What booking `holidays` would do, in their order; a day listed twice
/// (two events, or an event twice) is booked once.
std::vector<Plan> plan(const std::vector<Holiday>& holidays, ModelContext& context, const TimeBankSettings& settings,
                       const Calendar& calendar);

/// Inserts the bookings of the plans whose outcome is `booked` and saves;
/// returns how many. The store's errors pass through.
std::size_t book(const std::vector<Plan>& plans, ModelContext& context, Date now);

}  // namespace quillmont::HolidayBookings
