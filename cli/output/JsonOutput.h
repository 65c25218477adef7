// JsonOutput: the JSON documents that `--json` prints instead of a table, in
// one shape everywhere (see the README's "JSON output"): objects with keys in
// a fixed order, instants as ISO 8601 with the offset of the user's zone,
// days as YYYY-MM-DD, every duration twice, as a number of seconds
// ("<name>Seconds") and as the text the tables show ("<name>").
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "app/text/Display.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont::JsonOutput {

/// Builds a document with `write` and prints it on standard output,
/// pretty-printed and ending in a line feed.
void print(const std::function<void(JsonWriter&)>& write);

/// "<name>Seconds": the seconds; "<name>": signed text ("+1:30", "−0:45").
void amount(JsonWriter& writer, std::string_view name, double seconds);
/// "<name>Seconds": the seconds; "<name>": unsigned text ("7:45").
void duration(JsonWriter& writer, std::string_view name, double seconds);
/// "<name>": the instant in ISO 8601 with offset, or null.
void instant(JsonWriter& writer, std::string_view name, std::optional<Date> date, const Display& display);
/// "<name>": a text, or null.
void text(JsonWriter& writer, std::string_view name, const std::optional<std::string>& value);

}  // namespace quillmont::JsonOutput
