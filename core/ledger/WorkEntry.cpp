#include "core/ledger/WorkEntry.h"

#include <algorithm>
#include <array>

#include "core/ledger/NoteValidation.h"

namespace quillmont {

std::span<const Attribute<WorkEntry>> WorkEntry::attributes() {
  static const std::array<Attribute<WorkEntry>, 7> list{{
      {"id", &WorkEntry::id_},
      {"startedAt", &WorkEntry::startedAt_},
      {"endedAt", &WorkEntry::endedAt_},
      {"breakMinutes", &WorkEntry::breakMinutes_},
      {"note", &WorkEntry::note_},
      {"createdAt", &WorkEntry::createdAt_},
      {"modifiedAt", &WorkEntry::modifiedAt_},
  }};
  return list;
}

WorkEntry::WorkEntry() : id_(UUID::random()), startedAt_(Date::now()), createdAt_(startedAt_), modifiedAt_(startedAt_) {}

WorkEntry::WorkEntry(UUID id, Date startedAt, std::optional<Date> endedAt, std::int64_t breakMinutes,
                     std::string_view note, Date createdAt, Date modifiedAt)
    : id_(id),
      startedAt_(startedAt),
      endedAt_(endedAt),
      breakMinutes_(std::max<std::int64_t>(breakMinutes, 0)),
      note_(NoteValidation::normalized(note)),
      createdAt_(createdAt),
      modifiedAt_(modifiedAt) {}

TimeInterval WorkEntry::workedSeconds(Date asOf) const {
  const Date end = endedAt_.value_or(asOf);
  const TimeInterval worked = (end - startedAt_) - static_cast<double>(std::max<std::int64_t>(breakMinutes_, 0)) * 60.0;
  return worked >= 0 ? worked : 0;
}

}  // namespace quillmont
