#include "core/sync/SyncJoin.h"

#include <algorithm>
#include <span>
#include <tuple>

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "platform/store/ModelContext.h"

namespace quillmont::SyncJoin {
namespace {

std::int64_t clampedBalance(std::int64_t minutes) {
  return std::clamp<std::int64_t>(minutes, -DataStoreMaintenance::maximumBalanceMinutes,
                                  DataStoreMaintenance::maximumBalanceMinutes);
}

}  // namespace

std::optional<Conflict> conflict(ModelContext& context, const TimeBankSettings& own, const std::vector<Ledger>& folder,
                                 const Calendar& calendar, Date now) {
  if (!own.hasCompletedOnboarding()) return std::nullopt;
  const Ledger* chosenLedger = nullptr;
  const TimeBankArchive::SettingsRecord* chosen = nullptr;
  for (const Ledger& ledger : folder) {
    for (const auto& settings : ledger.archive.settings) {
      if (settings.id == own.id()) return std::nullopt;  // these ledgers met before
      if (!settings.hasCompletedOnboarding) continue;
      if (!chosen || std::tie(settings.modifiedAt, settings.id) > std::tie(chosen->modifiedAt, chosen->id)) {
        chosen = &settings;
        chosenLedger = &ledger;
      }
    }
  }
  if (!chosen) return std::nullopt;

  Side here{own.calculationStartDate(), own.startingBalanceMinutes(), own.weekdayMinutes(), 0};
  here.balanceSeconds = TimeBankCalculator::ledgerBalanceSeconds(context.fetch<BalanceAdjustment>(),
                                                                 own.startingBalanceMinutes(), now);
  Side there{chosen->calculationStartDate, clampedBalance(chosen->startingBalanceMinutes),
             normalizedWeekdayMinutes(chosen->weekdayMinutes, WeekdayMinutes{}), 0};
  there.balanceSeconds = 60.0 * static_cast<double>(there.startingBalanceMinutes);
  for (const auto& adjustment : chosenLedger->archive.balanceAdjustments) {
    there.balanceSeconds += TimeBankCalculator::ledgerSecondsOf(adjustment.date, adjustment.minutes, now);
  }
  const bool same = calendar.isDate(here.calculationStartDate, there.calculationStartDate) &&
                    here.startingBalanceMinutes == there.startingBalanceMinutes &&
                    here.weekdayMinutes == there.weekdayMinutes;
  if (same) return std::nullopt;
  return Conflict{here, there, chosenLedger->deviceName, *chosen};
}

void keepOwn(TimeBankSettings& own, Date now) { own.setModifiedAt(now); }

void adoptFolder(TimeBankSettings& own, const TimeBankArchive::SettingsRecord& folder, Date now) {
  own.setCalculationStartDate(folder.calculationStartDate);
  own.setStartingBalanceMinutes(clampedBalance(folder.startingBalanceMinutes));
  own.setWeekdayMinutes(folder.weekdayMinutes);
  own.setQuickActionMinutes(folder.quickActionMinutes ? std::span<const std::int64_t>(*folder.quickActionMinutes)
                                                      : std::span<const std::int64_t>(QuickActionConfiguration::defaultMinutes));
  own.setVisibleAdjustmentKindsRawValue(
      folder.visibleAdjustmentKindsRawValue.value_or(std::string(AdjustmentKindConfiguration::defaultRawValue)));
  own.setCustomAdjustmentCategoriesRawValue(folder.customAdjustmentCategoriesRawValue.value_or(
      std::string(CustomAdjustmentCategoryConfiguration::defaultRawValue)));
  own.setHasCompletedOnboarding(true);
  own.setModifiedAt(now);
}

}  // namespace quillmont::SyncJoin
