#include "core/ledger/AdjustmentCategoryValidation.h"

#include <algorithm>

#include "core/ledger/AdjustmentCategoryOption.h"
#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont::AdjustmentCategoryValidation {

std::string normalizedRawValue(std::string_view rawValue) {
  if (const auto option = AdjustmentCategoryOption::resolve(rawValue)) return option->rawValue;
  return std::string(BalanceAdjustmentKind(BalanceAdjustmentKind::manual).rawValue());
}

AdjustmentCategoryBehavior behavior(std::string_view rawValue) {
  if (const auto option = AdjustmentCategoryOption::resolve(rawValue)) return option->behavior;
  return AdjustmentCategoryBehavior::manual;
}

std::int64_t normalizedMinutes(std::int64_t minutes, AdjustmentCategoryBehavior behavior) {
  switch (behavior) {
    case AdjustmentCategoryBehavior::credit:
      return std::clamp<std::int64_t>(minutes, 0, maximumCreditOrDebitMinutes);
    case AdjustmentCategoryBehavior::debit:
      return std::clamp<std::int64_t>(minutes, -maximumCreditOrDebitMinutes, 0);
    case AdjustmentCategoryBehavior::manual:
      break;
  }
  return std::clamp<std::int64_t>(minutes, -maximumManualMinutes, maximumManualMinutes);
}

std::int64_t normalizedMinutes(std::int64_t minutes, std::string_view rawValue) {
  return normalizedMinutes(minutes, behavior(rawValue));
}

}  // namespace quillmont::AdjustmentCategoryValidation
