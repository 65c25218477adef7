// History: what happened in the ledger and the work log, newest first: each
// booking (with the ledger balance right after it, bookings in order of
// date then identifier) and each work entry (with the time it counts). The
// ledger's start marker, which books nothing, is left out. Reads two tables
// once; the rows are plain values a list can hold by the thousand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

class StoreSession;

namespace History {

struct Row {
  enum class Kind { booking, work };
  Kind kind = Kind::booking;
  UUID id;
  /// A booking's date, or when the work started.
  Date date;
  /// When work ended; nothing while it runs (and for bookings).
  std::optional<Date> endedAt;
  /// A booking's amount; the seconds a work entry counts (up to now while it runs).
  double seconds = 0;
  std::int64_t breakMinutes = 0;
  /// A booking's category title; empty for work.
  std::string category;
  std::string note;
  /// The ledger balance right after a booking; nothing for work.
  std::optional<double> balanceAfterSeconds;
};

/// Every booking and work entry, newest first (by date, then identifier).
std::vector<Row> read(StoreSession& session);

}  // namespace History
}  // namespace quillmont
