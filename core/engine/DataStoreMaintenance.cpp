#include "core/engine/DataStoreMaintenance.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <cstring>
#include <unordered_map>
#include <tuple>

#include "core/engine/LedgerTotal.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/engine/RecordChoice.h"
#include "core/engine/Settlement.h"
#include "core/engine/StoredDayStart.h"
#include "core/engine/TimeBankDateBounds.h"
#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/RecordTimestampValidation.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/store/StoreError.h"

namespace quillmont::DataStoreMaintenance {
namespace {

using RecordTimestampValidation::normalizedCreatedAt;
using RecordTimestampValidation::normalizedModifiedAt;

// Bitwise sameness, so a stored NaN does not count as a change on every run.
bool same(Date a, Date b) {
  return std::memcmp(&a.timeIntervalSinceReferenceDate, &b.timeIntervalSinceReferenceDate, sizeof(double)) == 0;
}
bool same(std::optional<Date> a, std::optional<Date> b) { return a.has_value() == b.has_value() && (!a || same(*a, *b)); }

struct Timestamps {
  Date createdAt;
  Date modifiedAt;
};

template <class Record>
Timestamps normalizedTimestamps(const Record& record, Date now) {
  const Date modifiedAt = normalizedModifiedAt(record.modifiedAt(), now);
  return {normalizedCreatedAt(record.createdAt(), modifiedAt), modifiedAt};
}

// When a pass last found every record of one type in normal form: the
// type's generation, the instant of that pass and, where day starts matter,
// the calendar it used; kept in the store. A later pass may skip the type
// while the generation and calendar are the same, the clock has not gone
// back (the only rule that depends on the instant accepts more as time goes
// on) and the context holds no unsaved records of the type.
template <class Model>
struct PassRecord {
  std::int64_t generation = 0;
  Date at;
  std::string calendar;

  static std::string key() { return "maintenance." + std::string(Model::entityName) + "Checked"; }

  static PassRecord current(ModelContext& context, Date now, std::string calendar) {
    return {context.generation<Model>(), now, std::move(calendar)};
  }

  /// The pass the store records for the type, if it holds a readable one.
  static std::optional<PassRecord> stored(ModelContainer& container) {
    const auto text = container.metadata(key());
    if (!text) return std::nullopt;
    PassRecord pass;
    double seconds = 0;
    const char* end = text->data() + text->size();
    const auto [middle, error] = std::from_chars(text->data(), end, pass.generation);
    if (error != std::errc{} || middle == end || *middle != ' ') return std::nullopt;
    const auto [after, timeError] = std::from_chars(middle + 1, end, seconds);
    if (timeError != std::errc{}) return std::nullopt;
    pass.at = Date(seconds);
    if (after != end) pass.calendar.assign(after + 1, end);
    return pass;
  }

  /// Whether the store records a pass that lets `current` skip the type.
  bool allowsSkipping(ModelContext& context) const {
    if (context.hasChanges<Model>()) return false;
    const auto pass = stored(*context.container());
    return pass && pass->generation == generation && at >= pass->at && pass->calendar == calendar;
  }

  /// Records this pass. Only a hint for later passes: when it cannot be
  /// written, they check again.
  void write(ModelContext& context) const {
    try {
      write(*context.container());
    } catch (const StoreError&) {
    }
  }

  void write(ModelContainer& container) const {
    std::string text = std::to_string(generation);
    char buffer[32];
    text += ' ';
    text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, at.timeIntervalSinceReferenceDate).ptr);
    if (!calendar.empty()) text += ' ' + calendar;
    container.setMetadata(key(), text);
  }

  /// Carries the recorded pass through this context's saves of the type:
  /// when the store was in order before a save and every record it writes
  /// is in order at `now`, it is in order after the save too (a record in
  /// order at one instant stays so later), and the pass moves to the new
  /// generation in the save's own transaction. So a writer that books one
  /// record does not make the next command check the whole table again.
  template <class InOrder>
  static void keepCurrent(ModelContext& context, Date now, InOrder inOrder) {
    ModelContainer* container = context.container().get();  // outlives the context's observers
    context.setSaveObserver<Model>(key(), [container, now, inOrder](const ModelContext::SavedRecords<Model>& saved) {
      auto pass = stored(*container);
      if (!pass || pass->generation != saved.previousGeneration) return;
      for (const Model* record : saved.written) {
        if (!inOrder(*record, now)) return;
      }
      pass->generation = saved.generation;
      pass->at = std::max(pass->at, now);
      pass->write(*container);
    });
  }
};

