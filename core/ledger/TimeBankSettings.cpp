#include "core/ledger/TimeBankSettings.h"

#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/QuickActionConfiguration.h"

namespace quillmont {

std::span<const Attribute<TimeBankSettings>> TimeBankSettings::attributes() {
  using S = TimeBankSettings;
  static const std::array<Attribute<S>, 18> list{{
      {"id", &S::id_},
      {"calculationStartDate", &S::calculationStartDate_},
      {"startingBalanceMinutes", &S::startingBalanceMinutes_},
      {"mondayMinutes", &S::mondayMinutes_},
      {"tuesdayMinutes", &S::tuesdayMinutes_},
      {"wednesdayMinutes", &S::wednesdayMinutes_},
      {"thursdayMinutes", &S::thursdayMinutes_},
      {"fridayMinutes", &S::fridayMinutes_},
      {"saturdayMinutes", &S::saturdayMinutes_},
      {"sundayMinutes", &S::sundayMinutes_},
      {"quickActionOneMinutes", &S::quickActionOneMinutes_},
      {"quickActionTwoMinutes", &S::quickActionTwoMinutes_},
      {"quickActionThreeMinutes", &S::quickActionThreeMinutes_},
      {"quickActionFourMinutes", &S::quickActionFourMinutes_},
      {"visibleAdjustmentKindsRawValue", &S::visibleAdjustmentKindsRawValue_},
      {"customAdjustmentCategoriesRawValue", &S::customAdjustmentCategoriesRawValue_},
      {"hasCompletedOnboarding", &S::hasCompletedOnboarding_},
      {"modifiedAt", &S::modifiedAt_},
  }};
  return list;
}

TimeBankSettings::TimeBankSettings() : id_(UUID::random()), calculationStartDate_(Date::now()), modifiedAt_(calculationStartDate_) {}

TimeBankSettings::TimeBankSettings(UUID id, Date calculationStartDate, std::int64_t startingBalanceMinutes,
                                   std::span<const std::int64_t> weekdayMinutes,
                                   std::span<const std::int64_t> quickActionMinutes,
                                   std::string_view visibleAdjustmentKindsRawValue,
                                   std::string_view customAdjustmentCategoriesRawValue, bool hasCompletedOnboarding,
                                   Date modifiedAt)
    : id_(id),
      calculationStartDate_(calculationStartDate),
      startingBalanceMinutes_(startingBalanceMinutes),
      visibleAdjustmentKindsRawValue_(
          AdjustmentKindConfiguration::rawValue(AdjustmentKindConfiguration::kinds(visibleAdjustmentKindsRawValue))),
      customAdjustmentCategoriesRawValue_(CustomAdjustmentCategoryConfiguration::rawValue(
          CustomAdjustmentCategoryConfiguration::categories(customAdjustmentCategoriesRawValue))),
      hasCompletedOnboarding_(hasCompletedOnboarding),
      modifiedAt_(modifiedAt) {
  assignWeekdays(normalizedWeekdayMinutes(weekdayMinutes, defaultWeekdayMinutes));
  setQuickActionMinutes(quickActionMinutes);
}

TimeBankSettings::QuickActionMinutes TimeBankSettings::quickActionMinutes() const {
  return {quickActionOneMinutes_, quickActionTwoMinutes_, quickActionThreeMinutes_, quickActionFourMinutes_};
}

void TimeBankSettings::setQuickActionMinutes(std::span<const std::int64_t> minutes) {
  const auto values = QuickActionConfiguration::normalized(minutes);
  quickActionOneMinutes_ = values[0];
  quickActionTwoMinutes_ = values[1];
  quickActionThreeMinutes_ = values[2];
  quickActionFourMinutes_ = values[3];
  didChange();
}

}  // namespace quillmont
