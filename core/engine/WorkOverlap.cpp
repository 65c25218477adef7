#include "core/engine/WorkOverlap.h"

#include <algorithm>

namespace quillmont::WorkOverlap {

Span span(Date start, std::optional<Date> end, Date now) {
  const Date last = end.value_or(now);
  return {start, std::max(start, last)};
}

Span span(const WorkEntry& entry, Date now) { return span(entry.startedAt(), entry.endedAt(), now); }

bool overlaps(const Span& a, const Span& b) { return a.start < b.end && b.start < a.end; }

RowFilter candidates(const Span& span) {
  using Op = RowFilter::Op;
  return RowFilter::allOf({{"startedAt", Op::less, span.end}, {"endedAt", Op::greater, span.start}})
      .orElse(RowFilter::allOf({{"endedAt", Op::isNull, {}}}));
}

std::vector<std::shared_ptr<WorkEntry>> overlapping(ModelContext& context, const Span& candidate, Date now,
                                                    const std::optional<UUID>& except) {
  std::vector<std::shared_ptr<WorkEntry>> found;
  for (auto& entry :
       context.fetch<WorkEntry>(candidates(candidate), {{}, {{&WorkEntry::startedAt}, {&WorkEntry::id}}})) {
    if (except && entry->id() == *except) continue;
    if (overlaps(span(*entry, now), candidate)) found.push_back(std::move(entry));
  }
  return found;
}

}  // namespace quillmont::WorkOverlap
