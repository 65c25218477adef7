// Attribute: one persisted attribute of a record class, by its persisted
// name and a pointer to the member that holds it. Each record class lists
// its attributes once (`Record::attributes()`); the store maps them to
// columns from that list, so no field list is written twice.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

template <class Model>
struct Attribute {
  using Member = std::variant<UUID Model::*, Date Model::*, std::optional<Date> Model::*, std::int64_t Model::*,
                              std::string Model::*, bool Model::*>;
  std::string_view name;
  Member member;
};

}  // namespace quillmont
