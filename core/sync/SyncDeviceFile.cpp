#include "core/sync/SyncDeviceFile.h"

#include <cmath>

#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont {
namespace {

using value = JsonReader::Value;

Date instant(value& field, const JsonReader::Path& at) {
  const double seconds = JsonReader::number(field, at);
  if (!std::isfinite(seconds)) throw JsonDecodingError(at.description() + ": expected a finite instant");
  return Date::fromTimeIntervalSince1970(seconds);
}

}  // namespace

std::string SyncDeviceFile::encodedJSON() const {
  std::string output;
  JsonWriter writer(output, JsonWriter::Options{.prettyPrinted = false, .escapeSlashes = false});
  writer.beginObject();
  writer.key("deletions");
  writer.beginArray();
  for (const auto& deletion : deletions) {
    writer.beginObject();
    writer.key("deletedAt");
    writer.number(deletion.deletedAt.timeIntervalSince1970());
    writer.key("id");
    writer.string(deletion.id.uuidString());
    writer.key("type");
    writer.string(deletion.entity);
    writer.endObject();
  }
  writer.endArray();
  writer.key("device");
  writer.string(device.uuidString());
  writer.key("holidays");
  writer.beginArray();
  for (const auto& holiday : holidays) {
    writer.beginObject();
    writer.key("day");
    writer.string(holiday.day);
    writer.key("name");
    writer.string(holiday.name);
    writer.key("uid");
    writer.string(holiday.uid);
    writer.endObject();
  }
  writer.endArray();
  writer.key("name");
  writer.string(name);
  writer.key("writtenAt");
  writer.number(writtenAt.timeIntervalSince1970());
  writer.endObject();
  return output;
}

SyncDeviceFile SyncDeviceFile::decodeJSON(std::string_view json) {
  using JsonReader::requiredKey;
  using JsonReader::optionalKey;
  static constexpr JsonReader::Key keys[] = {requiredKey("deletions"), requiredKey("device"), requiredKey("name"),
                                             requiredKey("writtenAt"), optionalKey("holidays")};
  static constexpr JsonReader::Key holidayKeys[] = {requiredKey("day"), requiredKey("name"), requiredKey("uid")};
  static constexpr JsonReader::Key deletionKeys[] = {requiredKey("deletedAt"), requiredKey("id"),
                                                     requiredKey("type")};
  return JsonReader::parse(json, [](value& root) {
    SyncDeviceFile file;
    JsonReader::readObject(root, JsonReader::Path(), keys, [&](std::size_t key, value& field, const JsonReader::Path& at) {
      switch (key) {
        case 0:
          JsonReader::forEachElement(field, at, [&](value& element, const JsonReader::Path& elementAt) {
            DeletionLog::Entry deletion;
            JsonReader::readObject(element, elementAt, deletionKeys,
                                   [&](std::size_t member, value& item, const JsonReader::Path& itemAt) {
                                     switch (member) {
                                       case 0: deletion.deletedAt = instant(item, itemAt); break;
                                       case 1: deletion.id = JsonReader::uuid(item, itemAt); break;
                                       default: deletion.entity = std::string(JsonReader::string(item, itemAt)); break;
                                     }
                                   });
            file.deletions.push_back(std::move(deletion));
          });
          break;
        case 1: file.device = JsonReader::uuid(field, at); break;
        case 2: file.name = std::string(JsonReader::string(field, at)); break;
        case 3: file.writtenAt = instant(field, at); break;
        default:
          JsonReader::forEachElement(field, at, [&](value& element, const JsonReader::Path& elementAt) {
            HolidayList::Entry holiday;
            JsonReader::readObject(element, elementAt, holidayKeys,
                                   [&](std::size_t member, value& item, const JsonReader::Path& itemAt) {
                                     std::string text(JsonReader::string(item, itemAt));
                                     switch (member) {
                                       case 0: holiday.day = std::move(text); break;
                                       case 1: holiday.name = std::move(text); break;
                                       default: holiday.uid = std::move(text); break;
                                     }
                                   });
            file.holidays.push_back(std::move(holiday));
          });
          break;
      }
    });
    return file;
  });
}

}  // namespace quillmont
