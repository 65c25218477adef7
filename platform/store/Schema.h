// Schema: the record types a store keeps, each by name with its persisted
// attributes, their types and defaults, under a version ("major.minor...",
// dotted numbers). Built from the record classes' own attribute lists, so the
// store never repeats a field list. An attribute's default is its value in a
// record made for loading; a store that gains a column fills old rows with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/PersistentModel.h"

#include "platform/store/Attribute.h"

namespace quillmont {

enum class AttributeType { uuid, date, optionalDate, integer, text, boolean };

/// A value of one attribute; the alternatives follow AttributeType's order.
using AttributeValue = std::variant<UUID, Date, std::optional<Date>, std::int64_t, std::string, bool>;

struct AttributeDescription {
  std::string name;
  AttributeType type;
  AttributeValue defaultValue;
};

struct EntityDescription {
  std::string name;
  std::vector<AttributeDescription> attributes;
};

template <class Model>
AttributeType attributeType(const typename Attribute<Model>::Member& member) {
  static constexpr AttributeType types[] = {AttributeType::uuid, AttributeType::date, AttributeType::optionalDate,
                                            AttributeType::integer, AttributeType::text, AttributeType::boolean};
  return types[member.index()];
}

/// An index the store keeps on some columns of one record type: a lookup
/// aid only, so it changes neither the version nor what an older program
/// sees, and a store that cannot be written does without it.
struct IndexDescription {
  std::string entity;
  std::vector<std::string> columns;

  /// The index's name in the file: entity and columns, joined by dots.
  std::string name() const {
    std::string text = entity;
    for (const auto& column : columns) text += '.' + column;
    return text;
  }
};

struct Schema {
  std::string version;
  std::vector<EntityDescription> entities;
  std::vector<IndexDescription> indexes;

  /// The schema of record classes that each offer `entityName` and `attributes()`.
  template <class... Models>
  static Schema of(std::string version) {
    Schema schema{std::move(version), {}, {}};
    (schema.entities.push_back(describe<Models>()), ...);
    return schema;
  }

 private:
  template <class Model>
  static EntityDescription describe() {
    EntityDescription entity{std::string(Model::entityName), {}};
    const Model prototype{PersistentModel::ForLoading{}};
    for (const auto& attribute : Model::attributes()) {
      AttributeValue defaultValue = std::visit(
          [&](auto member) {
            using Value = std::remove_cvref_t<decltype(prototype.*member)>;
            return AttributeValue(std::in_place_type<Value>, prototype.*member);
          },
          attribute.member);
      entity.attributes.push_back(
          {std::string(attribute.name), attributeType<Model>(attribute.member), std::move(defaultValue)});
    }
    return entity;
  }
};

}  // namespace quillmont
