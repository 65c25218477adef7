#include "core/archive/TimeBankArchive.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <type_traits>

#include "core/archive/TimeBankArchiveError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/engine/TimerSessionController.h"
#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/RecordTimestampValidation.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"
#include "platform/store/ModelContext.h"

namespace quillmont {
namespace {

using Archive = TimeBankArchive;
using JsonReader::optionalKey;
using JsonReader::Path;
using JsonReader::requiredKey;
using value = JsonReader::Value;

// Sorting ------------------------------------------------------------------

// Instants ascending, then identifiers (byte order is the order of their
// upper-case texts). A NaN instant, which only a damaged store holds, sorts
// after every number so that the order stays strict and weak.
bool instantThenIdentifierBefore(Date a, const UUID& aID, Date b, const UUID& bID) {
  if (a < b) return true;
  if (b < a) return false;
  const bool aIsNaN = std::isnan(a.timeIntervalSinceReferenceDate);
  const bool bIsNaN = std::isnan(b.timeIntervalSinceReferenceDate);
  if (aIsNaN != bIsNaN) return bIsNaN;
  return aID < bID;
}

template <class Record, class Instant>
void sortByInstantThenIdentifier(std::vector<Record>& records, Instant instant) {
  std::stable_sort(records.begin(), records.end(), [instant](const Record& a, const Record& b) {
    return instantThenIdentifierBefore(a.*instant, a.id, b.*instant, b.id);
  });
}

// Encoding -----------------------------------------------------------------

void writeInstant(JsonWriter& writer, Date date) { writer.number(date.timeIntervalSince1970()); }

void writeIdentifier(JsonWriter& writer, const UUID& id) { writer.string(id.uuidString()); }

void writeIntegers(JsonWriter& writer, std::span<const std::int64_t> values) {
  writer.beginArray();
  for (const std::int64_t integer : values) writer.integer(integer);
  writer.endArray();
}

// Keys below are written in ascending byte order, the document's key order.

void writeWorkEntry(JsonWriter& writer, const Archive::WorkEntryRecord& entry) {
  writer.beginObject();
  writer.key("breakMinutes");
  writer.integer(entry.breakMinutes);
  writer.key("createdAt");
  writeInstant(writer, entry.createdAt);
  if (entry.endedAt) {
    writer.key("endedAt");
    writeInstant(writer, *entry.endedAt);
  }
  writer.key("id");
  writeIdentifier(writer, entry.id);
  writer.key("modifiedAt");
  writeInstant(writer, entry.modifiedAt);
  writer.key("note");
  writer.string(entry.note);
  writer.key("startedAt");
  writeInstant(writer, entry.startedAt);
  writer.endObject();
}

void writeBalanceAdjustment(JsonWriter& writer, const Archive::BalanceAdjustmentRecord& adjustment) {
  writer.beginObject();
  writer.key("createdAt");
  writeInstant(writer, adjustment.createdAt);
  writer.key("date");
  writeInstant(writer, adjustment.date);
  writer.key("id");
  writeIdentifier(writer, adjustment.id);
  writer.key("kind");
  writer.string(adjustment.kind);
  writer.key("minutes");
  writer.integer(adjustment.minutes);
  writer.key("modifiedAt");
  writeInstant(writer, adjustment.modifiedAt);
  writer.key("note");
  writer.string(adjustment.note);
  writer.endObject();
}

void writeSchedule(JsonWriter& writer, const Archive::ScheduleRecord& schedule) {
  writer.beginObject();
  writer.key("createdAt");
  writeInstant(writer, schedule.createdAt);
  writer.key("effectiveFrom");
  writeInstant(writer, schedule.effectiveFrom);
  writer.key("id");
  writeIdentifier(writer, schedule.id);
  writer.key("modifiedAt");
  writeInstant(writer, schedule.modifiedAt);
  writer.key("weekdayMinutes");
  writeIntegers(writer, schedule.weekdayMinutes);
  writer.endObject();
}

void writeSettings(JsonWriter& writer, const Archive::SettingsRecord& settings) {
  writer.beginObject();
  writer.key("calculationStartDate");
  writeInstant(writer, settings.calculationStartDate);
  if (settings.customAdjustmentCategoriesRawValue) {
    writer.key("customAdjustmentCategoriesRawValue");
    writer.string(*settings.customAdjustmentCategoriesRawValue);
  }
  writer.key("hasCompletedOnboarding");
  writer.boolean(settings.hasCompletedOnboarding);
  writer.key("id");
  writeIdentifier(writer, settings.id);
  writer.key("modifiedAt");
  writeInstant(writer, settings.modifiedAt);
  if (settings.quickActionMinutes) {
    writer.key("quickActionMinutes");
    writeIntegers(writer, *settings.quickActionMinutes);
  }
  writer.key("startingBalanceMinutes");
  writer.integer(settings.startingBalanceMinutes);
  if (settings.visibleAdjustmentKindsRawValue) {
    writer.key("visibleAdjustmentKindsRawValue");
    writer.string(*settings.visibleAdjustmentKindsRawValue);
  }
  writer.key("weekdayMinutes");
  writeIntegers(writer, settings.weekdayMinutes);
  writer.endObject();
}

template <class Record, class Write>
void writeList(JsonWriter& writer, std::string_view key, const std::vector<Record>& records, Write write) {
  writer.key(key);
  writer.beginArray();
  for (const Record& record : records) write(writer, record);
  writer.endArray();
}

// Room for the document, from the sizes of its indented records without
// their texts; a little too much is cheaper than growing a large string.
std::size_t estimatedSize(const Archive& archive) {
  std::size_t size = 256 + 260 * archive.workEntries.size() + 270 * archive.balanceAdjustments.size() +
                     300 * archive.schedules.size() + 700 * archive.settings.size();
  for (const auto& entry : archive.workEntries) size += entry.note.size();
  for (const auto& adjustment : archive.balanceAdjustments) size += adjustment.note.size() + adjustment.kind.size();
  for (const auto& settings : archive.settings) {
    size += settings.visibleAdjustmentKindsRawValue.value_or("").size() +
            settings.customAdjustmentCategoriesRawValue.value_or("").size();
  }
  return size + size / 16;
}

// Decoding -----------------------------------------------------------------

Date instant(value& field, const Path& at) { return Date::fromTimeIntervalSince1970(JsonReader::number(field, at)); }

std::vector<std::int64_t> integers(value& field, const Path& at) {
  std::vector<std::int64_t> values;
  values.reserve(7);
  JsonReader::forEachElement(field, at, [&values](value& element, const Path& elementAt) {
    values.push_back(JsonReader::int64(element, elementAt));
  });
  return values;
}

// Reads an array of records into `records`.
template <class Record, class Read>
void readList(value& field, const Path& at, std::vector<Record>& records, Read read) {
  JsonReader::forEachElement(field, at, [&](value& element, const Path& elementAt) {
    read(element, elementAt, records.emplace_back());
  });
}

void readWorkEntry(value& object, const Path& at, Archive::WorkEntryRecord& entry) {
  enum : std::size_t { breakMinutes, createdAt, endedAt, id, modifiedAt, note, startedAt };
  static constexpr JsonReader::Key keys[] = {requiredKey("breakMinutes"), requiredKey("createdAt"),
                                             optionalKey("endedAt"),      requiredKey("id"),
                                             requiredKey("modifiedAt"),   requiredKey("note"),
                                             requiredKey("startedAt")};
  JsonReader::readObject(object, at, keys, [&entry](std::size_t key, value& field, const Path& fieldAt) {
    switch (key) {
      case breakMinutes: entry.breakMinutes = JsonReader::int64(field, fieldAt); break;
      case createdAt: entry.createdAt = instant(field, fieldAt); break;
      case endedAt:
        if (JsonReader::isNull(field)) {
          entry.endedAt.reset();
        } else {
          entry.endedAt = instant(field, fieldAt);
        }
        break;
      case id: entry.id = JsonReader::uuid(field, fieldAt); break;
      case modifiedAt: entry.modifiedAt = instant(field, fieldAt); break;
      case note: entry.note = JsonReader::string(field, fieldAt); break;
      case startedAt: entry.startedAt = instant(field, fieldAt); break;
    }
  });
}

void readBalanceAdjustment(value& object, const Path& at, Archive::BalanceAdjustmentRecord& adjustment) {
  enum : std::size_t { createdAt, date, id, kind, minutes, modifiedAt, note };
  static constexpr JsonReader::Key keys[] = {requiredKey("createdAt"), requiredKey("date"),    requiredKey("id"),
                                             requiredKey("kind"),      requiredKey("minutes"), requiredKey("modifiedAt"),
                                             requiredKey("note")};
  JsonReader::readObject(object, at, keys, [&adjustment](std::size_t key, value& field, const Path& fieldAt) {
    switch (key) {
      case createdAt: adjustment.createdAt = instant(field, fieldAt); break;
      case date: adjustment.date = instant(field, fieldAt); break;
      case id: adjustment.id = JsonReader::uuid(field, fieldAt); break;
      case kind: adjustment.kind = JsonReader::string(field, fieldAt); break;
      case minutes: adjustment.minutes = JsonReader::int64(field, fieldAt); break;
      case modifiedAt: adjustment.modifiedAt = instant(field, fieldAt); break;
      case note: adjustment.note = JsonReader::string(field, fieldAt); break;
    }
  });
}

void readSchedule(value& object, const Path& at, Archive::ScheduleRecord& schedule) {
  enum : std::size_t { createdAt, effectiveFrom, id, modifiedAt, weekdayMinutes };
  static constexpr JsonReader::Key keys[] = {requiredKey("createdAt"), requiredKey("effectiveFrom"), requiredKey("id"),
                                             requiredKey("modifiedAt"), requiredKey("weekdayMinutes")};
  JsonReader::readObject(object, at, keys, [&schedule](std::size_t key, value& field, const Path& fieldAt) {
    switch (key) {
      case createdAt: schedule.createdAt = instant(field, fieldAt); break;
      case effectiveFrom: schedule.effectiveFrom = instant(field, fieldAt); break;
      case id: schedule.id = JsonReader::uuid(field, fieldAt); break;
      case modifiedAt: schedule.modifiedAt = instant(field, fieldAt); break;
      case weekdayMinutes: schedule.weekdayMinutes = integers(field, fieldAt); break;
    }
  });
}

void readSettings(value& object, const Path& at, Archive::SettingsRecord& settings) {
  enum : std::size_t {
    calculationStartDate,
    customAdjustmentCategoriesRawValue,
    hasCompletedOnboarding,
    id,
    modifiedAt,
    quickActionMinutes,
    startingBalanceMinutes,
    visibleAdjustmentKindsRawValue,
    weekdayMinutes
  };
  static constexpr JsonReader::Key keys[] = {
      requiredKey("calculationStartDate"),   optionalKey("customAdjustmentCategoriesRawValue"),
      requiredKey("hasCompletedOnboarding"), requiredKey("id"),
      requiredKey("modifiedAt"),             optionalKey("quickActionMinutes"),
      requiredKey("startingBalanceMinutes"), optionalKey("visibleAdjustmentKindsRawValue"),
      requiredKey("weekdayMinutes")};
  JsonReader::readObject(object, at, keys, [&settings](std::size_t key, value& field, const Path& fieldAt) {
    switch (key) {
      case calculationStartDate: settings.calculationStartDate = instant(field, fieldAt); break;
      case customAdjustmentCategoriesRawValue:
        if (JsonReader::isNull(field)) {
          settings.customAdjustmentCategoriesRawValue.reset();
        } else {
          settings.customAdjustmentCategoriesRawValue = JsonReader::string(field, fieldAt);
        }
        break;
      case hasCompletedOnboarding: settings.hasCompletedOnboarding = JsonReader::boolean(field, fieldAt); break;
      case id: settings.id = JsonReader::uuid(field, fieldAt); break;
      case modifiedAt: settings.modifiedAt = instant(field, fieldAt); break;
      case quickActionMinutes:
        if (JsonReader::isNull(field)) {
          settings.quickActionMinutes.reset();
        } else {
          settings.quickActionMinutes = integers(field, fieldAt);
        }
        break;
      case startingBalanceMinutes: settings.startingBalanceMinutes = JsonReader::int64(field, fieldAt); break;
      case visibleAdjustmentKindsRawValue:
        if (JsonReader::isNull(field)) {
          settings.visibleAdjustmentKindsRawValue.reset();
        } else {
          settings.visibleAdjustmentKindsRawValue = JsonReader::string(field, fieldAt);
        }
        break;
      case weekdayMinutes: settings.weekdayMinutes = integers(field, fieldAt); break;
    }
  });
}

Archive readArchive(value& root) {
  enum : std::size_t { balanceAdjustments, exportedAt, schedules, schemaVersion, settings, workEntries };
  static constexpr JsonReader::Key keys[] = {requiredKey("balanceAdjustments"), requiredKey("exportedAt"),
                                             requiredKey("schedules"),          requiredKey("schemaVersion"),
                                             requiredKey("settings"),           requiredKey("workEntries")};
  Archive archive;
  JsonReader::readObject(root, Path(), keys, [&archive](std::size_t key, value& field, const Path& at) {
    switch (key) {
      case balanceAdjustments:
        archive.balanceAdjustments.clear();
        readList(field, at, archive.balanceAdjustments, readBalanceAdjustment);
        break;
      case exportedAt: archive.exportedAt = instant(field, at); break;
      case schedules:
        archive.schedules.clear();
        readList(field, at, archive.schedules, readSchedule);
        break;
      case schemaVersion: archive.schemaVersion = JsonReader::int64(field, at); break;
      case settings:
        archive.settings.clear();
        readList(field, at, archive.settings, readSettings);
        break;
      case workEntries:
        archive.workEntries.clear();
        readList(field, at, archive.workEntries, readWorkEntry);
        break;
    }
  });
  return archive;
}

// Validation ---------------------------------------------------------------

// Mixes all 128 bits into the top bits of a 64-bit word, which pick the
// slot: identifiers that differ in any byte, sequential ones included, land
// far apart.
std::uint64_t mixedBits(const UUID& id) {
  std::uint64_t high;
  std::uint64_t low;
  std::memcpy(&high, id.bytes.data(), 8);
  std::memcpy(&low, id.bytes.data() + 8, 8);
  std::uint64_t mixed = high * 0x9E3779B97F4A7C15 ^ low * 0xC2B2AE3D27D4EB4F;
  mixed ^= mixed >> 32;
  return mixed * 0xD6E8FEB86659FD93;
}

// Positions in a list by identifier: an open-addressing table, linear in
// the list and with no allocation per entry. `idAt(position)` is the
// identifier of the list's entry at `position`.
template <class IdAt>
class IdentifierTable {
 public:
  IdentifierTable(std::size_t count, IdAt idAt) : idAt_(std::move(idAt)) {
    while ((std::size_t{1} << bits_) < 2 * count) ++bits_;
    slots_.assign(std::size_t{1} << bits_, 0);
  }

