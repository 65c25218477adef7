// WorkEntries: worked time typed in by hand: add, edit, delete, list. Times
// are read as typed (WorkTimes places a time without a day); an entry longer
// than 24 hours, or one that overlaps other work, is refused unless `force`
// says it is meant (WorkOverlap decides what overlaps; touching does not);
// those refusals carry the confirmLength or confirmOverlap Remedy.
// Every change is journaled as one action and returns the entry as it now
// stands with its worked time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/engine/WorkOverlap.h"
#include "core/ledger/WorkEntry.h"
#include "platform/foundation/DateInterval.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

class StoreSession;

namespace WorkEntries {

/// An entry longer than this needs `force`.
inline constexpr double maximumUnconfirmedSeconds = 24.0 * 60 * 60;

/// What a person types for an entry; for an edit, an empty start, end or
/// break and an absent note keep the entry's own.
struct Request {
  std::string start;
  std::string end;
  std::string breakTime;
  std::optional<std::string> note;
  bool force = false;
};

/// The entry as a change left it, and its worked time at the session's instant.
struct Changed {
  std::shared_ptr<WorkEntry> entry;
  double workedSeconds = 0;
};

Changed add(StoreSession& session, const Request& request);
/// The entry named by identifier, prefix, "@N" or "last".
Changed edit(StoreSession& session, std::string_view identifier, const Request& request);
/// Deletes the entry named (every copy of its identifier); returns it as it was.
Changed remove(StoreSession& session, std::string_view identifier);

/// The entries that start inside an interval, oldest first, and their worked
/// time taken together (time that several cover counts once).
struct Listing {
  std::vector<std::shared_ptr<WorkEntry>> entries;
  double workedSeconds = 0;
};
Listing list(StoreSession& session, const DateInterval& interval);

/// Refuses work spanning `span` that overlaps other work (other than the
/// entry `except`), naming that work, unless `force`; `what` names the new
/// work in the refusal ("The entry", "The timer from ...").
void refuseOverlaps(StoreSession& session, const WorkOverlap::Span& span, const std::optional<UUID>& except,
                    bool force, const std::string& what);

}  // namespace WorkEntries
}  // namespace quillmont
