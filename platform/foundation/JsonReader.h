// JsonReader: typed reading of a JSON document straight into a decoder's own
// structs, without building a tree.
//
// A decoder hands the text to parse() with a callback that receives the
// top-level value (an object or an array), walks it with readObject() and
// forEachElement(), and converts leaves with int64(), number(), string(),
// boolean() and uuid(). Every failure, from text that is not JSON to a wrong
// type or a missing key, throws JsonDecodingError, whose message names the
// problem and where it is (`workEntries[3].breakMinutes: expected an
// integer, found a string`). Paths cost nothing until a message is built.
//
// The reader is a forward-only cursor over the text: the whole text is
// checked to be UTF-8 first, then each value is read where it lies as the
// decoder asks for it. Strings without escapes are views of the text;
// strings with escapes are decoded by RapidJSON's reader. Values a decoder
// does not ask for are skipped, and checked as they are skipped.
//
// What callers must guarantee:
// - Values are read once, in document order: read an object through
//   readObject(), which visits its fields as they come. A value the callback
//   leaves unread is skipped when the next one is read.
// - String views returned by string() live until parse() returns; under
//   parseConsuming(), only until the next element of an array is read:
//   copy what you keep.
#pragma once

#include "platform/foundation/UUID.h"

#include <cstddef>
#include <cstdint>
#include <deque>
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

namespace detail {
/// The reader's place in a document being read.
struct Cursor {
  const char* position = nullptr;  // the next character that is not white space
  const char* end = nullptr;
  /// The text is the reader's own (parseConsuming): escaped strings are
  /// decoded into it where they lie, and pages read through are given back.
  char* ownText = nullptr;
  std::uintptr_t releasedUpTo = 0;  // own text: pages before this were given back
  std::uintptr_t releasableEnd = 0;  // own text: the last whole page's end
  /// Decoded escaped strings of a text that is not the reader's own.
  std::deque<std::string> decoded;
};
}  // namespace detail

/// A value in a document being read: the one at the reader's place when it
/// was handed out. Read it once with one of the readers below.
class Value {
 public:
  /// Where the value's text begins.
  const char* location() const noexcept { return start_; }

 private:
  friend struct ValueAccess;
  Value(detail::Cursor& cursor) noexcept : cursor_(&cursor), start_(cursor.position) {}
  detail::Cursor* cursor_;
  const char* start_;
};

/// What a value is, judged by its first character.
enum class Type { object, array, string, number, boolean, null };

// Leaf readers. Each throws JsonDecodingError naming `path` when the value
// has another type or is malformed.

/// Any number whose value is an integer in the signed 64-bit range: `2`,
/// `2.0`, `1e3`, `-9223372036854775808`. Plain integers are judged exactly; a
/// number with a fraction or exponent is judged by its nearest double (only
/// matters beyond 2^53).
std::int64_t int64(Value& value, const Path& path);
/// Any number, integers beyond 64 bits included (as the nearest double).
double number(Value& value, const Path& path);
std::string_view string(Value& value, const Path& path);
bool boolean(Value& value, const Path& path);
/// A string in the 8-4-4-4-12 form, letters in either case.
UUID uuid(Value& value, const Path& path);
/// Whether the value is `null` (consuming it if so). Anything else is left
/// unread for the reader that follows.
bool isNull(Value& value);
/// The value's type, leaving it unread; throws for text that starts no value.
Type type(Value& value, const Path& path);

struct ValueAccess {
  static detail::Cursor& cursor(Value& value) noexcept { return *value.cursor_; }
  static Value at(detail::Cursor& cursor) noexcept { return Value(cursor); }
};

namespace detail {
[[noreturn]] void failMissingKey(std::string_view key, const Path& path);
/// Enters the object `value`; throws when it is another type.
void beginObject(Value& value, const Path& path);
/// Moves to the next field of the object entered, reading its key into
/// `key`; false after the last.
bool nextField(Cursor& cursor, const Path& path, bool& first, std::string_view& key);
void beginArray(Value& value, const Path& path);
bool nextElement(Cursor& cursor, const Path& path, bool& first);
/// Skips `value` when the reader is still at it (nobody read it).
void finish(Value& value, const Path& path);
/// Gives back the pages of the reader's own text well behind its place.
void releaseReadText(Cursor& cursor) noexcept;
std::size_t findKey(std::span<const Key> keys, std::string_view key) noexcept;
void begin(Cursor& cursor, std::string_view json, char* ownText);
void end(Cursor& cursor);
template <class Read>
using ReadResult = std::remove_cvref_t<std::invoke_result_t<Read&, Value&>>;
}  // namespace detail

