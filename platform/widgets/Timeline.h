// Timeline: the entries a provider hands its host (each shown from its date
// on) and when to ask again. `nextReload` turns the policy into the instant
// a host arms its timer for.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/widgets/TimelineReloadPolicy.h"

namespace quillmont {

template <class Entry>
struct Timeline {
  std::vector<Entry> entries;
  TimelineReloadPolicy policy = TimelineReloadPolicy::atEnd();

  /// The instant to reload at: the policy's date, the last entry's date for
  /// `atEnd`, nothing for `never` (or an empty `atEnd` timeline).
  std::optional<Date> nextReload() const {
    switch (policy.kind()) {
      case TimelineReloadPolicy::Kind::after:
        return policy.date();
      case TimelineReloadPolicy::Kind::atEnd:
        if (entries.empty()) return std::nullopt;
        return entries.back().date;
      case TimelineReloadPolicy::Kind::never:
        break;
    }
    return std::nullopt;
  }
};

}  // namespace quillmont
