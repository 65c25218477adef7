// FetchDescriptor: what a fetch returns: every record of one type, an
// optional filter, and sort keys applied in order. Without sort keys the
// order is the store's own (saved records by row, then pending inserts in
// insertion order).
#pragma once

#include <functional>
#include <vector>

#include "platform/store/SortDescriptor.h"

namespace quillmont {

template <class Model>
struct FetchDescriptor {
  /// Keeps a record when it returns true; empty keeps all.
  std::function<bool(const Model&)> predicate;
  std::vector<SortDescriptor<Model>> sortBy;
};

}  // namespace quillmont
