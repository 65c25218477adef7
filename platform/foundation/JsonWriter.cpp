#include "platform/foundation/JsonWriter.h"

#include <array>
#include <cassert>
#include <charconv>
#include <cmath>

namespace quillmont {
namespace {

// For each byte, 0 when it is written as is, else the letter after the
// backslash ('u' for the \u00xx form).
constexpr std::array<char, 256> escapeTable(bool escapeSlashes) {
  std::array<char, 256> table{};
  for (int c = 0; c < 0x20; ++c) table[c] = 'u';
  table['\b'] = 'b';
  table['\f'] = 'f';
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  table['"'] = '"';
  table['\\'] = '\\';
  if (escapeSlashes) table['/'] = '/';
  return table;
}

constexpr std::array<char, 256> escapesWithSlash = escapeTable(true);
constexpr std::array<char, 256> escapesWithoutSlash = escapeTable(false);

}  // namespace

JsonWriter::JsonWriter(std::string& output) : JsonWriter(output, Options{}) {}

JsonWriter::JsonWriter(std::string& output, Options options)
    : output_(output),
      options_(options),
      escapes_(options.escapeSlashes ? escapesWithSlash.data() : escapesWithoutSlash.data()) {}

void JsonWriter::beginObject() { beginContainer(true, '{'); }
void JsonWriter::endObject() { endContainer(true, '}'); }
void JsonWriter::beginArray() { beginContainer(false, '['); }
void JsonWriter::endArray() { endContainer(false, ']'); }

void JsonWriter::key(std::string_view name) {
  assert(!frames_.empty() && frames_.back().isObject && !afterKey_ && "key() outside an object or twice");
  Frame& frame = frames_.back();
#ifndef NDEBUG
  if (options_.sortedKeys) {
    assert((frame.isEmpty || frame.lastKey < name) && "keys out of order");
    frame.lastKey = name;
  }
#endif
  if (!frame.isEmpty) output_ += ',';
  frame.isEmpty = false;
  if (options_.prettyPrinted) newLine(frames_.size());
  writeString(name);
  output_.append(options_.prettyPrinted ? std::string_view(" : ") : std::string_view(":"));
  afterKey_ = true;
}

void JsonWriter::string(std::string_view text) {
  beforeValue();
  writeString(text);
}

void JsonWriter::integer(std::int64_t number) {
  beforeValue();
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  output_.append(buffer, result.ptr);
}

void JsonWriter::number(double value) {
  if (!std::isfinite(value)) throw JsonEncodingError("JSON has no representation for a NaN or an infinity");
  beforeValue();
  char buffer[32];  // the longest shortest form, e.g. -2.2250738585072014e-308, has 24
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  output_.append(buffer, result.ptr);
}

void JsonWriter::boolean(bool value) {
  beforeValue();
  output_.append(value ? std::string_view("true") : std::string_view("false"));
}

void JsonWriter::null() {
  beforeValue();
  output_.append("null");
}

void JsonWriter::beforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (frames_.empty()) {
    assert(!wroteTopLevelValue_ && "a second top-level value");
    wroteTopLevelValue_ = true;
    return;
  }
  Frame& frame = frames_.back();
  assert(!frame.isObject && "a value in an object without a key");
  if (!frame.isEmpty) output_ += ',';
  frame.isEmpty = false;
  if (options_.prettyPrinted) newLine(frames_.size());
}

void JsonWriter::beginContainer(bool isObject, char open) {
  beforeValue();
  output_ += open;
  frames_.push_back(Frame{isObject, true, {}});
}

void JsonWriter::endContainer(bool isObject, char close) {
  assert(!frames_.empty() && frames_.back().isObject == isObject && !afterKey_ && "mismatched end");
  (void)isObject;
  const bool wasEmpty = frames_.back().isEmpty;
  frames_.pop_back();
  if (options_.prettyPrinted && !wasEmpty) newLine(frames_.size());
  output_ += close;
}

void JsonWriter::newLine(std::size_t depth) {
  output_ += '\n';
  output_.append(2 * depth, ' ');
}

void JsonWriter::writeString(std::string_view text) {
  static constexpr char hexDigits[] = "0123456789abcdef";
  output_ += '"';
  const char* run = text.data();
  const char* const end = text.data() + text.size();
  for (const char* p = run; p != end; ++p) {
    const auto byte = static_cast<unsigned char>(*p);
    const char escape = escapes_[byte];
    if (escape == 0) continue;
    output_.append(run, p);
    if (escape == 'u') {
      const char sequence[] = {'\\', 'u', '0', '0', hexDigits[byte >> 4], hexDigits[byte & 0xF]};
      output_.append(sequence, sizeof sequence);
    } else {
      const char sequence[] = {'\\', escape};
      output_.append(sequence, sizeof sequence);
    }
    run = p + 1;
  }
  output_.append(run, end);
  output_ += '"';
}

}  // namespace quillmont
