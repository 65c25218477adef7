// WorkEntry: one interval of worked time, typed in or recorded by the timer
// (running while `endedAt` is absent). A persisted record: constructors
// normalise the break (never negative) and the note; setters store what
// they are given, and code that edits entries applies its own rules.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Attribute.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class WorkEntry final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "WorkEntry";
  static std::span<const Attribute<WorkEntry>> attributes();

  /// Every attribute at its default: a new id, the current time, no end.
  WorkEntry();
  explicit WorkEntry(ForLoading) {}
  WorkEntry(UUID id, Date startedAt, std::optional<Date> endedAt, std::int64_t breakMinutes, std::string_view note,
            Date createdAt, Date modifiedAt);

  const UUID& id() const { return id_; }
  Date startedAt() const { return startedAt_; }
  std::optional<Date> endedAt() const { return endedAt_; }
  std::int64_t breakMinutes() const { return breakMinutes_; }
  const std::string& note() const { return note_; }
  Date createdAt() const { return createdAt_; }
  Date modifiedAt() const { return modifiedAt_; }

  void setId(UUID value) { assign(id_, value); }
  void setStartedAt(Date value) { assign(startedAt_, value); }
  void setEndedAt(std::optional<Date> value) { assign(endedAt_, value); }
  void setBreakMinutes(std::int64_t value) { assign(breakMinutes_, value); }
  void setNote(std::string value) { assign(note_, std::move(value)); }
  void setCreatedAt(Date value) { assign(createdAt_, value); }
  void setModifiedAt(Date value) { assign(modifiedAt_, value); }

  bool isRunning() const { return !endedAt_.has_value(); }
  /// Seconds from start to end (or `asOf` while running) less the break
  /// (negative breaks count as 0); never negative.
  TimeInterval workedSeconds(Date asOf) const;

 private:
  UUID id_;
  Date startedAt_;
  std::optional<Date> endedAt_;
  std::int64_t breakMinutes_ = 0;
  std::string note_;
  Date createdAt_;
  Date modifiedAt_;
};

}  // namespace quillmont