  /// Where `id` is kept: 0 while no entry has it, else 1 + the position of
  /// the entry kept for it.
  std::uint32_t& slot(const UUID& id) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = static_cast<std::size_t>(mixedBits(id) >> (64 - bits_));
    while (slots_[slot] != 0 && idAt_(slots_[slot] - 1) != id) slot = (slot + 1) & mask;
    return slots_[slot];
  }
  /// The position of the entry kept for `id`, if any.
  std::optional<std::size_t> find(const UUID& id) {
    const std::uint32_t kept = slot(id);
    return kept == 0 ? std::nullopt : std::optional<std::size_t>(kept - 1);
  }
  /// Keeps for each identifier among the first `count` entries the one
  /// modified latest, the first among equals; returns how many identifiers
  /// there are.
  template <class ModifiedAt>
  std::size_t keepLatest(std::size_t count, ModifiedAt modifiedAt) {
    std::size_t identifiers = 0;
    for (std::size_t position = 0; position < count; ++position) {
      std::uint32_t& kept = slot(idAt_(position));
      if (kept == 0) ++identifiers;
      if (kept == 0 || modifiedAt(kept - 1) < modifiedAt(position)) kept = static_cast<std::uint32_t>(position + 1);
    }
    return identifiers;
  }

 private:
  IdAt idAt_;
  int bits_ = 2;
  std::vector<std::uint32_t> slots_;
};

template <class Record>
bool hasDuplicateIdentifiers(const std::vector<Record>& records) {
  IdentifierTable table(records.size(), [&records](std::size_t position) -> const UUID& { return records[position].id; });
  for (std::size_t position = 0; position < records.size(); ++position) {
    std::uint32_t& kept = table.slot(records[position].id);
    if (kept != 0) return true;
    kept = static_cast<std::uint32_t>(position + 1);
  }
  return false;
}

// Merging ------------------------------------------------------------------

using RecordTimestampValidation::normalizedCreatedAt;
using RecordTimestampValidation::normalizedModifiedAt;

template <class Model>
using StoredRecords = std::vector<std::shared_ptr<Model>>;

// The stored records of one type by identifier, one record each.
template <class Model>
class StoredIndex {
 public:
  explicit StoredIndex(const StoredRecords<Model>& records) : records_(records), table_(records.size(), IdOf{&records}) {}

