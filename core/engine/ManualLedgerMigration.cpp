#include "core/engine/ManualLedgerMigration.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/RecordChoice.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"

namespace quillmont::ManualLedgerMigration {
namespace {

constexpr std::int64_t balanceLimit = DataStoreMaintenance::maximumBalanceMinutes;

std::int64_t clampedBalance(double minutes) {
  if (std::isnan(minutes)) return 0;
  return static_cast<std::int64_t>(std::clamp(minutes, static_cast<double>(-balanceLimit), static_cast<double>(balanceLimit)));
}

std::vector<std::shared_ptr<BalanceAdjustment>> markers(ModelContext& context) {
  return context.fetch<BalanceAdjustment>({[](const BalanceAdjustment& adjustment) { return isCarryover(adjustment); }, {}});
}

void insertMarker(ModelContext& context, Date now) {
  context.insert(std::make_shared<BalanceAdjustment>(adjustmentID(), now, 0, "", BalanceAdjustmentKind::manual, now, now));
}

}  // namespace

const UUID& adjustmentID() { return AppConstants::manualLedgerMigrationAdjustmentID(); }

bool isCarryover(const BalanceAdjustment& adjustment) { return adjustment.id() == adjustmentID(); }

bool beginLedger(ModelContext& context, Date now, bool saveChanges) {
  if (!markers(context).empty()) return false;
  insertMarker(context, now);
  if (saveChanges) context.save();
  return true;
}

bool reconcile(ModelContext& context, TimeBankSettings& settings, const Calendar& calendar, Date now, bool saveChanges) {
  const auto found = markers(context);
  if (!found.empty()) {
    const auto kept = RecordChoice::greatest(found, [](const BalanceAdjustment& marker) {
      return std::tuple(marker.modifiedAt(), marker.createdAt(), marker.id());
    });
    for (const auto& marker : found) {
      if (marker != kept) context.deleteRecord(marker);
    }
    const bool duplicates = found.size() > 1;
    if (saveChanges && duplicates) context.save();
    return duplicates;
  }
  if (!settings.hasCompletedOnboarding()) return false;

  const auto entries = context.fetch<WorkEntry>();
  for (const auto& entry : entries) {
    if (!entry->isRunning()) continue;
    entry->setEndedAt(std::max(entry->startedAt(), now));
    entry->setModifiedAt(now);
  }
  const auto schedules = context.fetch<WorkSchedule>();
  const auto days = TimeBankCalculator::dayBalances(entries, {}, schedules, settings, now, calendar);
  double earnedSeconds = 0;
  for (const DayBalance& day : days) {
    earnedSeconds += day.workedSeconds;
    earnedSeconds -= day.expectedSeconds;
  }
  const std::int64_t earnedMinutes = clampedBalance(std::trunc(earnedSeconds / 60.0));
  const double startingBalance = static_cast<double>(settings.startingBalanceMinutes());
  settings.setStartingBalanceMinutes(clampedBalance(startingBalance + static_cast<double>(earnedMinutes)));
  settings.setModifiedAt(now);
  insertMarker(context, now);
  if (saveChanges) context.save();
  return true;
}

}  // namespace quillmont::ManualLedgerMigration