/// What decides day starts: the zone, the calendar system and the zone data.
std::string calendarFingerprint(const Calendar& calendar) {
  return calendar.timeZoneIdentifier() + '/' + calendar.identifier() + '/' + Calendar::timeZoneDataVersion();
}

// The normal form of a work entry and of a booking: what reconcileActivity
// stores for them.
struct EntryForm {
  std::int64_t breakMinutes;
  std::optional<Date> end;
  std::string note;
  Timestamps times;

  EntryForm(const WorkEntry& entry, Date now)
      : breakMinutes(std::clamp<std::int64_t>(entry.breakMinutes(), 0, maximumBreakMinutes)),
        end(entry.endedAt() ? std::optional(std::max(entry.startedAt(), *entry.endedAt())) : std::nullopt),
        note(NoteValidation::normalized(entry.note())),
        times(normalizedTimestamps(entry, now)) {}

  bool describes(const WorkEntry& entry) const {
    return breakMinutes == entry.breakMinutes() && same(end, entry.endedAt()) && note == entry.note() &&
           same(times.modifiedAt, entry.modifiedAt()) && same(times.createdAt, entry.createdAt());
  }
};

struct AdjustmentForm {
  std::string kind;
  std::int64_t minutes;
  std::string note;
  Timestamps times;

  AdjustmentForm(const BalanceAdjustment& adjustment, Date now)
      : kind(AdjustmentCategoryValidation::normalizedRawValue(adjustment.kindRawValue())),
        minutes(AdjustmentCategoryValidation::normalizedMinutes(adjustment.minutes(), kind)),
        note(NoteValidation::normalized(adjustment.note())),
        times(normalizedTimestamps(adjustment, now)) {}

  bool describes(const BalanceAdjustment& adjustment) const {
    return kind == adjustment.kindRawValue() && minutes == adjustment.minutes() && note == adjustment.note() &&
           same(times.modifiedAt, adjustment.modifiedAt()) && same(times.createdAt, adjustment.createdAt());
  }
};

bool entryInOrder(const WorkEntry& entry, Date now) { return EntryForm(entry, now).describes(entry); }
bool adjustmentInOrder(const BalanceAdjustment& adjustment, Date now) {
  return AdjustmentForm(adjustment, now).describes(adjustment);
}

bool reconcileEntry(WorkEntry& entry, Date now) {
  EntryForm form(entry, now);
  if (form.describes(entry)) return false;
  entry.setBreakMinutes(form.breakMinutes);
  entry.setEndedAt(form.end);
  entry.setNote(std::move(form.note));
  entry.setModifiedAt(form.times.modifiedAt);
  entry.setCreatedAt(form.times.createdAt);
  return true;
}

bool reconcileAdjustment(BalanceAdjustment& adjustment, Date now) {
  AdjustmentForm form(adjustment, now);
  if (form.describes(adjustment)) return false;
  adjustment.setKindRawValue(std::move(form.kind));
  adjustment.setMinutes(form.minutes);
  adjustment.setNote(std::move(form.note));
  adjustment.setModifiedAt(form.times.modifiedAt);
  adjustment.setCreatedAt(form.times.createdAt);
  return true;
}

WeekdayMinutes clamped(WeekdayMinutes minutes) {
  for (auto& value : minutes) value = clampedDailyMinutes(value);
  return minutes;
}

std::shared_ptr<TimeBankSettings> makeDefaultSettings() {
  const Date calculationStart = Date::now();
  return std::make_shared<TimeBankSettings>(
      UUID::random(), calculationStart, 0, defaultWeekdayMinutes, QuickActionConfiguration::defaultMinutes,
      AdjustmentKindConfiguration::defaultRawValue, CustomAdjustmentCategoryConfiguration::defaultRawValue, false,
      Date::now());
}

