// BalanceAdjustmentKind: the eight built-in categories of balance
// adjustments, with their persisted raw values, titles, symbol names and
// behaviours. Raw values match exactly and case-sensitively.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

#include "core/ledger/AdjustmentCategoryBehavior.h"

namespace quillmont {

class BalanceAdjustmentKind {
 public:
  enum Case : std::uint8_t { manual, appointment, personalErrands, longLunch, other, holiday, paidLeave, sickLeave };

  constexpr BalanceAdjustmentKind(Case value) : value_(value) {}  // NOLINT: a kind is its case

  static std::optional<BalanceAdjustmentKind> fromRawValue(std::string_view rawValue);
  static constexpr std::array<BalanceAdjustmentKind, 8> allCases() {
    return {manual, appointment, personalErrands, longLunch, other, holiday, paidLeave, sickLeave};
  }

  constexpr Case value() const { return value_; }
  std::string_view rawValue() const;
  std::string_view title() const;
  std::string_view systemImage() const;
  AdjustmentCategoryBehavior behavior() const;

  friend constexpr bool operator==(BalanceAdjustmentKind, BalanceAdjustmentKind) = default;
  friend constexpr auto operator<=>(BalanceAdjustmentKind, BalanceAdjustmentKind) = default;

 private:
  Case value_;
};

}  // namespace quillmont
