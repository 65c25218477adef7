// AdjustmentCategoryOption: what the interface shows for a category text,
// built-in or custom: its canonical raw value, title, symbol and behaviour.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/ledger/AdjustmentCategoryBehavior.h"
#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont {

struct AdjustmentCategoryOption {
  std::string rawValue;
  std::string title;
  std::string systemImage;
  AdjustmentCategoryBehavior behavior = AdjustmentCategoryBehavior::manual;

  const std::string& id() const { return rawValue; }

  static AdjustmentCategoryOption builtIn(BalanceAdjustmentKind kind);
  /// The option of a built-in raw value or of a valid custom raw value (in
  /// its canonical form, symbol "tag", behaviour debit); nothing otherwise.
  static std::optional<AdjustmentCategoryOption> resolve(std::string_view rawValue);

  friend bool operator==(const AdjustmentCategoryOption&, const AdjustmentCategoryOption&) = default;
};

}  // namespace quillmont
