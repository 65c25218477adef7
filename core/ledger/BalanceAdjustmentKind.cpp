#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont {
namespace {

struct KindInfo {
  std::string_view rawValue;
  std::string_view title;
  std::string_view systemImage;
  AdjustmentCategoryBehavior behavior;
};

constexpr std::array<KindInfo, 8> kinds{{
    {"manual", "Manual adjustment", "plus.forwardslash.minus", AdjustmentCategoryBehavior::manual},
    {"appointment", "Appointment", "calendar.badge.clock", AdjustmentCategoryBehavior::debit},
    {"personalErrands", "Personal errands", "figure.walk", AdjustmentCategoryBehavior::debit},
    {"longLunch", "Long lunch", "fork.knife", AdjustmentCategoryBehavior::debit},
    {"other", "Other", "ellipsis.circle", AdjustmentCategoryBehavior::debit},
    {"holiday", "Public holiday", "calendar.badge.checkmark", AdjustmentCategoryBehavior::credit},
    {"paidLeave", "Paid leave", "sun.max", AdjustmentCategoryBehavior::credit},
    {"sickLeave", "Sick leave", "cross.case", AdjustmentCategoryBehavior::credit},
}};

}  // namespace

std::optional<BalanceAdjustmentKind> BalanceAdjustmentKind::fromRawValue(std::string_view rawValue) {
  for (const BalanceAdjustmentKind kind : allCases()) {
    if (kinds[kind.value()].rawValue == rawValue) return kind;
  }
  return std::nullopt;
}

std::string_view BalanceAdjustmentKind::rawValue() const { return kinds[value_].rawValue; }
std::string_view BalanceAdjustmentKind::title() const { return kinds[value_].title; }
std::string_view BalanceAdjustmentKind::systemImage() const { return kinds[value_].systemImage; }
AdjustmentCategoryBehavior BalanceAdjustmentKind::behavior() const { return kinds[value_].behavior; }

}  // namespace quillmont