  /// Keeps the latest modified record of each identifier; returns how many identifiers there are.
  std::size_t keepLatest() {
    return table_.keepLatest(records_.size(), [this](std::size_t position) { return records_[position]->modifiedAt(); });
  }
  Model* find(const UUID& id) {
    const auto position = table_.find(id);
    return position ? records_[*position].get() : nullptr;
  }

 private:
  struct IdOf {
    const StoredRecords<Model>* records;
    const UUID& operator()(std::size_t position) const { return (*records)[position]->id(); }
  };
  const StoredRecords<Model>& records_;
  IdentifierTable<IdOf> table_;
};

// Brings the stored side into shape before matching: timestamps normalised
// on every record (settings have no creation time), then one record per
// identifier, the latest modified, the first fetched among equals; the
// others are deleted. Returns the index of the survivors.
template <class Model>
StoredIndex<Model> storedRecordsByIdentifier(ModelContext& context, const StoredRecords<Model>& records, Date now) {
  for (const auto& record : records) {
    const Date modifiedAt = normalizedModifiedAt(record->modifiedAt(), now);
    if constexpr (!std::is_same_v<Model, TimeBankSettings>) {
      record->setCreatedAt(normalizedCreatedAt(record->createdAt(), modifiedAt));
    }
    record->setModifiedAt(modifiedAt);
  }
  StoredIndex<Model> index(records);
  if (index.keepLatest() != records.size()) {
    for (const auto& record : records) {
      if (index.find(record->id()) != record.get()) context.deleteRecord(record);
    }
  }
  return index;
}

// Counts one archive record and applies it: inserted when the store lacks
// its identifier, assigned when it was modified strictly later than the
// stored record, else left aside.
template <class Model, class Insert, class Update>
void mergeRecord(ModelContext& context, StoredIndex<Model>& stored, const UUID& id, Date modifiedAt,
                 TimeBankArchiveMergeResult& result, Insert insert, Update update) {
  Model* const match = stored.find(id);
  if (match == nullptr) {
    context.insert(insert());
    ++result.inserted;
  } else if (match->modifiedAt() < modifiedAt) {
    update(*match);
    ++result.updated;
  } else {
    ++result.unchanged;
  }
}

// Counts the records of one list as mergeRecord() would, from the stored
// records' identifiers and normalised modification times: for each
// identifier the latest, that of the record the merge keeps.
template <class Model, class Record>
void countMerge(ModelContext& context, Date now, const std::vector<Record>& records,
                TimeBankArchiveMergeResult& result) {
  struct Stored {
    UUID id;
    Date modifiedAt;
  };
  std::vector<Stored> stored;
  context.forEach<Model>({"id", "modifiedAt"}, [&](const Model& record) {
    stored.push_back({record.id(), normalizedModifiedAt(record.modifiedAt(), now)});
  });
  IdentifierTable latest(stored.size(), [&stored](std::size_t position) -> const UUID& { return stored[position].id; });
  latest.keepLatest(stored.size(), [&stored](std::size_t position) { return stored[position].modifiedAt; });
  for (const Record& record : records) {
    const auto match = latest.find(record.id);
    if (!match) {
      ++result.inserted;
    } else if (stored[*match].modifiedAt < normalizedModifiedAt(record.modifiedAt, now)) {
      ++result.updated;
    } else {
      ++result.unchanged;
    }
  }
}

}  // namespace

