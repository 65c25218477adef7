// JsonReader: typed reading on simdjson On-Demand, for decoders that read a
// document straight into their own structs without building a tree.
//
// A decoder hands the text to parse() with a callback that receives the
// top-level value (an object or an array), walks it with readObject() and
// forEachElement(), and converts leaves with int64(), number(), string(),
// boolean() and uuid(). Every failure, from text that is not JSON to a wrong
// type or a missing key, throws JsonDecodingError, whose message names the
// problem and where it is (`workEntries[3].breakMinutes: expected an
// integer, found a string`). Paths cost nothing until a message is built.
//
// What callers must guarantee:
// - Values are read once, in document order (the On-Demand contract): read
//   an object through readObject(), which visits its fields as they come.
// - The callback consumes the whole top-level value it is given (readObject
//   and forEachElement do; returning half-way reads as trailing content).
// - String views returned by string() live until parse() returns; under
//   parseConsuming(), only until the next element of an array is read:
//   copy what you keep.
#pragma once

#include "platform/foundation/UUID.h"

#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace quillmont {

/// The one error for every decoding failure.
class JsonDecodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

namespace JsonReader {

/// Spare bytes simdjson reads past the end of the text.
inline constexpr std::size_t padding = simdjson::SIMDJSON_PADDING;

/// Where a value sits in the document, e.g. `workEntries[3].breakMinutes`.
/// A path refers to its parent and to its key's characters: keep both alive
/// while it is used (paths made on the way down a decoder's call stack are).
class Path {
 public:
  /// The top-level value.
  constexpr Path() noexcept = default;

  constexpr Path member(std::string_view key) const noexcept { return Path(this, key, noIndex); }
  constexpr Path element(std::size_t index) const noexcept { return Path(this, {}, index); }

  /// "workEntries[3].breakMinutes"; "top level" for the top-level value.
  std::string description() const;

 private:
  static constexpr std::size_t noIndex = static_cast<std::size_t>(-1);
  constexpr Path(const Path* parent, std::string_view key, std::size_t index) noexcept
      : parent_(parent), key_(key), index_(index) {}
  void append(std::string& text) const;

  const Path* parent_ = nullptr;
  std::string_view key_;
  std::size_t index_ = noIndex;
};

/// A key a decoder knows in some object; make them with requiredKey() and
/// optionalKey().
struct Key {
  std::string_view name;
  bool isRequired;
};
constexpr Key requiredKey(std::string_view name) { return Key{name, true}; }
constexpr Key optionalKey(std::string_view name) { return Key{name, false}; }

// Leaf readers. Each throws JsonDecodingError naming `path` when the value
// has another type or is malformed.

/// Any number whose value is an integer in the signed 64-bit range: `2`,
/// `2.0`, `1e3`, `-9223372036854775808`. Plain integers are judged exactly; a
/// number with a fraction or exponent is judged by its nearest double (only
/// matters beyond 2^53).
std::int64_t int64(simdjson::ondemand::value& value, const Path& path);
/// Any number, integers beyond 64 bits included (as the nearest double).
double number(simdjson::ondemand::value& value, const Path& path);
std::string_view string(simdjson::ondemand::value& value, const Path& path);
bool boolean(simdjson::ondemand::value& value, const Path& path);
/// A string in the 8-4-4-4-12 form, letters in either case.
UUID uuid(simdjson::ondemand::value& value, const Path& path);
/// Whether the value is `null` (consuming it if so). Anything else is left
/// unread for the reader that follows, which reports a malformed literal.
bool isNull(simdjson::ondemand::value& value);

namespace detail {
[[noreturn]] void fail(simdjson::error_code error, const Path& path);
[[noreturn]] void failMissingKey(std::string_view key, const Path& path);
[[noreturn]] void failTrailingContent();
simdjson::ondemand::object object(simdjson::ondemand::value& value, const Path& path);
simdjson::ondemand::array array(simdjson::ondemand::value& value, const Path& path);
std::size_t findKey(std::span<const Key> keys, std::string_view key) noexcept;
std::string_view unescapedKey(simdjson::ondemand::field& field, const Path& path);
/// The characters of the string whose text begins at `first` (just after
/// its opening quote), when it is written without escapes: they are its
/// text, which the parser has checked (well-formed UTF-8, no raw control
/// characters, every string closed), so they are read where they lie
/// instead of being copied into the parser's string buffer, which never
/// shrinks while a document is read. Nothing for a string with escapes.
inline std::optional<std::string_view> plainText(const char* first) noexcept {
  const char* end = first;
  while (*end != '"' && *end != '\\') ++end;
  if (*end != '"') return std::nullopt;
  return std::string_view(first, static_cast<std::size_t>(end - first));
}
/// A field's key: in place when it has no escapes (every key a writer of
/// ours makes), else unescaped.
inline std::string_view key(simdjson::ondemand::field& field, const Path& path) {
  if (const auto plain = plainText(field.key().raw())) [[likely]] return *plain;
  return unescapedKey(field, path);
}
/// The text of a parseConsuming() under way on this thread, whose pages
/// before `releasedUpTo` are given back.
struct ConsumedText {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
  std::uintptr_t releasedUpTo = 0;
};
extern thread_local ConsumedText* consumedText;
/// Gives back the pages of the consumed text well behind where the reader
/// now is, when it has moved on far enough since the last time.
void releaseReadText(simdjson::ondemand::value& element) noexcept;
/// Makes `text` the consumed text of this thread while it lives.
class ConsumedTextScope {
 public:
  explicit ConsumedTextScope(const std::string& text) noexcept;
  ~ConsumedTextScope();
  ConsumedTextScope(const ConsumedTextScope&) = delete;
  ConsumedTextScope& operator=(const ConsumedTextScope&) = delete;

