#include "core/sync/SyncMerge.h"

#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/store/ModelContext.h"

namespace quillmont::SyncMerge {
namespace {

/// The latest deletion of each record, by record type and identifier.
using Coverage = std::map<std::pair<std::string, UUID>, Date, std::less<>>;

Coverage coverageOf(const std::vector<DeletionLog::Entry>& deletions) {
  Coverage coverage;
  for (const auto& deletion : deletions) {
    auto [at, inserted] = coverage.try_emplace({deletion.entity, deletion.id}, deletion.deletedAt);
    if (!inserted) at->second = std::max(at->second, deletion.deletedAt);
  }
  return coverage;
}

bool covers(const Coverage& coverage, std::string_view entity, const UUID& id, Date modifiedAt) {
  const auto found = coverage.find(std::pair{std::string(entity), id});
  return found != coverage.end() && modifiedAt <= found->second;
}

template <class Model>
std::int64_t deleteCovered(ModelContext& context, const Coverage& coverage) {
  std::int64_t deleted = 0;
  for (const auto& record : context.fetch<Model>()) {
    if (covers(coverage, Model::entityName, record->id(), record->modifiedAt())) {
      context.deleteRecord(record);
      ++deleted;
    }
  }
  return deleted;
}

template <class Record>
std::int64_t dropCovered(std::vector<Record>& records, std::string_view entity, const Coverage& coverage) {
  const auto kept = std::remove_if(records.begin(), records.end(), [&](const Record& record) {
    return covers(coverage, entity, record.id, record.modifiedAt);
  });
  const auto dropped = static_cast<std::int64_t>(records.end() - kept);
  records.erase(kept, records.end());
  return dropped;
}

// A settings record as the store makes it when it opens for the first time,
// never set up nor changed (its calculation start is the day it was made):
// every machine that joins has one, newer than the settings people chose
// elsewhere, and it must not win over them.
bool isUntouched(const TimeBankSettings& settings) {
  static const TimeBankSettings fresh;
  return !settings.hasCompletedOnboarding() && settings.startingBalanceMinutes() == fresh.startingBalanceMinutes() &&
         settings.weekdayMinutes() == fresh.weekdayMinutes() &&
         settings.quickActionMinutes() == fresh.quickActionMinutes() &&
         settings.visibleAdjustmentKindsRawValue() == fresh.visibleAdjustmentKindsRawValue() &&
         settings.customAdjustmentCategoriesRawValue() == fresh.customAdjustmentCategoriesRawValue();
}

bool isUntouched(const TimeBankArchive::SettingsRecord& r) {
  const std::span<const std::int64_t> quickActions =
      r.quickActionMinutes ? std::span<const std::int64_t>(*r.quickActionMinutes)
                           : std::span<const std::int64_t>(QuickActionConfiguration::defaultMinutes);
  return isUntouched(TimeBankSettings(
      r.id, r.calculationStartDate, r.startingBalanceMinutes, r.weekdayMinutes, quickActions,
      r.visibleAdjustmentKindsRawValue.value_or(std::string(AdjustmentKindConfiguration::defaultRawValue)),
      r.customAdjustmentCategoriesRawValue.value_or(std::string(CustomAdjustmentCategoryConfiguration::defaultRawValue)),
      r.hasCompletedOnboarding, r.modifiedAt));
}

// Untouched settings give way: an archive's untouched record stays out of a
// store that has settings, and a chosen record from elsewhere replaces the
// store's untouched ones. Returns the archive records left out.
std::int64_t settleUntouchedSettings(ModelContext& context, TimeBankArchive& archive) {
  const auto stored = context.fetch<TimeBankSettings>();
  std::int64_t skipped = 0;
  if (!stored.empty()) {
    const auto kept = std::remove_if(archive.settings.begin(), archive.settings.end(),
                                     [](const auto& record) { return isUntouched(record); });
    skipped = static_cast<std::int64_t>(archive.settings.end() - kept);
    archive.settings.erase(kept, archive.settings.end());
  }
  if (!archive.settings.empty()) {
    for (const auto& settings : stored) {
      if (isUntouched(*settings)) context.deleteRecord(settings);
    }
  }
  return skipped;
}

std::int64_t removeCovered(ModelContext& context, const Coverage& coverage) {
  if (coverage.empty()) return 0;
  const std::int64_t deleted = deleteCovered<WorkEntry>(context, coverage) +
                               deleteCovered<BalanceAdjustment>(context, coverage) +
                               deleteCovered<WorkSchedule>(context, coverage) +
                               deleteCovered<TimeBankSettings>(context, coverage);
  context.save();
  return deleted;
}

}  // namespace

std::int64_t applyDeletions(ModelContext& context) {
  return removeCovered(context, coverageOf(context.container()->deletions()));
}

Result merge(ModelContext& context, TimeBankArchive archive, const std::vector<DeletionLog::Entry>& deletions,
             Date now) {
  archive.validate();
  Result result;
  const Date forgetBefore = now.addingTimeInterval(-86400.0 * static_cast<double>(deletionRetentionDays));
  result.deletionsLearnt = context.container()->absorbDeletions(deletions, forgetBefore);
  const Coverage coverage = coverageOf(context.container()->deletions());
  // Stored records first: the merge's repairs must not weigh a record that
  // is about to go (a deleted running entry would outrank a live one).
  result.recordsDeleted = removeCovered(context, coverage);

  result.recordsSkipped = dropCovered(archive.workEntries, WorkEntry::entityName, coverage) +
                          dropCovered(archive.balanceAdjustments, BalanceAdjustment::entityName, coverage) +
                          dropCovered(archive.schedules, WorkSchedule::entityName, coverage) +
                          dropCovered(archive.settings, TimeBankSettings::entityName, coverage);
  result.recordsSkipped += settleUntouchedSettings(context, archive);
  result.merged = archive.merge(context, now, TimeBankArchive::RunningEntries::keepRunning);
  return result;
}

}  // namespace quillmont::SyncMerge
