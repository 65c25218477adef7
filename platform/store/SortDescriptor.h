// SortDescriptor: one sort key of a fetch, a record attribute read through
// its getter, with a direction. Identifiers (UUID) sort by their bytes, which
// is the order of their upper-case texts; an absent optional sorts first.
#pragma once

#include <compare>
#include <functional>
#include <optional>

namespace quillmont {

enum class SortOrder { forward, reverse };

template <class Model>
class SortDescriptor {
 public:
  /// Sorts by the value a const getter returns, e.g. `&WorkEntry::startedAt`.
  template <class Value>
  SortDescriptor(Value (Model::*getter)() const, SortOrder order = SortOrder::forward)  // NOLINT: reads as a key path
      : order_(order), compare_([getter](const Model& a, const Model& b) { return threeWay((a.*getter)(), (b.*getter)()); }) {}

  /// Negative, zero or positive as `a` sorts before, with or after `b`.
  int compare(const Model& a, const Model& b) const {
    const int result = compare_(a, b);
    return order_ == SortOrder::forward ? result : -result;
  }

 private:
  template <class T>
  static int threeWay(const T& a, const T& b) {
    const auto ordering = a <=> b;
    return ordering < 0 ? -1 : (ordering > 0 ? 1 : 0);
  }
  template <class T>
  static int threeWay(const std::optional<T>& a, const std::optional<T>& b) {
    if (!a || !b) return (a ? 1 : 0) - (b ? 1 : 0);
    return threeWay(*a, *b);
  }

  SortOrder order_;
  std::function<int(const Model&, const Model&)> compare_;
};

}  // namespace quillmont