TimeBankArchive::TimeBankArchive(Date exportInstant, std::span<const std::shared_ptr<WorkEntry>> liveEntries,
                                 std::span<const std::shared_ptr<BalanceAdjustment>> liveAdjustments,
                                 std::span<const std::shared_ptr<WorkSchedule>> liveSchedules,
                                 std::span<const std::shared_ptr<TimeBankSettings>> liveSettings)
    : exportedAt(exportInstant) {
  workEntries.reserve(liveEntries.size());
  for (const auto& entry : liveEntries) {
    workEntries.push_back({entry->id(), entry->startedAt(), entry->endedAt(), entry->breakMinutes(), entry->note(),
                           entry->createdAt(), entry->modifiedAt()});
  }
  balanceAdjustments.reserve(liveAdjustments.size());
  for (const auto& adjustment : liveAdjustments) {
    balanceAdjustments.push_back({adjustment->id(), adjustment->date(), adjustment->minutes(), adjustment->note(),
                                  adjustment->kindRawValue(), adjustment->createdAt(), adjustment->modifiedAt()});
  }
  schedules.reserve(liveSchedules.size());
  for (const auto& schedule : liveSchedules) {
    const WeekdayMinutes weekdays = schedule->weekdayMinutes();
    schedules.push_back({schedule->id(), schedule->effectiveFrom(), {weekdays.begin(), weekdays.end()},
                         schedule->createdAt(), schedule->modifiedAt()});
  }
  settings.reserve(liveSettings.size());
  for (const auto& record : liveSettings) {
    const WeekdayMinutes weekdays = record->weekdayMinutes();
    const TimeBankSettings::QuickActionMinutes quickActions = record->quickActionMinutes();
    settings.push_back({record->id(), record->calculationStartDate(), record->startingBalanceMinutes(),
                        {weekdays.begin(), weekdays.end()},
                        std::vector<std::int64_t>(quickActions.begin(), quickActions.end()),
                        record->visibleAdjustmentKindsRawValue(), record->customAdjustmentCategoriesRawValue(),
                        record->hasCompletedOnboarding(), record->modifiedAt()});
  }
  sortByInstantThenIdentifier(workEntries, &WorkEntryRecord::startedAt);
  sortByInstantThenIdentifier(balanceAdjustments, &BalanceAdjustmentRecord::date);
  sortByInstantThenIdentifier(schedules, &ScheduleRecord::effectiveFrom);
  std::stable_sort(settings.begin(), settings.end(),
                   [](const SettingsRecord& a, const SettingsRecord& b) { return a.id < b.id; });
}

