#include "platform/store/RowFilter.h"

#include "platform/store/SQLiteDatabase.h"

namespace quillmont {

std::string RowFilter::sql() const {
  static constexpr const char* operators[] = {" < ", " <= ", " > ", " >= "};
  std::string text;
  int parameter = 0;
  for (const auto& clause : anyOf) {
    text += text.empty() ? "(" : " OR (";
    bool first = true;
    for (const Comparison& comparison : clause) {
      if (!first) text += " AND ";
      first = false;
      text += SQLiteDatabase::quoted(comparison.attribute);
      if (comparison.op == Op::isNull) {
        text += " IS NULL";
      } else {
        text += operators[static_cast<int>(comparison.op)];
        text += '?' + std::to_string(++parameter);
      }
    }
    // A clause without comparisons passes every row.
    text += first ? "1)" : ")";
  }
  return text;
}

std::vector<Date> RowFilter::parameters() const {
  std::vector<Date> values;
  for (const auto& clause : anyOf) {
    for (const Comparison& comparison : clause) {
      if (comparison.op != Op::isNull) values.push_back(comparison.value);
    }
  }
  return values;
}

}  // namespace quillmont
