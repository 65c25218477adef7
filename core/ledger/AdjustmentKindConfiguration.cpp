#include "core/ledger/AdjustmentKindConfiguration.h"

#include "core/ledger/AdjustmentCategoryBehavior.h"

namespace quillmont::AdjustmentKindConfiguration {

std::string rawValue(const KindSet& kinds) {
  std::string result;
  for (const BalanceAdjustmentKind kind : configurableKinds) {
    if (!kinds.contains(kind)) continue;
    if (!result.empty()) result += ',';
    result += kind.rawValue();
  }
  return result;
}

KindSet kinds(std::string_view rawValue) {
  KindSet found;
  bool namesCreditKind = false;
  while (!rawValue.empty()) {
    const std::size_t comma = rawValue.find(',');
    const std::string_view piece = rawValue.substr(0, comma);
    rawValue = comma == std::string_view::npos ? std::string_view() : rawValue.substr(comma + 1);
    const auto kind = BalanceAdjustmentKind::fromRawValue(piece);
    if (!kind || *kind == BalanceAdjustmentKind::manual) continue;
    if (kind->behavior() == AdjustmentCategoryBehavior::credit) {
      namesCreditKind = true;
    } else {
      found.insert(*kind);
    }
  }
  if (namesCreditKind) return KindSet(configurableKinds.begin(), configurableKinds.end());
  return found;
}

}  // namespace quillmont::AdjustmentKindConfiguration