/// Reads the object `value` field by field in document order, calling
/// `read(index into keys, field value, path of the field)` for each field
/// whose key is one of `keys` and skipping the others; a key that appears
/// twice is read twice. Throws when `value` is not an object, and after the
/// last field names the first required key that never appeared.
template <std::size_t N, class Read>
void readObject(Value& value, const Path& path, const Key (&keys)[N], Read&& read) {
  static_assert(N <= 64, "one object's keys are tracked in 64 bits");
  std::uint64_t seen = 0;
  std::size_t expected = 0;  // writers tend to put the keys in one order: the next one is tried first
  detail::Cursor& cursor = ValueAccess::cursor(value);
  detail::beginObject(value, path);
  bool first = true;
  std::string_view name;
  while (detail::nextField(cursor, path, first, name)) {
    const std::size_t index = expected < N && keys[expected].name == name ? expected : detail::findKey(keys, name);
    expected = index + 1;
    Value field = ValueAccess::at(cursor);
    if (index == N) {
      detail::finish(field, path.member(name));
      continue;
    }
    seen |= std::uint64_t{1} << index;
    const Path fieldPath = path.member(keys[index].name);
    read(index, field, fieldPath);
    detail::finish(field, fieldPath);
  }
  for (std::size_t index = 0; index < N; ++index) {
    if (keys[index].isRequired && !(seen & (std::uint64_t{1} << index))) {
      detail::failMissingKey(keys[index].name, path);
    }
  }
}

/// Reads the object `value`, calling `read(key, field value, path of the
/// field)` for every field in document order. The key's characters live as
/// long as a string() would.
template <class Read>
void forEachField(Value& value, const Path& path, Read&& read) {
  detail::Cursor& cursor = ValueAccess::cursor(value);
  detail::beginObject(value, path);
  bool first = true;
  std::string_view name;
  while (detail::nextField(cursor, path, first, name)) {
    Value field = ValueAccess::at(cursor);
    const Path fieldPath = path.member(name);
    read(name, field, fieldPath);
    detail::finish(field, fieldPath);
  }
}

/// Reads the array `value`, calling `read(element value, path of the
/// element)` for each element in order. Throws when `value` is not an array.
template <class Read>
void forEachElement(Value& value, const Path& path, Read&& read) {
  detail::Cursor& cursor = ValueAccess::cursor(value);
  detail::beginArray(value, path);
  bool first = true;
  std::size_t index = 0;
  while (detail::nextElement(cursor, path, first)) {
    Value element = ValueAccess::at(cursor);
    const Path elementPath = path.element(index);
    read(element, elementPath);
    detail::finish(element, elementPath);
    if (cursor.ownText != nullptr) detail::releaseReadText(cursor);
    ++index;
  }
}

namespace detail {
template <class Read>
ReadResult<Read> read(std::string_view json, char* ownText, Read& read) {
  Cursor cursor;
  begin(cursor, json, ownText);
  Value root = ValueAccess::at(cursor);
  if constexpr (std::is_void_v<ReadResult<Read>>) {
    read(root);
    finish(root, Path());
    end(cursor);
  } else {
    ReadResult<Read> result = read(root);
    finish(root, Path());
    end(cursor);
    return result;
  }
}
}  // namespace detail

/// Parses `json` (after a UTF-8 byte-order mark, if it starts with one) where
/// it lies. Calls `read` with the top-level value, which must be an object or
/// an array, and returns what `read` returns; throws when anything but white
/// space follows the top-level value.
template <class Read>
detail::ReadResult<Read> parse(std::string_view json, Read&& read) {
  return detail::read(json, nullptr, read);
}

/// parse() on a text handed over to it, which it decodes escaped strings
/// into and gives back to the system as it goes: the pages read through, a
/// megabyte behind the reader, are dropped as the elements of arrays are
/// read, so a large document is not resident in whole beside what is decoded
/// from it.
template <class Read>
detail::ReadResult<Read> parseConsuming(std::string json, Read&& read) {
  return detail::read(json, json.data(), read);
}

/// The strings of a top-level JSON array of strings; nothing when the text
/// is not JSON or is JSON of another shape. Never throws JsonDecodingError.
std::optional<std::vector<std::string>> stringArray(std::string_view json);

}  // namespace JsonReader
}  // namespace quillmont
