#include "core/ledger/BalanceAdjustment.h"

#include <array>

#include "core/ledger/NoteValidation.h"

namespace quillmont {

std::span<const Attribute<BalanceAdjustment>> BalanceAdjustment::attributes() {
  static const std::array<Attribute<BalanceAdjustment>, 7> list{{
      {"id", &BalanceAdjustment::id_},
      {"date", &BalanceAdjustment::date_},
      {"minutes", &BalanceAdjustment::minutes_},
      {"note", &BalanceAdjustment::note_},
      {"kindRawValue", &BalanceAdjustment::kindRawValue_},
      {"createdAt", &BalanceAdjustment::createdAt_},
      {"modifiedAt", &BalanceAdjustment::modifiedAt_},
  }};
  return list;
}

BalanceAdjustment::BalanceAdjustment() : id_(UUID::random()), date_(Date::now()), createdAt_(date_), modifiedAt_(date_) {}

BalanceAdjustment::BalanceAdjustment(UUID id, Date date, std::int64_t minutes, std::string_view note,
                                     BalanceAdjustmentKind kind, Date createdAt, Date modifiedAt)
    : id_(id),
      date_(date),
      minutes_(minutes),
      note_(NoteValidation::normalized(note)),
      kindRawValue_(kind.rawValue()),
      createdAt_(createdAt),
      modifiedAt_(modifiedAt) {}

BalanceAdjustmentKind BalanceAdjustment::kind() const {
  return BalanceAdjustmentKind::fromRawValue(kindRawValue_).value_or(BalanceAdjustmentKind::manual);
}

void BalanceAdjustment::setKind(BalanceAdjustmentKind kind) { setKindRawValue(std::string(kind.rawValue())); }

AdjustmentCategoryOption BalanceAdjustment::category() const {
  return AdjustmentCategoryOption::resolve(kindRawValue_)
      .value_or(AdjustmentCategoryOption::builtIn(BalanceAdjustmentKind::manual));
}

}  // namespace quillmont