std::string TimeBankArchive::encodedJSON() const {
  std::string output;
  encodeJSON(output);
  return output;
}

void TimeBankArchive::encodeJSON(std::string& output) const {
  const std::size_t originalSize = output.size();
  output.reserve(originalSize + estimatedSize(*this));
  try {
    JsonWriter writer(output, {.prettyPrinted = true, .escapeSlashes = false, .sortedKeys = true});
    writer.beginObject();
    writeList(writer, "balanceAdjustments", balanceAdjustments, writeBalanceAdjustment);
    writer.key("exportedAt");
    writeInstant(writer, exportedAt);
    writeList(writer, "schedules", schedules, writeSchedule);
    writer.key("schemaVersion");
    writer.integer(schemaVersion);
    writeList(writer, "settings", settings, writeSettings);
    writeList(writer, "workEntries", workEntries, writeWorkEntry);
    writer.endObject();
  } catch (...) {
    output.resize(originalSize);
    throw;
  }
}

TimeBankArchive TimeBankArchive::decodeJSON(std::string_view json) {
  TimeBankArchive archive = JsonReader::parse(json, readArchive);
  archive.validate();
  return archive;
}

TimeBankArchive TimeBankArchive::decodeJSON(std::string&& json) {
  TimeBankArchive archive = JsonReader::parseConsuming(std::move(json), readArchive);
  archive.validate();
  return archive;
}


