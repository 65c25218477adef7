// WorkOverlap: whether work being typed in, edited or started would cover
// time that other work already covers. Overlapping entries are allowed (the
// balance engine counts such time once), but one that overlaps by accident is
// a slip the person should hear about before it is stored; hosts ask here
// and decide what to do with the answer.
//
// An entry spans from its start to its end; a running entry up to the
// instant it is looked at, `now` (and never less than its start). Two spans
// overlap when each starts before the other ends: work that ends when the
// next begins does not overlap it, and a timer started just now (a span of
// no length) overlaps the work whose span it lies strictly inside.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "core/ledger/WorkEntry.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/ModelContext.h"
#include "platform/store/RowFilter.h"

namespace quillmont::WorkOverlap {

struct Span {
  Date start;
  Date end;

  friend bool operator==(const Span&, const Span&) = default;
};

/// The span of work from `start` to `end`, or running (no end) at `now`.
Span span(Date start, std::optional<Date> end, Date now);
/// The span of an entry at `now`.
Span span(const WorkEntry& entry, Date now);
/// Whether the two spans overlap.
bool overlaps(const Span& a, const Span& b);

/// The rows of work entries that may overlap `span`: the running ones and
/// the finished ones that start before it ends and end after it starts.
RowFilter candidates(const Span& span);

/// The entries of `context` whose span at `now` overlaps `span`, leaving out
/// those with the identifier `except` (the entry being changed, and any
/// copies of it), in ascending order of start, then identifier.
std::vector<std::shared_ptr<WorkEntry>> overlapping(ModelContext& context, const Span& span, Date now,
                                                    const std::optional<UUID>& except);

}  // namespace quillmont::WorkOverlap
