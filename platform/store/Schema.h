// Schema: the record types a store keeps, each by name with its persisted
// attributes and their types, under a version. Built from the record
// classes' own attribute lists, so the store never repeats a field list.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/store/Attribute.h"

namespace quillmont {

enum class AttributeType { uuid, date, optionalDate, integer, text, boolean };

struct AttributeDescription {
  std::string name;
  AttributeType type;
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

struct Schema {
  std::string version;
  std::vector<EntityDescription> entities;

  /// The schema of record classes that each offer `entityName` and `attributes()`.
  template <class... Models>
  static Schema of(std::string version) {
    Schema schema{std::move(version), {}};
    (schema.entities.push_back(describe<Models>()), ...);
    return schema;
  }

 private:
  template <class Model>
  static EntityDescription describe() {
    EntityDescription entity{std::string(Model::entityName), {}};
    for (const auto& attribute : Model::attributes()) {
      entity.attributes.push_back({std::string(attribute.name), attributeType<Model>(attribute.member)});
    }
    return entity;
  }
};

}  // namespace quillmont