 private:
  ConsumedText text_;
  ConsumedText* previous_;
};
template <class Read>
using ReadResult = std::remove_cvref_t<std::invoke_result_t<Read&, simdjson::ondemand::value&>>;
simdjson::ondemand::document iterate(simdjson::ondemand::parser& parser, simdjson::padded_string_view json);
simdjson::ondemand::value rootValue(simdjson::ondemand::document& document);
}  // namespace detail

/// Reads the object `value` field by field in document order, calling
/// `read(index into keys, field value, path of the field)` for each field
/// whose key is one of `keys` and skipping the others; a key that appears
/// twice is read twice. Throws when `value` is not an object, and after the
/// last field names the first required key that never appeared.
template <std::size_t N, class Read>
void readObject(simdjson::ondemand::value& value, const Path& path, const Key (&keys)[N], Read&& read) {
  static_assert(N <= 64, "one object's keys are tracked in 64 bits");
  std::uint64_t seen = 0;
  std::size_t expected = 0;  // writers tend to put the keys in one order: the next one is tried first
  for (auto result : detail::object(value, path)) {
    simdjson::ondemand::field field;
    if (auto error = std::move(result).get(field)) [[unlikely]] detail::fail(error, path);
    const std::string_view name = detail::key(field, path);
    const std::size_t index = expected < N && keys[expected].name == name ? expected : detail::findKey(keys, name);
    expected = index + 1;
    if (index == N) continue;
    seen |= std::uint64_t{1} << index;
    read(index, field.value(), path.member(keys[index].name));
  }
  for (std::size_t index = 0; index < N; ++index) {
    if (keys[index].isRequired && !(seen & (std::uint64_t{1} << index))) {
      detail::failMissingKey(keys[index].name, path);
    }
  }
}

/// Reads the array `value`, calling `read(element value, path of the
/// element)` for each element in order. Throws when `value` is not an array.
template <class Read>
void forEachElement(simdjson::ondemand::value& value, const Path& path, Read&& read) {
  std::size_t index = 0;
  for (auto result : detail::array(value, path)) {
    simdjson::ondemand::value element;
    if (auto error = std::move(result).get(element)) [[unlikely]] detail::fail(error, path.element(index));
    read(element, path.element(index));
    if (detail::consumedText != nullptr) detail::releaseReadText(element);
    ++index;
  }
}

/// Parses `json` (after a UTF-8 byte-order mark, if it starts with one)
/// where it lies when it has `padding` spare bytes allocated
/// after its end (a simdjson::padded_string, or a string as below), else on
/// one padded copy. Calls `read` with the top-level value, which must be an
/// object or an array, and returns what `read` returns; throws when anything
/// but white space follows the top-level value.
template <class Read>
detail::ReadResult<Read> parseInPlace(simdjson::padded_string_view json, Read&& read) {
  // Some editors start UTF-8 files with a byte-order mark; it is not part of the JSON.
  if (std::string_view{json}.starts_with("\xEF\xBB\xBF")) {
    return parseInPlace(simdjson::padded_string_view(json.data() + 3, json.size() - 3, json.capacity() - 3), read);
  }
  if (json.padding() < padding) {
    const simdjson::padded_string copy(std::string_view{json});
    return parseInPlace(copy, read);
  }
  simdjson::ondemand::parser parser;
  simdjson::ondemand::document document = detail::iterate(parser, json);
  simdjson::ondemand::value root = detail::rootValue(document);
  auto finish = [&document] {
    // In bounds means something follows the top-level value.
    if (!document.current_location().error()) detail::failTrailingContent();
  };
  if constexpr (std::is_void_v<detail::ReadResult<Read>>) {
    read(root);
    finish();
  } else {
    detail::ReadResult<Read> result = read(root);
    finish();
    return result;
  }
}

/// parseInPlace() on a string, in place when its capacity leaves `padding`
/// spare bytes (reserve them before filling it).
template <class Read>
detail::ReadResult<Read> parseInPlace(const std::string& json, Read&& read) {
  return parseInPlace(simdjson::padded_string_view(json), read);
}

/// parseInPlace() on a text handed over to it, which it gives back to the
/// system as it goes: the pages read through, a megabyte behind the
/// reader, are dropped as the elements of arrays are read, so a large
/// document is not resident in whole beside what is decoded from it.
template <class Read>
detail::ReadResult<Read> parseConsuming(std::string json, Read&& read) {
  if (json.capacity() - json.size() < padding) json.reserve(json.size() + padding);
  const detail::ConsumedTextScope scope(json);
  return parseInPlace(json, read);
}

/// parseInPlace() on one padded copy of `json`.
template <class Read>
detail::ReadResult<Read> parse(std::string_view json, Read&& read) {
  return parseInPlace(simdjson::padded_string_view(json, json.size()), read);
}

/// The strings of a top-level JSON array of strings; nothing when the text
/// is not JSON or is JSON of another shape. Never throws JsonDecodingError.
std::optional<std::vector<std::string>> stringArray(std::string_view json);

}  // namespace JsonReader
}  // namespace quillmont