void TimeBankArchive::validate() const {
  using Case = TimeBankArchiveError::Case;
  if (schemaVersion != currentSchemaVersion) throw TimeBankArchiveError::unsupportedSchema(schemaVersion);
  if (workEntries.size() > maximumWorkEntryCount || balanceAdjustments.size() > maximumBalanceAdjustmentCount ||
      schedules.size() > maximumScheduleCount || settings.size() > maximumSettingsCount) {
    throw TimeBankArchiveError(Case::tooManyRecords);
  }
  const auto hasSevenWeekdays = [](const auto& record) { return record.weekdayMinutes.size() == 7; };
  if (!std::all_of(schedules.begin(), schedules.end(), hasSevenWeekdays) ||
      !std::all_of(settings.begin(), settings.end(), hasSevenWeekdays)) {
    throw TimeBankArchiveError(Case::malformedSchedule);
  }
  if (!std::all_of(settings.begin(), settings.end(), [](const SettingsRecord& record) {
        return !record.quickActionMinutes || record.quickActionMinutes->size() == 4;
      })) {
    throw TimeBankArchiveError(Case::malformedQuickActions);
  }
  if (hasDuplicateIdentifiers(workEntries) || hasDuplicateIdentifiers(balanceAdjustments) ||
      hasDuplicateIdentifiers(schedules) || hasDuplicateIdentifiers(settings)) {
    throw TimeBankArchiveError(Case::duplicateIdentifiers);
  }
}

