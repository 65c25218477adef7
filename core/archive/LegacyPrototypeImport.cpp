#include "core/archive/LegacyPrototypeImport.h"

#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont::LegacyPrototypeImport {
namespace {

using JsonReader::Path;
using JsonReader::requiredKey;
using value = JsonReader::Value;

void readEntry(value& object, const Path& at, LegacyBalanceEntry& entry) {
  enum : std::size_t { id, minutes, date, note };
  static constexpr JsonReader::Key keys[] = {requiredKey("id"), requiredKey("minutes"), requiredKey("date"),
                                             requiredKey("note")};
  JsonReader::readObject(object, at, keys, [&entry](std::size_t key, value& field, const Path& fieldAt) {
    switch (key) {
      case id: entry.id = JsonReader::uuid(field, fieldAt); break;
      case minutes: entry.minutes = JsonReader::int64(field, fieldAt); break;
      case date: entry.date = Date(JsonReader::number(field, fieldAt)); break;
      case note: entry.note = JsonReader::string(field, fieldAt); break;
    }
  });
}

}  // namespace

std::vector<LegacyBalanceEntry> decode(std::string_view json) {
  return JsonReader::parse(json, [](value& root) {
    std::vector<LegacyBalanceEntry> entries;
    JsonReader::forEachElement(root, Path(), [&entries](value& element, const Path& at) {
      readEntry(element, at, entries.emplace_back());
    });
    return entries;
  });
}

std::string encode(std::span<const LegacyBalanceEntry> entries) {
  std::string output;
  JsonWriter writer(output);
  writer.beginArray();
  for (const LegacyBalanceEntry& entry : entries) {
    writer.beginObject();
    writer.key("id");
    writer.string(entry.id.uuidString());
    writer.key("minutes");
    writer.integer(entry.minutes);
    writer.key("date");
    writer.number(entry.date.timeIntervalSinceReferenceDate);
    writer.key("note");
    writer.string(entry.note);
    writer.endObject();
  }
  writer.endArray();
  return output;
}

}  // namespace quillmont::LegacyPrototypeImport
