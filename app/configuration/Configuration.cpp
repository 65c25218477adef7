#include "app/configuration/Configuration.h"

#include "app/session/StoreSession.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::Configuration {

Settings read(StoreSession& session) {
  const TimeBankSettings& stored = session.settings();
  Settings settings;
  settings.isSetUp = stored.hasCompletedOnboarding();
  settings.calculationStart = stored.calculationStartDate();
  settings.startingBalanceMinutes = stored.startingBalanceMinutes();
  settings.week = stored.weekdayMinutes();
  const auto quick = stored.quickActionMinutes();
  settings.quickActionMinutes.assign(quick.begin(), quick.end());
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::kinds(stored.visibleAdjustmentKindsRawValue())) {
    settings.visibleKinds.emplace_back(kind.title());
  }
  for (const auto& category : CustomAdjustmentCategoryConfiguration::categories(stored.customAdjustmentCategoriesRawValue())) {
    settings.categories.push_back(category.title());
  }
  for (const auto& schedule :
       session.context().fetch<WorkSchedule>({{}, {{&WorkSchedule::effectiveFrom}, {&WorkSchedule::modifiedAt}}})) {
    settings.schedules.push_back({schedule->effectiveFrom(), schedule->weekdayMinutes()});
  }
  return settings;
}

}  // namespace quillmont::Configuration
