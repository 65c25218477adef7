// WorkSchedule: the minutes expected on each weekday from `effectiveFrom`
// on. The user keeps a history of schedules; the balance engine picks the one
// that governs each day. Constructors and the weekdayMinutes setter clamp to
// 0...1440 (missing elements 0); single-day setters store what they are given.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/ledger/WeeklyMinutesModel.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Attribute.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class WorkSchedule final : public WeeklyMinutesModel {
 public:
  static constexpr std::string_view entityName = "WorkSchedule";
  static std::span<const Attribute<WorkSchedule>> attributes();

  WorkSchedule();
  explicit WorkSchedule(ForLoading) {}
  WorkSchedule(UUID id, Date effectiveFrom, std::span<const std::int64_t> weekdayMinutes, Date createdAt,
               Date modifiedAt);

  const UUID& id() const { return id_; }
  Date effectiveFrom() const { return effectiveFrom_; }
  Date createdAt() const { return createdAt_; }
  Date modifiedAt() const { return modifiedAt_; }

  void setId(UUID value) { assign(id_, value); }
  void setEffectiveFrom(Date value) { assign(effectiveFrom_, value); }
  void setCreatedAt(Date value) { assign(createdAt_, value); }
  void setModifiedAt(Date value) { assign(modifiedAt_, value); }

 private:
  UUID id_;
  Date effectiveFrom_;
  Date createdAt_;
  Date modifiedAt_;
};

}  // namespace quillmont
