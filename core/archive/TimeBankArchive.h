// TimeBankArchive: the whole ledger as one JSON document, for export and
// import. A plain value: building it reads the live records it is given,
// encoding and decoding touch no store, and merge() brings a decoded archive
// back into a store, last writer wins.
//
// The document is pretty-printed JSON with the keys of every object in
// ascending order and "/" written as is. Instants are numbers of seconds
// since 1970-01-01 00:00:00 UTC (a Date t is written as t + 978307200),
// in the shortest text that reads back to the same double; identifiers are
// upper-case 8-4-4-4-12 strings; an absent optional has no key at all.
//
// Reading accepts what the writer writes and a little more: keys in any
// order, unknown keys (ignored), `null` for an optional, identifiers in
// either letter case, any number for an instant, and integral numbers such
// as `2.0` for an integer. Everything else fails with JsonDecodingError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/archive/TimeBankArchiveMergeResult.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

class ModelContext;

struct TimeBankArchive {
  /// A WorkEntry's fields; no `endedAt` while it runs.
  struct WorkEntryRecord {
    UUID id;
    Date startedAt;
    std::optional<Date> endedAt;
    std::int64_t breakMinutes = 0;
    std::string note;
    Date createdAt;
    Date modifiedAt;
    friend bool operator==(const WorkEntryRecord&, const WorkEntryRecord&) = default;
  };

  /// A BalanceAdjustment's fields; `kind` is its stored kindRawValue.
  struct BalanceAdjustmentRecord {
    UUID id;
    Date date;
    std::int64_t minutes = 0;
    std::string note;
    std::string kind;
    Date createdAt;
    Date modifiedAt;
    friend bool operator==(const BalanceAdjustmentRecord&, const BalanceAdjustmentRecord&) = default;
  };

  /// A WorkSchedule's fields; `weekdayMinutes` Monday first, seven in a valid archive.
  struct ScheduleRecord {
    UUID id;
    Date effectiveFrom;
    std::vector<std::int64_t> weekdayMinutes;
    Date createdAt;
    Date modifiedAt;
    friend bool operator==(const ScheduleRecord&, const ScheduleRecord&) = default;
  };

  /// A TimeBankSettings record's fields (it has no creation time). The
  /// optionals are always present in an export; older documents may lack them.
  struct SettingsRecord {
    UUID id;
    Date calculationStartDate;
    std::int64_t startingBalanceMinutes = 0;
    std::vector<std::int64_t> weekdayMinutes;
    std::optional<std::vector<std::int64_t>> quickActionMinutes;
    std::optional<std::string> visibleAdjustmentKindsRawValue;
    std::optional<std::string> customAdjustmentCategoriesRawValue;
    bool hasCompletedOnboarding = false;
    Date modifiedAt;
    friend bool operator==(const SettingsRecord&, const SettingsRecord&) = default;
  };

  static constexpr std::int64_t currentSchemaVersion = 1;
  static constexpr std::size_t maximumWorkEntryCount = 100000;
  static constexpr std::size_t maximumBalanceAdjustmentCount = 100000;
  static constexpr std::size_t maximumScheduleCount = 10000;
  static constexpr std::size_t maximumSettingsCount = 100;

  std::int64_t schemaVersion = currentSchemaVersion;
  Date exportedAt;
  std::vector<WorkEntryRecord> workEntries;
  std::vector<BalanceAdjustmentRecord> balanceAdjustments;
  std::vector<ScheduleRecord> schedules;
  std::vector<SettingsRecord> settings;

  TimeBankArchive() = default;
  /// Copies every record's fields as stored (nothing normalised) and sorts
  /// each list ascending: entries by start, adjustments by date, schedules by
  /// effective date, each then by identifier; settings by identifier alone.
  TimeBankArchive(Date exportedAt, std::span<const std::shared_ptr<WorkEntry>> workEntries,
                  std::span<const std::shared_ptr<BalanceAdjustment>> balanceAdjustments,
                  std::span<const std::shared_ptr<WorkSchedule>> schedules,
                  std::span<const std::shared_ptr<TimeBankSettings>> settings);

  /// The JSON document. Throws JsonEncodingError for an instant that is not
  /// a finite number.
  std::string encodedJSON() const;
  /// Appends the document to `output`; on failure `output` is left as it was.
  void encodeJSON(std::string& output) const;

  /// Decodes a document and validates it. Throws JsonDecodingError for text
  /// that is not such a document and TimeBankArchiveError when validate() fails.
  static TimeBankArchive decodeJSON(std::string_view json);
  /// The same, reading a text handed over: the memory of the text read
  /// through is given back as decoding goes on (see
  /// JsonReader::parseConsuming), so the document and the archive are not
  /// both resident in whole.
  static TimeBankArchive decodeJSON(std::string&& json);
  static TimeBankArchive decodeJSON(const char* json) { return decodeJSON(std::string_view(json)); }

  /// Checks, in this order, the format version, the size of each list, the
  /// seven weekdays of schedules and settings, the four quick actions where
  /// present, and that no identifier repeats within a list; throws the
  /// TimeBankArchiveError of the first that fails. Record values are not
  /// checked: merge() normalises them.
  void validate() const;

  /// Merges the archive into the store, last writer wins, and saves once.
  /// Validates first (a failing archive leaves the store untouched); then
  /// normalises the stored records' timestamps and deletes stored records
  /// that repeat an identifier (keeping the latest modified); inserts
  /// archive records the store lacks and assigns those modified strictly
  /// later than their stored match, every value normalised on the way (a
  /// running entry is closed at the export instant); then runs the timer,
  /// activity, configuration and ledger reconciliations as of `now` with the
  /// current calendar, and saves. Store errors pass through; what was done by
  /// then stays unsaved in the context.
  ///
  /// With `RunningEntries::keepRunning` a running entry stays running
  /// instead (copies of one store kept in step, where the timer's own
  /// repair then leaves the earliest of several running entries).
  ///
  /// With `saveChanges` false nothing is saved: the caller saves the merge
  /// together with more changes, or rolls it back.
  enum class RunningEntries { closeAtExport, keepRunning };
  TimeBankArchiveMergeResult merge(ModelContext& context, Date now,
                                   RunningEntries running = RunningEntries::closeAtExport,
                                   bool saveChanges = true) const;

  /// What merge() into `context` at `now` would count, worked out from the
  /// stored records' identifiers and modification times alone: nothing in
  /// the context or the store changes. Validates first, like merge().
  TimeBankArchiveMergeResult mergePreview(ModelContext& context, Date now) const;

  friend bool operator==(const TimeBankArchive&, const TimeBankArchive&) = default;
};

}  // namespace quillmont
