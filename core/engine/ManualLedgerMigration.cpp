#include "core/engine/ManualLedgerMigration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/RecordChoice.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/AppConstants.h"
#include "platform/store/StoreError.h"

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

namespace {

/// How many ledger start markers the store holds, read without loading every booking.
std::size_t markerCount(ModelContext& context) {
  std::size_t count = 0;
  context.forEach<BalanceAdjustment>({"id"}, [&](const BalanceAdjustment& adjustment) { count += isCarryover(adjustment); });
  return count;
}

// The generation of the bookings at which they held exactly one marker,
// kept in the store: while the bookings are unchanged there is nothing to
// look for. Saves of this context that neither write nor delete a marker
// carry it to their new generation, in their own transaction.
constexpr std::string_view singleMarkerKey = "ledger.singleMarkerGeneration";

std::optional<std::int64_t> singleMarkerGeneration(ModelContainer& container) {
  const auto text = container.metadata(singleMarkerKey);
  std::int64_t generation = 0;
  if (!text || std::from_chars(text->data(), text->data() + text->size(), generation).ec != std::errc{}) {
    return std::nullopt;
  }
  return generation;
}

void recordSingleMarker(ModelContainer& container, std::int64_t generation) {
  container.setMetadata(singleMarkerKey, std::to_string(generation));
}

void keepSingleMarkerCurrent(ModelContext& context) {
  ModelContainer* container = context.container().get();  // outlives the context's observers
  context.setSaveObserver<BalanceAdjustment>(
      std::string(singleMarkerKey), [container](const ModelContext::SavedRecords<BalanceAdjustment>& saved) {
        if (singleMarkerGeneration(*container) != saved.previousGeneration) return;
        const auto touchesMarker = [](const BalanceAdjustment* record) { return isCarryover(*record); };
        if (std::any_of(saved.written.begin(), saved.written.end(), touchesMarker) ||
            std::any_of(saved.deleted.begin(), saved.deleted.end(), touchesMarker)) {
          return;
        }
        recordSingleMarker(*container, saved.generation);
      });
}

/// Whether the bookings hold exactly one marker, the usual case.
bool holdsSingleMarker(ModelContext& context, bool saveChanges) {
  const bool unsaved = context.hasChanges<BalanceAdjustment>();
  const std::int64_t generation = context.generation<BalanceAdjustment>();
  if (!unsaved && singleMarkerGeneration(*context.container()) == generation) return true;
  const bool single = markerCount(context) == 1;
  if (single && !unsaved && saveChanges) {
    try {
      recordSingleMarker(*context.container(), generation);
    } catch (const StoreError&) {
      // Only a hint: the next run counts again.
    }
  }
  return single;
}

}  // namespace

bool reconcile(ModelContext& context, TimeBankSettings& settings, const Calendar& calendar, Date now, bool saveChanges) {
  if (saveChanges) keepSingleMarkerCurrent(context);
  if (holdsSingleMarker(context, saveChanges)) return false;
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
