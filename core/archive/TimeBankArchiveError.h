// TimeBankArchiveError: why an archive was refused before it reached the
// store, with the message shown to the user. Equal when the cases are equal
// and, for an unsupported format version, the versions too.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quillmont {

class TimeBankArchiveError : public std::runtime_error {
 public:
  enum class Case { unsupportedSchema, tooManyRecords, malformedSchedule, malformedQuickActions, duplicateIdentifiers };

  /// Any case but unsupportedSchema.
  explicit TimeBankArchiveError(Case value);
  static TimeBankArchiveError unsupportedSchema(std::int64_t schemaVersion);

  Case errorCase() const { return case_; }
  /// The document's version for unsupportedSchema, 0 otherwise.
  std::int64_t schemaVersion() const { return schemaVersion_; }

  /// "This archive uses unsupported format version 2." and the like.
  static std::string description(Case value, std::int64_t schemaVersion = 0);

  friend bool operator==(const TimeBankArchiveError& a, const TimeBankArchiveError& b) {
    return a.case_ == b.case_ && a.schemaVersion_ == b.schemaVersion_;
  }

 private:
  TimeBankArchiveError(Case value, std::int64_t schemaVersion);

  Case case_;
  std::int64_t schemaVersion_;
};

}  // namespace quillmont
