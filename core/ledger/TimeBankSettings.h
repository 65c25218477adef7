// TimeBankSettings: the user's settings record: where the calculation
// starts, the starting balance, the weekly minutes used where no schedule
// applies, the four quick actions, the offered kinds and own categories, and
// whether set-up was completed. The constructor normalises everything it is
// given; plain setters store what they are given.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "core/ledger/WeeklyMinutesModel.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Attribute.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class TimeBankSettings final : public WeeklyMinutesModel {
 public:
  static constexpr std::string_view entityName = "TimeBankSettings";
  static std::span<const Attribute<TimeBankSettings>> attributes();
  using QuickActionMinutes = std::array<std::int64_t, 4>;

  TimeBankSettings();
  explicit TimeBankSettings(ForLoading) {}
  /// Missing weekday elements count as 480 Monday to Friday and 0 at the
  /// weekend; quick actions, visible kinds and categories are canonicalised.
  TimeBankSettings(UUID id, Date calculationStartDate, std::int64_t startingBalanceMinutes,
                   std::span<const std::int64_t> weekdayMinutes, std::span<const std::int64_t> quickActionMinutes,
                   std::string_view visibleAdjustmentKindsRawValue, std::string_view customAdjustmentCategoriesRawValue,
                   bool hasCompletedOnboarding, Date modifiedAt);

  const UUID& id() const { return id_; }
  Date calculationStartDate() const { return calculationStartDate_; }
  std::int64_t startingBalanceMinutes() const { return startingBalanceMinutes_; }
  const std::string& visibleAdjustmentKindsRawValue() const { return visibleAdjustmentKindsRawValue_; }
  const std::string& customAdjustmentCategoriesRawValue() const { return customAdjustmentCategoriesRawValue_; }
  bool hasCompletedOnboarding() const { return hasCompletedOnboarding_; }
  Date modifiedAt() const { return modifiedAt_; }
  /// The four quick actions in order, as stored.
  QuickActionMinutes quickActionMinutes() const;
  std::int64_t quickActionOneMinutes() const { return quickActionOneMinutes_; }
  std::int64_t quickActionTwoMinutes() const { return quickActionTwoMinutes_; }
  std::int64_t quickActionThreeMinutes() const { return quickActionThreeMinutes_; }
  std::int64_t quickActionFourMinutes() const { return quickActionFourMinutes_; }

  void setId(UUID value) { assign(id_, value); }
  void setCalculationStartDate(Date value) { assign(calculationStartDate_, value); }
  void setStartingBalanceMinutes(std::int64_t value) { assign(startingBalanceMinutes_, value); }
  void setVisibleAdjustmentKindsRawValue(std::string value) { assign(visibleAdjustmentKindsRawValue_, std::move(value)); }
  void setCustomAdjustmentCategoriesRawValue(std::string value) { assign(customAdjustmentCategoriesRawValue_, std::move(value)); }
  void setHasCompletedOnboarding(bool value) { assign(hasCompletedOnboarding_, value); }
  void setModifiedAt(Date value) { assign(modifiedAt_, value); }
  /// Stores QuickActionConfiguration::normalized(minutes).
  void setQuickActionMinutes(std::span<const std::int64_t> minutes);
  void setQuickActionOneMinutes(std::int64_t value) { assign(quickActionOneMinutes_, value); }
  void setQuickActionTwoMinutes(std::int64_t value) { assign(quickActionTwoMinutes_, value); }
  void setQuickActionThreeMinutes(std::int64_t value) { assign(quickActionThreeMinutes_, value); }
  void setQuickActionFourMinutes(std::int64_t value) { assign(quickActionFourMinutes_, value); }

 private:

  UUID id_;
  Date calculationStartDate_;
  std::int64_t startingBalanceMinutes_ = 0;
  std::int64_t quickActionOneMinutes_ = 15;
  std::int64_t quickActionTwoMinutes_ = 30;
  std::int64_t quickActionThreeMinutes_ = 60;
  std::int64_t quickActionFourMinutes_ = 120;
  std::string visibleAdjustmentKindsRawValue_{"appointment,personalErrands,longLunch,other"};
  std::string customAdjustmentCategoriesRawValue_{"[]"};
  bool hasCompletedOnboarding_ = false;
  Date modifiedAt_;
};

}  // namespace quillmont