bool normalizeSettings(TimeBankSettings& settings, const Calendar& calendar, const std::optional<Calendar>& daysZone,
                       Date now) {
  const Date start = std::min(
      StoredDayStart::startOfDay(
          std::max(TimeBankDateBounds::earliestCalculationDate(calendar), settings.calculationStartDate()), calendar,
          daysZone),
      calendar.startOfDay(Date::now()));
  const WeekdayMinutes weekdays = clamped(settings.weekdayMinutes());
  const std::int64_t balance = std::clamp(settings.startingBalanceMinutes(), -maximumBalanceMinutes, maximumBalanceMinutes);
  const auto quickActions = QuickActionConfiguration::normalized(settings.quickActionMinutes());
  std::string kinds = AdjustmentKindConfiguration::rawValue(
      AdjustmentKindConfiguration::kinds(settings.visibleAdjustmentKindsRawValue()));
  std::string categories = CustomAdjustmentCategoryConfiguration::rawValue(
      CustomAdjustmentCategoryConfiguration::categories(settings.customAdjustmentCategoriesRawValue()));
  if (same(start, settings.calculationStartDate()) && weekdays == settings.weekdayMinutes() &&
      balance == settings.startingBalanceMinutes() && quickActions == settings.quickActionMinutes() &&
      kinds == settings.visibleAdjustmentKindsRawValue() && categories == settings.customAdjustmentCategoriesRawValue()) {
    return false;
  }
  settings.setCalculationStartDate(start);
  settings.setWeekdayMinutes(weekdays);
  settings.setStartingBalanceMinutes(balance);
  settings.setQuickActionMinutes(quickActions);
  settings.setVisibleAdjustmentKindsRawValue(std::move(kinds));
  settings.setCustomAdjustmentCategoriesRawValue(std::move(categories));
  settings.setModifiedAt(now);
  return true;
}

bool reconcileSchedules(ModelContext& context, const Calendar& calendar, const std::optional<Calendar>& daysZone,
                        Date now) {
  bool changed = false;
  const auto schedules = context.fetch<WorkSchedule>();
  // Grouped by the bits of the day's start: groups are independent, so their
  // order does not matter, and a non-finite start still forms one group.
  std::unordered_map<std::uint64_t, std::pair<Date, std::vector<std::shared_ptr<WorkSchedule>>>> byDay;
  for (const auto& schedule : schedules) {
    const Timestamps times = normalizedTimestamps(*schedule, now);
    if (!same(times.modifiedAt, schedule->modifiedAt()) || !same(times.createdAt, schedule->createdAt())) {
      schedule->setModifiedAt(times.modifiedAt);
      schedule->setCreatedAt(times.createdAt);
      changed = true;
    }
    const Date dayStart = StoredDayStart::startOfDay(schedule->effectiveFrom(), calendar, daysZone);
    std::uint64_t bits;
    std::memcpy(&bits, &dayStart.timeIntervalSinceReferenceDate, sizeof bits);
    auto& group = byDay[bits];
    group.first = dayStart;
    group.second.push_back(schedule);
  }
  for (const auto& [bits, dayGroup] : byDay) {
    const auto& [dayStart, group] = dayGroup;
    const auto survivor = RecordChoice::greatest(group, [](const WorkSchedule& schedule) {
      return std::tuple(schedule.modifiedAt(), schedule.createdAt(), schedule.id());
    });
    for (const auto& schedule : group) {
      if (schedule != survivor) {
        context.deleteRecord(schedule);
        changed = true;
      }
    }
    if (!same(survivor->effectiveFrom(), dayStart)) {
      survivor->setEffectiveFrom(dayStart);
      changed = true;
    }
    const WeekdayMinutes weekdays = clamped(survivor->weekdayMinutes());
    if (weekdays != survivor->weekdayMinutes()) {
      survivor->setWeekdayMinutes(weekdays);
      survivor->setModifiedAt(now);
      changed = true;
    }
  }
  return changed;
}

}  // namespace

std::shared_ptr<TimeBankSettings> reconcile(ModelContext& context, const Calendar& calendar, Date now, bool saveChanges) {
  reconcileActivity(context, now, saveChanges);
  auto settings = reconcileConfiguration(context, calendar, now, saveChanges);
  ManualLedgerMigration::reconcile(context, *settings, calendar, now, saveChanges);
  return settings;
}

