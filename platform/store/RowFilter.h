// RowFilter: which rows of one record type a read needs, as comparisons of
// date attributes with instants: a row passes when every comparison of at
// least one clause holds. The store evaluates it in SQL, so rows that fail
// are never decoded; a context evaluates it in memory on the records it
// holds. Both agree: an absent optional date is null and passes only
// `isNull`; a NaN compares false either way (SQLite keeps NaN as NULL).
// An empty filter passes every row.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/Date.h"

namespace quillmont {

struct RowFilter {
  enum class Op { less, lessOrEqual, greater, greaterOrEqual, isNull };

  struct Comparison {
    std::string_view attribute;
    Op op;
    Date value;  ///< unused by isNull

    /// Whether a stored value passes; nothing is null.
    bool holds(const std::optional<Date>& stored) const {
      if (op == Op::isNull) return !stored;
      if (!stored) return false;
      switch (op) {
        case Op::less: return *stored < value;
        case Op::lessOrEqual: return *stored <= value;
        case Op::greater: return *stored > value;
        case Op::greaterOrEqual: return *stored >= value;
        case Op::isNull: break;
      }
      return false;
    }
  };

  /// Alternatives; each is a conjunction.
  std::vector<std::vector<Comparison>> anyOf;

  /// A filter of one clause.
  static RowFilter allOf(std::vector<Comparison> comparisons) { return RowFilter{{std::move(comparisons)}}; }
  /// This filter or `other`.
  RowFilter orElse(const RowFilter& other) const {
    RowFilter either = *this;
    either.anyOf.insert(either.anyOf.end(), other.anyOf.begin(), other.anyOf.end());
    return either;
  }

  bool empty() const { return anyOf.empty(); }

  /// The SQL condition, with the values as parameters ?1, ?2, ... in clause
  /// order; the values in that order are `parameters()`.
  std::string sql() const;
  std::vector<Date> parameters() const;
};

}  // namespace quillmont
