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
#include "core/ledger/RecordTimestampValidation.h"
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
  return deleteCovered<WorkEntry>(context, coverage) + deleteCovered<BalanceAdjustment>(context, coverage) +
         deleteCovered<WorkSchedule>(context, coverage) + deleteCovered<TimeBankSettings>(context, coverage);
}

struct TimerSeen {
  UUID id;
  Date startedAt;
  std::string note;
  bool ranHere = false;
};

// The timers that may run after the merge: those running here and those
// running in the archive, each unless its other copy, newer, has ended.
std::vector<TimerSeen> timersBefore(ModelContext& context, const TimeBankArchive& archive) {
  std::vector<TimerSeen> timers;
  std::map<UUID, std::shared_ptr<WorkEntry>> stored;
  for (const auto& entry : context.fetch<WorkEntry>()) {
    stored.emplace(entry->id(), entry);
    if (entry->isRunning()) timers.push_back({entry->id(), entry->startedAt(), entry->note(), true});
  }
  for (const auto& record : archive.workEntries) {
    if (record.endedAt) continue;
    if (stored.contains(record.id)) continue;  // the same timer, or one ended here
    timers.push_back({record.id, record.startedAt, record.note, false});
  }
  return timers;
}

// Which of `before` the timer's repair removed, and which one runs on; a
// note of a removed timer goes to the running one when that has none.
void noteEndedTimers(ModelContext& context, const std::vector<TimerSeen>& before, Date now, Result& result) {
  if (before.size() < 2) return;
  std::map<UUID, std::shared_ptr<WorkEntry>> after;
  std::shared_ptr<WorkEntry> running;
  for (const auto& entry : context.fetch<WorkEntry>()) {
    after.emplace(entry->id(), entry);
    if (entry->isRunning()) running = entry;
  }
  if (!running) return;
  for (const auto& timer : before) {
    if (after.contains(timer.id)) continue;
    result.endedTimers.push_back({timer.startedAt, timer.note, timer.ranHere});
  }
  if (result.endedTimers.empty()) return;
  const auto kept = std::find_if(before.begin(), before.end(), [&](const auto& timer) { return timer.id == running->id(); });
  result.keptTimer = RunningTimer{running->startedAt(), kept != before.end() && kept->ranHere};
  if (running->note().empty()) {
    for (const auto& ended : result.endedTimers) {
      if (ended.note.empty()) continue;
      running->setNote(ended.note);
      running->setModifiedAt(now);  // so the note travels too
      result.noteMoved = true;
      break;
    }
  }
}

}  // namespace

std::int64_t applyDeletions(ModelContext& context) {
  const std::int64_t deleted = removeCovered(context, coverageOf(context.container()->deletions()));
  context.save();
  return deleted;
}

Result merge(ModelContext& context, TimeBankArchive archive, const std::vector<DeletionLog::Entry>& deletions,
             Date now, bool saveChanges) {
  archive.validate();
  Result result;
  const Date forgetBefore = now.addingTimeInterval(-86400.0 * static_cast<double>(deletionRetentionDays));
  // A deletion dated ahead would win over every change until then.
  std::vector<DeletionLog::Entry> incoming;
  incoming.reserve(deletions.size());
  for (auto deletion : deletions) {
    deletion.deletedAt = RecordTimestampValidation::normalizedModifiedAt(deletion.deletedAt, now);
    if (deletion.deletedAt >= forgetBefore) incoming.push_back(std::move(deletion));
  }
  std::vector<DeletionLog::Entry> known = context.container()->deletions();
  known.insert(known.end(), context.pendingDeletions().begin(), context.pendingDeletions().end());
  const Coverage before = coverageOf(known);
  for (const auto& deletion : incoming) {
    const auto found = before.find(std::pair{deletion.entity, deletion.id});
    if (found == before.end() || found->second < deletion.deletedAt) ++result.deletionsLearnt;
  }
  context.absorbDeletions(incoming, forgetBefore);
  known.insert(known.end(), incoming.begin(), incoming.end());
  std::erase_if(known, [&](const DeletionLog::Entry& deletion) { return deletion.deletedAt < forgetBefore; });
  const Coverage coverage = coverageOf(known);
  // Stored records first: the merge's repairs must not weigh a record that
  // is about to go (a deleted running entry would outrank a live one).
  result.recordsDeleted = removeCovered(context, coverage);

  result.recordsSkipped = dropCovered(archive.workEntries, WorkEntry::entityName, coverage) +
                          dropCovered(archive.balanceAdjustments, BalanceAdjustment::entityName, coverage) +
                          dropCovered(archive.schedules, WorkSchedule::entityName, coverage) +
                          dropCovered(archive.settings, TimeBankSettings::entityName, coverage);
  result.recordsSkipped += settleUntouchedSettings(context, archive);
  const std::vector<TimerSeen> timers = timersBefore(context, archive);
  result.merged = archive.merge(context, now, TimeBankArchive::RunningEntries::keepRunning, false);
  noteEndedTimers(context, timers, now, result);
  if (saveChanges) context.save();
  return result;
}

}  // namespace quillmont::SyncMerge