void reconcileActivity(ModelContext& context, Date now, bool saveChanges) {
  // Most commands change neither table: a type found in order by an earlier
  // pass, and not written since, is not read again here.
  const auto entryPass = PassRecord<WorkEntry>::current(context, now, "");
  const bool entriesInOrder = entryPass.allowsSkipping(context);
  bool entriesChanged = false;
  if (!entriesInOrder) {
    for (const auto& entry : context.fetch<WorkEntry>()) entriesChanged |= reconcileEntry(*entry, now);
  }
  const auto adjustmentPass = PassRecord<BalanceAdjustment>::current(context, now, "");
  const bool adjustmentsInOrder = adjustmentPass.allowsSkipping(context);
  bool adjustmentsChanged = false;
  if (!adjustmentsInOrder) {
    for (const auto& adjustment : context.fetch<BalanceAdjustment>()) {
      adjustmentsChanged |= reconcileAdjustment(*adjustment, now);
    }
  }
  if (saveChanges) {
    PassRecord<WorkEntry>::keepCurrent(context, now, entryInOrder);
    PassRecord<BalanceAdjustment>::keepCurrent(context, now, adjustmentInOrder);
    // Every writer passes here first, so the ledger's recorded total and the
    // unsettled count follow its bookings too.
    LedgerTotal::keepCurrent(context);
    Settlement::keepCurrent(context);
  }
  if (saveChanges && (entriesChanged || adjustmentsChanged)) context.save();
  // A pass that repaired a type raised its generation; the next pass finds
  // it in order and records that.
  if (saveChanges && !entriesInOrder && !entriesChanged && !context.hasChanges<WorkEntry>()) entryPass.write(context);
  if (saveChanges && !adjustmentsInOrder && !adjustmentsChanged && !context.hasChanges<BalanceAdjustment>()) {
    adjustmentPass.write(context);
  }
}

std::shared_ptr<TimeBankSettings> reconcileConfiguration(ModelContext& context, const Calendar& calendar, Date now,
                                                         bool saveChanges) {
  bool changed = false;
  const auto all = context.fetch<TimeBankSettings>();
  std::shared_ptr<TimeBankSettings> settings;
  if (all.empty()) {
    settings = makeDefaultSettings();
    context.insert(settings);
    changed = true;
  } else {
    for (const auto& record : all) {
      if (record->modifiedAt() > now + RecordTimestampValidation::maximumFutureSkew) {
        record->setModifiedAt(now);
        changed = true;
      }
    }
    settings = RecordChoice::greatest(all, [](const TimeBankSettings& record) {
      return std::tuple(record.hasCompletedOnboarding(), record.modifiedAt(), record.id());
    });
    for (const auto& record : all) {
      if (record != settings) {
        context.deleteRecord(record);
        changed = true;
      }
    }
  }
  // Days written in another zone keep their day here (see StoredDayStart).
  const std::optional<Calendar> daysZone = StoredDayStart::writtenIn(context, calendar);
  changed |= normalizeSettings(*settings, calendar, daysZone, now);
  // Schedules change seldom and their day starts cost a calendar
  // computation each: skip them like work entries, for the same calendar.
  const auto pass = PassRecord<WorkSchedule>::current(context, now, calendarFingerprint(calendar));
  const bool schedulesInOrder = pass.allowsSkipping(context);
  const bool schedulesChanged = !schedulesInOrder && reconcileSchedules(context, calendar, daysZone, now);
  changed |= schedulesChanged;
  if (saveChanges && changed) context.save();
  if (saveChanges && !context.hasChanges<TimeBankSettings>() && !context.hasChanges<WorkSchedule>()) {
    StoredDayStart::recordWrittenIn(context, calendar);
  }
  if (saveChanges && !schedulesInOrder && !schedulesChanged && !context.hasChanges<WorkSchedule>()) pass.write(context);
  return settings;
}

void eraseAll(ModelContext& context) {
  context.deleteAll<WorkEntry>();
  context.deleteAll<BalanceAdjustment>();
  context.deleteAll<WorkSchedule>();
  context.deleteAll<TimeBankSettings>();
  context.save();
}

}  // namespace quillmont::DataStoreMaintenance
