// HolidayImport: the public holidays of an iCalendar file added to the
// store's list, on which nothing is planned (see HolidayBookings). A preview
// says, day by day, what importing would do and changes nothing; importing
// records the preview's holidays. Nothing is booked, so the balance stays.
// Recurring holidays repeat through the end of next year.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/session/StoreSession.h"
#include "core/engine/HolidayBookings.h"

namespace quillmont::HolidayImport {

struct Preview {
  /// One plan per holiday day, in day order (events of one day in the file's order).
  std::vector<HolidayBookings::Plan> plans;
  /// How many days importing adds to the list.
  std::size_t added = 0;
  /// The planned minutes of those days that become 0:00.
  std::int64_t freedMinutes = 0;
};

/// What importing the calendar `text` would do. Throws Refusal when the text
/// holds no calendar events or libical cannot be loaded.
Preview preview(StoreSession& session, const std::string& text);

/// Adds the preview's holidays to the store's list; returns how many were
/// new. Not journaled: undo does not take an import back.
std::int64_t record(StoreSession& session, const Preview& preview);

}  // namespace quillmont::HolidayImport
