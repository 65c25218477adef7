#include "core/ledger/AdjustmentCategoryOption.h"

#include "core/ledger/CustomAdjustmentCategory.h"

namespace quillmont {

AdjustmentCategoryOption AdjustmentCategoryOption::builtIn(BalanceAdjustmentKind kind) {
  return {std::string(kind.rawValue()), std::string(kind.title()), std::string(kind.systemImage()), kind.behavior()};
}

std::optional<AdjustmentCategoryOption> AdjustmentCategoryOption::resolve(std::string_view rawValue) {
  if (const auto kind = BalanceAdjustmentKind::fromRawValue(rawValue)) return builtIn(*kind);
  if (const auto custom = CustomAdjustmentCategory::fromRawValue(rawValue)) {
    return AdjustmentCategoryOption{custom->rawValue(), custom->title(), "tag", AdjustmentCategoryBehavior::debit};
  }
  return std::nullopt;
}

}  // namespace quillmont
