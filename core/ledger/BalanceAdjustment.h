// BalanceAdjustment: a booking of minutes into (positive) or out of
// (negative) the bank, counted on the calendar day of `date`, in a category
// named by `kindRawValue` (a built-in kind or a custom category). A
// persisted record: the constructor normalises the note only; setters store
// what they are given.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "core/ledger/AdjustmentCategoryOption.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Attribute.h"
#include "platform/store/PersistentModel.h"

namespace quillmont {

class BalanceAdjustment final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "BalanceAdjustment";
  static std::span<const Attribute<BalanceAdjustment>> attributes();

  BalanceAdjustment();
  explicit BalanceAdjustment(ForLoading) {}
  BalanceAdjustment(UUID id, Date date, std::int64_t minutes, std::string_view note, BalanceAdjustmentKind kind,
                    Date createdAt, Date modifiedAt);

  const UUID& id() const { return id_; }
  Date date() const { return date_; }
  std::int64_t minutes() const { return minutes_; }
  const std::string& note() const { return note_; }
  const std::string& kindRawValue() const { return kindRawValue_; }
  Date createdAt() const { return createdAt_; }
  Date modifiedAt() const { return modifiedAt_; }

  void setId(UUID value) { assign(id_, value); }
  void setDate(Date value) { assign(date_, value); }
  void setMinutes(std::int64_t value) { assign(minutes_, value); }
  void setNote(std::string value) { assign(note_, std::move(value)); }
  void setKindRawValue(std::string value) { assign(kindRawValue_, std::move(value)); }
  void setCreatedAt(Date value) { assign(createdAt_, value); }
  void setModifiedAt(Date value) { assign(modifiedAt_, value); }

  /// The built-in kind named by `kindRawValue`; manual for anything else
  /// (custom categories included).
  BalanceAdjustmentKind kind() const;
  void setKind(BalanceAdjustmentKind kind);
  /// The option of `kindRawValue`, or the manual option when it names none.
  AdjustmentCategoryOption category() const;

 private:
  UUID id_;
  Date date_;
  std::int64_t minutes_ = 0;
  std::string note_;
  std::string kindRawValue_{"manual"};
  Date createdAt_;
  Date modifiedAt_;
};

}  // namespace quillmont