TimeBankArchiveMergeResult TimeBankArchive::merge(ModelContext& context, Date now, RunningEntries running,
                                                  bool saveChanges) const {
  validate();
  const auto storedEntries = context.fetch<WorkEntry>();
  const auto storedAdjustments = context.fetch<BalanceAdjustment>();
  const auto storedSchedules = context.fetch<WorkSchedule>();
  const auto storedSettings = context.fetch<TimeBankSettings>();
  auto entriesByID = storedRecordsByIdentifier(context, storedEntries, now);
  auto adjustmentsByID = storedRecordsByIdentifier(context, storedAdjustments, now);
  auto schedulesByID = storedRecordsByIdentifier(context, storedSchedules, now);
  auto settingsByID = storedRecordsByIdentifier(context, storedSettings, now);
  const Date exportInstant = normalizedModifiedAt(exportedAt, now);

  TimeBankArchiveMergeResult result;
  for (const WorkEntryRecord& r : workEntries) {
    // A running entry is closed at the export instant, never before its start.
    const std::optional<Date> end = r.endedAt                                 ? r.endedAt
                                    : running == RunningEntries::keepRunning ? std::nullopt
                                                                             : std::optional(std::max(r.startedAt, exportInstant));
    const std::int64_t breakMinutes = std::clamp<std::int64_t>(r.breakMinutes, 0, DataStoreMaintenance::maximumBreakMinutes);
    std::string note = NoteValidation::normalized(r.note);
    const Date modifiedAt = normalizedModifiedAt(r.modifiedAt, now);
    const Date createdAt = normalizedCreatedAt(r.createdAt, modifiedAt);
    mergeRecord(
        context, entriesByID, r.id, modifiedAt, result,
        [&] { return std::make_shared<WorkEntry>(r.id, r.startedAt, end, breakMinutes, note, createdAt, modifiedAt); },
        [&](WorkEntry& entry) {
          entry.setStartedAt(r.startedAt);
          // An update never ends before its start.
          entry.setEndedAt(end ? std::optional(std::max(r.startedAt, *end)) : std::nullopt);
          entry.setBreakMinutes(breakMinutes);
          entry.setNote(std::move(note));
          entry.setCreatedAt(createdAt);
          entry.setModifiedAt(modifiedAt);
        });
  }
  // Adjustments share a handful of kinds: each is normalised once.
  struct NormalizedKind {
    std::string rawValue;
    AdjustmentCategoryBehavior behavior;
  };
  std::map<std::string, NormalizedKind, std::less<>> normalizedKinds;
  for (const BalanceAdjustmentRecord& r : balanceAdjustments) {
    auto known = normalizedKinds.find(r.kind);
    if (known == normalizedKinds.end()) {
      std::string normalized = AdjustmentCategoryValidation::normalizedRawValue(r.kind);
      const AdjustmentCategoryBehavior behavior = AdjustmentCategoryValidation::behavior(normalized);
      known = normalizedKinds.emplace(r.kind, NormalizedKind{std::move(normalized), behavior}).first;
    }
    std::string kind = known->second.rawValue;
    const std::int64_t minutes = AdjustmentCategoryValidation::normalizedMinutes(r.minutes, known->second.behavior);
    std::string note = NoteValidation::normalized(r.note);
    const Date modifiedAt = normalizedModifiedAt(r.modifiedAt, now);
    const Date createdAt = normalizedCreatedAt(r.createdAt, modifiedAt);
    mergeRecord(
        context, adjustmentsByID, r.id, modifiedAt, result,
        [&] {
          auto adjustment = std::make_shared<BalanceAdjustment>(r.id, r.date, minutes, note, BalanceAdjustmentKind::manual,
                                                                createdAt, modifiedAt);
          adjustment->setKindRawValue(std::move(kind));
          return adjustment;
        },
        [&](BalanceAdjustment& adjustment) {
          adjustment.setDate(r.date);
          adjustment.setMinutes(minutes);
          adjustment.setNote(std::move(note));
          adjustment.setKindRawValue(std::move(kind));
          adjustment.setCreatedAt(createdAt);
          adjustment.setModifiedAt(modifiedAt);
        });
  }
  for (const ScheduleRecord& r : schedules) {
    const Date modifiedAt = normalizedModifiedAt(r.modifiedAt, now);
    const Date createdAt = normalizedCreatedAt(r.createdAt, modifiedAt);
    mergeRecord(
        context, schedulesByID, r.id, modifiedAt, result,
        [&] { return std::make_shared<WorkSchedule>(r.id, r.effectiveFrom, r.weekdayMinutes, createdAt, modifiedAt); },
        [&](WorkSchedule& schedule) {
          schedule.setEffectiveFrom(r.effectiveFrom);
          schedule.setWeekdayMinutes(r.weekdayMinutes);
          schedule.setCreatedAt(createdAt);
          schedule.setModifiedAt(modifiedAt);
        });
  }
  for (const SettingsRecord& r : settings) {
    const Date modifiedAt = normalizedModifiedAt(r.modifiedAt, now);
    const std::int64_t startingBalance =
        std::clamp<std::int64_t>(r.startingBalanceMinutes, -DataStoreMaintenance::maximumBalanceMinutes,
                                 DataStoreMaintenance::maximumBalanceMinutes);
    const std::span<const std::int64_t> quickActions =
        r.quickActionMinutes ? std::span<const std::int64_t>(*r.quickActionMinutes)
                             : std::span<const std::int64_t>(QuickActionConfiguration::defaultMinutes);
    const std::string_view visibleKinds =
        r.visibleAdjustmentKindsRawValue ? std::string_view(*r.visibleAdjustmentKindsRawValue)
                                         : AdjustmentKindConfiguration::defaultRawValue;
    const std::string_view customCategories =
        r.customAdjustmentCategoriesRawValue ? std::string_view(*r.customAdjustmentCategoriesRawValue)
                                             : CustomAdjustmentCategoryConfiguration::defaultRawValue;
    mergeRecord(
        context, settingsByID, r.id, modifiedAt, result,
        [&] {
          return std::make_shared<TimeBankSettings>(r.id, r.calculationStartDate, startingBalance, r.weekdayMinutes,
                                                    quickActions, visibleKinds, customCategories,
                                                    r.hasCompletedOnboarding, modifiedAt);
        },
        [&](TimeBankSettings& record) {
          record.setCalculationStartDate(r.calculationStartDate);
          record.setStartingBalanceMinutes(startingBalance);
          record.setWeekdayMinutes(r.weekdayMinutes);
          record.setQuickActionMinutes(quickActions);
          record.setVisibleAdjustmentKindsRawValue(std::string(visibleKinds));
          record.setCustomAdjustmentCategoriesRawValue(std::string(customCategories));
          record.setHasCompletedOnboarding(r.hasCompletedOnboarding);
          record.setModifiedAt(modifiedAt);
        });
  }

  TimerSessionController::reconcileRunningEntries(context, now, false);
  const Calendar calendar = Calendar::autoupdatingCurrent();
  DataStoreMaintenance::reconcileActivity(context, now, false);
  const std::shared_ptr<TimeBankSettings> reconciledSettings =
      DataStoreMaintenance::reconcileConfiguration(context, calendar, now, false);
  ManualLedgerMigration::reconcile(context, *reconciledSettings, calendar, now, false);
  if (saveChanges) context.save();
  return result;
}

TimeBankArchiveMergeResult TimeBankArchive::mergePreview(ModelContext& context, Date now) const {
  validate();
  TimeBankArchiveMergeResult result;
  countMerge<WorkEntry>(context, now, workEntries, result);
  countMerge<BalanceAdjustment>(context, now, balanceAdjustments, result);
  countMerge<WorkSchedule>(context, now, schedules, result);
  countMerge<TimeBankSettings>(context, now, settings, result);
  return result;
}

}  // namespace quillmont
