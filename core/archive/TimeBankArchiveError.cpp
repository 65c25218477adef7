#include "core/archive/TimeBankArchiveError.h"

namespace quillmont {

TimeBankArchiveError::TimeBankArchiveError(Case value) : TimeBankArchiveError(value, 0) {}

TimeBankArchiveError::TimeBankArchiveError(Case value, std::int64_t schemaVersion)
    : std::runtime_error(description(value, schemaVersion)), case_(value), schemaVersion_(schemaVersion) {}

TimeBankArchiveError TimeBankArchiveError::unsupportedSchema(std::int64_t schemaVersion) {
  return TimeBankArchiveError(Case::unsupportedSchema, schemaVersion);
}

std::string TimeBankArchiveError::description(Case value, std::int64_t schemaVersion) {
  switch (value) {
    case Case::unsupportedSchema:
      return "This archive uses unsupported format version " + std::to_string(schemaVersion) + ".";
    case Case::tooManyRecords:
      return "This archive contains too many records to import safely.";
    case Case::malformedSchedule:
      return "This archive contains an invalid weekly schedule.";
    case Case::malformedQuickActions:
      return "This archive contains invalid quick-action settings.";
    case Case::duplicateIdentifiers:
      break;
  }
  return "This archive contains duplicate record identifiers.";
}

}  // namespace quillmont
