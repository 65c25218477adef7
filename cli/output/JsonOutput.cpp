#include "cli/output/JsonOutput.h"

#include "cli/output/Terminal.h"

namespace quillmont::JsonOutput {

void print(const std::function<void(JsonWriter&)>& write) {
  std::string document;
  JsonWriter writer(document, JsonWriter::Options{.prettyPrinted = true, .escapeSlashes = false, .sortedKeys = false});
  write(writer);
  document += '\n';
  Terminal::write(document);
}

void amount(JsonWriter& writer, std::string_view name, double seconds) {
  writer.key(std::string(name) + "Seconds");
  writer.number(seconds);
  writer.key(name);
  writer.string(Display::amount(seconds));
}

void duration(JsonWriter& writer, std::string_view name, double seconds) {
  writer.key(std::string(name) + "Seconds");
  writer.number(seconds);
  writer.key(name);
  writer.string(Display::duration(seconds));
}

void instant(JsonWriter& writer, std::string_view name, std::optional<Date> date, const Display& display) {
  writer.key(name);
  if (date) {
    writer.string(display.timestamp(*date));
  } else {
    writer.null();
  }
}

void text(JsonWriter& writer, std::string_view name, const std::optional<std::string>& value) {
  writer.key(name);
  if (value) {
    writer.string(*value);
  } else {
    writer.null();
  }
}

}  // namespace quillmont::JsonOutput
