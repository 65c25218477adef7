#include "app/sync/SyncState.h"

#include <algorithm>

#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont {
namespace {

using value = JsonReader::Value;

void writeInstant(JsonWriter& writer, std::string_view key, Date date) {
  writer.key(key);
  writer.number(date.timeIntervalSince1970());
}

Date readInstant(value& field, const JsonReader::Path& at) {
  return Date::fromTimeIntervalSince1970(JsonReader::number(field, at));
}

}  // namespace

SyncState::Device& SyncState::device(const UUID& id) {
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const Device& known) { return known.id == id; });
  if (found != devices.end()) return *found;
  devices.push_back(Device{id, {}, std::nullopt, {}, Date(), {}});
  return devices.back();
}

std::string SyncState::encodedJSON() const {
  std::string output;
  JsonWriter writer(output, JsonWriter::Options{.prettyPrinted = false, .escapeSlashes = false});
  writer.beginObject();
  writer.key("devices");
  writer.beginArray();
  for (const Device& known : devices) {
    writer.beginObject();
    writer.key("id");
    writer.string(known.id.uuidString());
    writer.key("name");
    writer.string(known.name);
    writer.key("problem");
    writer.string(known.problem);
    writeInstant(writer, "readAt", known.readAt);
    writer.key("stamp");
    writer.string(known.stamp);
    if (known.writtenAt) writeInstant(writer, "writtenAt", *known.writtenAt);
    writer.endObject();
  }
  writer.endArray();
  if (lastExchangeAt) writeInstant(writer, "lastExchangeAt", *lastExchangeAt);
  writer.key("lastReport");
  writer.beginArray();
  for (const auto& line : lastReport) writer.string(line);
  writer.endArray();
  writer.key("ownSignature");
  writer.string(ownSignature);
  writer.key("ownStamp");
  writer.string(ownStamp);
  writer.endObject();
  return output;
}

SyncState SyncState::decodeJSON(std::string_view json) {
  using JsonReader::optionalKey;
  using JsonReader::requiredKey;
  static constexpr JsonReader::Key keys[] = {requiredKey("devices"), optionalKey("lastExchangeAt"),
                                             requiredKey("lastReport"), requiredKey("ownSignature"),
                                             requiredKey("ownStamp")};
  static constexpr JsonReader::Key deviceKeys[] = {requiredKey("id"),    requiredKey("name"),
                                                   requiredKey("problem"), requiredKey("readAt"),
                                                   requiredKey("stamp"), optionalKey("writtenAt")};
  return JsonReader::parse(json, [](value& root) {
    SyncState state;
    JsonReader::readObject(root, JsonReader::Path(), keys, [&](std::size_t key, value& field, const JsonReader::Path& at) {
      switch (key) {
        case 0:
          JsonReader::forEachElement(field, at, [&](value& element, const JsonReader::Path& elementAt) {
            Device known{UUID(), {}, std::nullopt, {}, Date(), {}};
            JsonReader::readObject(element, elementAt, deviceKeys,
                                   [&](std::size_t member, value& item, const JsonReader::Path& itemAt) {
                                     switch (member) {
                                       case 0: known.id = JsonReader::uuid(item, itemAt); break;
                                       case 1: known.name = std::string(JsonReader::string(item, itemAt)); break;
                                       case 2: known.problem = std::string(JsonReader::string(item, itemAt)); break;
                                       case 3: known.readAt = readInstant(item, itemAt); break;
                                       case 4: known.stamp = std::string(JsonReader::string(item, itemAt)); break;
                                       default: known.writtenAt = readInstant(item, itemAt); break;
                                     }
                                   });
            state.devices.push_back(std::move(known));
          });
          break;
        case 1: state.lastExchangeAt = readInstant(field, at); break;
        case 2:
          JsonReader::forEachElement(field, at, [&](value& element, const JsonReader::Path& elementAt) {
            state.lastReport.emplace_back(JsonReader::string(element, elementAt));
          });
          break;
        case 3: state.ownSignature = std::string(JsonReader::string(field, at)); break;
        default: state.ownStamp = std::string(JsonReader::string(field, at)); break;
      }
    });
    return state;
  });
}

}  // namespace quillmont
