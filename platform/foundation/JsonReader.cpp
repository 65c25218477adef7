#include "platform/foundation/JsonReader.h"

#include "platform/foundation/Text.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bitset>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace quillmont::JsonReader {
namespace {

using detail::Cursor;

[[noreturn]] void failAt(const Path& path, std::string_view problem) {
  std::string message = path.description();
  message += ": ";
  message += problem;
  throw JsonDecodingError(message);
}

[[noreturn]] void failSyntax(const Path& path, std::string_view reason) {
  std::string problem = "not valid JSON: ";
  problem += reason;
  failAt(path, problem);
}

constexpr bool isSpace(char c) noexcept { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

inline void skipSpace(Cursor& cursor) noexcept {
  while (cursor.position != cursor.end && isSpace(*cursor.position)) ++cursor.position;
}

// Whether a scalar may end at `at`: white space, punctuation that follows a
// value, or the end of the text.
inline bool endsScalar(const Cursor& cursor, const char* at) noexcept {
  return at == cursor.end || isSpace(*at) || *at == ',' || *at == '}' || *at == ']';
}

// The cursor must still be at the value: each value is read once, in order.
Cursor& at(Value& value, const Path& path) {
  Cursor& cursor = ValueAccess::cursor(value);
  if (cursor.position != value.location()) [[unlikely]] failAt(path, "read out of order");
  return cursor;
}

// The characters of the literal `word` (true, false, null) at the cursor,
// consumed; false, leaving them, when another value is there.
bool takeLiteral(Cursor& cursor, std::string_view word) noexcept {
  const auto available = static_cast<std::size_t>(cursor.end - cursor.position);
  if (available < word.size() || std::memcmp(cursor.position, word.data(), word.size()) != 0) return false;
  if (!endsScalar(cursor, cursor.position + word.size())) return false;
  cursor.position += word.size();
  skipSpace(cursor);
  return true;
}

std::optional<Type> typeAt(const Cursor& cursor) noexcept {
  if (cursor.position == cursor.end) return std::nullopt;
  switch (*cursor.position) {
    case '{': return Type::object;
    case '[': return Type::array;
    case '"': return Type::string;
    case 't':
    case 'f': return Type::boolean;
    case 'n': return Type::null;
    case '-':
    case '0': case '1': case '2': case '3': case '4':
    case '5': case '6': case '7': case '8': case '9': return Type::number;
    default: return std::nullopt;
  }
}

std::string_view typeName(Type type) {
  switch (type) {
    case Type::array: return "an array";
    case Type::object: return "an object";
    case Type::number: return "a number";
    case Type::string: return "a string";
    case Type::boolean: return "a Boolean";
    case Type::null: return "null";
  }
  return "something else";
}

// Reports a value of another type than `expected`, or text that is no value.
[[noreturn]] void failType(Cursor& cursor, const Path& path, std::string_view expected) {
  const std::optional<Type> type = typeAt(cursor);
  if (!type) failSyntax(path, cursor.position == cursor.end ? "a value is missing" : "unexpected character");
  if (*type == Type::boolean && !takeLiteral(cursor, *cursor.position == 't' ? "true" : "false")) {
    failSyntax(path, "malformed literal");
  }
  if (*type == Type::null && !takeLiteral(cursor, "null")) failSyntax(path, "malformed literal");
  std::string problem = "expected ";
  problem += expected;
  problem += ", found ";
  problem += typeName(*type);
  failAt(path, problem);
}

// A number's text as written, for messages (long ones cut short).
std::string shortened(std::string_view token) {
  constexpr std::size_t limit = 40;
  return token.size() <= limit ? std::string(token) : std::string(token.substr(0, limit)) + "...";
}

struct NumberText {
  std::string_view text;
  bool isInteger;
};

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// The number at the cursor, consumed: -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
NumberText takeNumber(Cursor& cursor, const Path& path) {
  const char* const first = cursor.position;
  const char* const end = cursor.end;
  const char* p = first;
  const auto digits = [&] {
    if (p == end || !isDigit(*p)) failSyntax(path, "malformed number");
    while (p != end && isDigit(*p)) ++p;
  };
  if (p != end && *p == '-') ++p;
  if (p != end && *p == '0') {
    ++p;
  } else {
    digits();
  }
  bool isInteger = true;
  if (p != end && *p == '.') {
    ++p;
    digits();
    isInteger = false;
  }
  if (p != end && (*p == 'e' || *p == 'E')) {
    ++p;
    if (p != end && (*p == '+' || *p == '-')) ++p;
    digits();
    isInteger = false;
  }
  if (!endsScalar(cursor, p)) failSyntax(path, "malformed number");
  cursor.position = p;
  skipSpace(cursor);
  return {std::string_view(first, static_cast<std::size_t>(p - first)), isInteger};
}

// The nearest double to a well-formed number; nothing when it is beyond the
// largest finite double.
std::optional<double> nearestDouble(std::string_view text) {
  double result = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
  if (error == std::errc()) [[likely]] return result;
  // Out of range: too large, or so small it rounds to zero.
  result = std::strtod(std::string(text).c_str(), nullptr);
  if (std::isinf(result)) return std::nullopt;
  return result;
}

// One string token for RapidJSON's reader to decode where it lies (in
// place, the decoded text is never longer than its escaped form), and
// nothing after it. Decoding in place keeps the reader's own stack unused.
struct TokenStream {
  using Ch = char;
  char* begin;
  char* current;
  char* end;
  char* output = nullptr;
  Ch Peek() const { return current != end ? *current : '\0'; }
  Ch Take() { return current != end ? *current++ : '\0'; }
  std::size_t Tell() const { return static_cast<std::size_t>(current - begin); }
  Ch* PutBegin() { return output = current; }
  void Put(Ch c) { *output++ = c; }
  void Flush() {}
  std::size_t PutEnd(Ch* start) { return static_cast<std::size_t>(output - start); }
};

struct DecodedString : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DecodedString> {
  std::string_view result;
  bool loneSurrogate = false;

  bool String(const char* text, rapidjson::SizeType length, bool) {
    result = std::string_view(text, length);
    // An escaped low surrogate with no high one before it decodes to a
    // sequence that is not UTF-8.
    loneSurrogate = !Text::isValidUTF8(result);
    return !loneSurrogate;
  }
};

// The string from `open` (its opening quote) to `close` (its closing quote),
// unescaped: in place in the reader's own text, else in a copy kept until the
// parse ends (or only checked, when not `keep`).
std::string_view decodeEscaped(Cursor& cursor, const Path& path, const char* open, const char* close, bool keep) {
  char* token = nullptr;
  std::string scratch;
  const auto size = static_cast<std::size_t>(close + 1 - open);
  if (cursor.ownText != nullptr) {
    token = const_cast<char*>(open);
  } else {
    std::string& copy = keep ? cursor.decoded.emplace_back(open, size) : (scratch.assign(open, size), scratch);
    token = copy.data();
  }
  DecodedString handler;
  TokenStream stream{token, token, token + size};
  rapidjson::Reader reader;
  const rapidjson::ParseResult result =
      reader.Parse<rapidjson::kParseInsituFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseStopWhenDoneFlag>(
          stream, handler);
  if (handler.loneSurrogate) failSyntax(path, "an escape is a lone surrogate");
  if (result.IsError()) {
    std::string reason = rapidjson::GetParseError_En(result.Code());
    if (!reason.empty() && reason.back() == '.') reason.pop_back();
    if (!reason.empty() && reason.front() >= 'A' && reason.front() <= 'Z') reason.front() = static_cast<char>(reason.front() - 'A' + 'a');
    failSyntax(path, reason);
  }
  return handler.result;
}

// The string at the cursor (at its opening quote), consumed. A string
// without escapes is its characters where they lie (the text's encoding was
// checked before reading); one with escapes is decoded when `keep`, else only
// checked.
std::string_view takeString(Cursor& cursor, const Path& path, bool keep = true) {
  const char* const open = cursor.position;
  const char* const end = cursor.end;
  const char* p = open + 1;
  bool escaped = false;
  while (true) {
    while (p != end && static_cast<unsigned char>(*p) >= 0x20 && *p != '"' && *p != '\\') ++p;
    if (p == end) failSyntax(path, "a string is not closed");
    if (*p == '"') break;
    if (*p != '\\') failSyntax(path, "a control character in a string");
    escaped = true;
    if (end - p < 2) failSyntax(path, "a string is not closed");
    p += 2;
  }
  const char* const close = p;
  cursor.position = close + 1;
  skipSpace(cursor);
  if (!escaped) [[likely]] return std::string_view(open + 1, static_cast<std::size_t>(close - open - 1));
  return decodeEscaped(cursor, path, open, close, keep);
}

// After a string key: the colon and the value's first character.
void takeColon(Cursor& cursor, const Path& path) {
  if (cursor.position == cursor.end || *cursor.position != ':') failSyntax(path, "expected ':' after a key");
  ++cursor.position;
  skipSpace(cursor);
  if (cursor.position == cursor.end) failSyntax(path, "a value is missing");
}

void takeKey(Cursor& cursor, const Path& path, bool keep, std::string_view& key) {
  if (cursor.position == cursor.end || *cursor.position != '"') failSyntax(path, "expected a key in double quotes");
  key = takeString(cursor, path, keep);
  takeColon(cursor, path);
}

// Skips the value at the cursor, checking it as it goes. Nesting deeper
// than any document of ours is refused rather than followed.
void skipValue(Cursor& cursor, const Path& path) {
  constexpr std::size_t maximumDepth = 1024;
  std::bitset<maximumDepth> inArray;
  std::size_t depth = 0;
  std::string_view key;
  while (true) {
    // At a value.
    if (cursor.position == cursor.end) failSyntax(path, "a value is missing");
    const char c = *cursor.position;
    if (c == '{' || c == '[') {
      ++cursor.position;
      skipSpace(cursor);
      const char close = c == '{' ? '}' : ']';
      if (cursor.position != cursor.end && *cursor.position == close) {
        ++cursor.position;
        skipSpace(cursor);
      } else {
        if (depth == maximumDepth) failSyntax(path, "nested too deeply");
        inArray[depth++] = c == '[';
        if (c == '{') takeKey(cursor, path, false, key);
        continue;
      }
    } else if (c == '"') {
      takeString(cursor, path, false);
    } else if (c == 't' || c == 'f' || c == 'n') {
      if (!takeLiteral(cursor, c == 't' ? "true" : c == 'f' ? "false" : "null")) failSyntax(path, "malformed literal");
    } else if (c == '-' || isDigit(c)) {
      takeNumber(cursor, path);
    } else {
      failSyntax(path, "unexpected character");
    }
    // After a value: close what it ends, or move to the next one.
    while (true) {
      if (depth == 0) return;
      const bool array = inArray[depth - 1];
      if (cursor.position == cursor.end) failSyntax(path, array ? "an array is not closed" : "an object is not closed");
      if (*cursor.position == ',') {
        ++cursor.position;
        skipSpace(cursor);
        if (!array) takeKey(cursor, path, false, key);
        break;
      }
      if (*cursor.position != (array ? ']' : '}')) {
        failSyntax(path, array ? "expected ',' or ']' after an element" : "expected ',' or '}' after a field");
      }
      ++cursor.position;
      skipSpace(cursor);
      --depth;
    }
  }
}

std::uintptr_t pageSize() noexcept { return static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE)); }
// The reader never looks back, but the pages just behind it stay, and
// pages are given back a megabyte at a time.
constexpr std::uintptr_t keptBehind = std::uintptr_t{1} << 20;
constexpr std::uintptr_t releaseStep = std::uintptr_t{1} << 20;

}  // namespace

std::string Path::description() const {
  if (!parent_) return "top level";
  std::string text;
  append(text);
  return text;
}

void Path::append(std::string& text) const {
  if (!parent_) return;
  parent_->append(text);
  if (index_ != noIndex) {
    text += '[';
    text += std::to_string(index_);
    text += ']';
  } else {
    if (!text.empty()) text += '.';
    text += key_;
  }
}

std::int64_t int64(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  const std::optional<Type> type = typeAt(cursor);
  if (type != Type::number) [[unlikely]] failType(cursor, path, "an integer");
  const auto [text, isInteger] = takeNumber(cursor, path);
  if (isInteger) [[likely]] {
    std::int64_t integer = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), integer);
    if (error != std::errc()) failAt(path, "integer " + shortened(text) + " is out of the 64-bit range");
    return integer;
  }
  // Written with a fraction or exponent: its value may still be an integer.
  const std::optional<double> number = nearestDouble(text);
  // Both bounds are powers of two, so exact as doubles: [-2^63, 2^63).
  if (!number || !(*number >= -0x1p63 && *number < 0x1p63)) {
    failAt(path, "number " + shortened(text) + " is out of the 64-bit range");
  }
  if (std::trunc(*number) != *number) failAt(path, "expected an integer, found the fractional number " + shortened(text));
  return static_cast<std::int64_t>(*number);
}

double number(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (typeAt(cursor) != Type::number) [[unlikely]] failType(cursor, path, "a number");
  const std::string_view text = takeNumber(cursor, path).text;
  const std::optional<double> result = nearestDouble(text);
  if (!result) failAt(path, "number " + shortened(text) + " is out of the range of doubles");
  return *result;
}

std::string_view string(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (cursor.position == cursor.end || *cursor.position != '"') [[unlikely]] failType(cursor, path, "a string");
  return takeString(cursor, path);
}

bool boolean(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (takeLiteral(cursor, "true")) return true;
  if (takeLiteral(cursor, "false")) return false;
  failType(cursor, path, "a Boolean");
}

UUID uuid(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (cursor.position == cursor.end || *cursor.position != '"') [[unlikely]] failType(cursor, path, "a UUID string");
  const std::optional<UUID> result = UUID::parse(takeString(cursor, path));
  if (!result) [[unlikely]] failAt(path, "expected a UUID in the 8-4-4-4-12 form");
  return *result;
}

bool isNull(Value& value) {
  Cursor& cursor = ValueAccess::cursor(value);
  return cursor.position == value.location() && takeLiteral(cursor, "null");
}

Type type(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  const std::optional<Type> type = typeAt(cursor);
  if (!type) failSyntax(path, cursor.position == cursor.end ? "a value is missing" : "unexpected character");
  return *type;
}

std::optional<std::vector<std::string>> stringArray(std::string_view json) {
  try {
    return parse(json, [](Value& root) {
      std::vector<std::string> strings;
      forEachElement(root, Path(), [&strings](Value& element, const Path& path) {
        strings.emplace_back(string(element, path));
      });
      return strings;
    });
  } catch (const JsonDecodingError&) {
    return std::nullopt;
  }
}

namespace detail {

void failMissingKey(std::string_view key, const Path& path) {
  std::string problem = "missing key \"";
  problem += key;
  problem += '"';
  failAt(path, problem);
}

void beginObject(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (cursor.position == cursor.end || *cursor.position != '{') [[unlikely]] failType(cursor, path, "an object");
  ++cursor.position;
  skipSpace(cursor);
}

bool nextField(Cursor& cursor, const Path& path, bool& first, std::string_view& key) {
  if (cursor.position == cursor.end) failSyntax(path, "an object is not closed");
  if (*cursor.position == '}') {
    ++cursor.position;
    skipSpace(cursor);
    return false;
  }
  if (!first) {
    if (*cursor.position != ',') failSyntax(path, "expected ',' or '}' after a field");
    ++cursor.position;
    skipSpace(cursor);
  }
  first = false;
  takeKey(cursor, path, true, key);
  return true;
}

void beginArray(Value& value, const Path& path) {
  Cursor& cursor = at(value, path);
  if (cursor.position == cursor.end || *cursor.position != '[') [[unlikely]] failType(cursor, path, "an array");
  ++cursor.position;
  skipSpace(cursor);
}

bool nextElement(Cursor& cursor, const Path& path, bool& first) {
  if (cursor.position == cursor.end) failSyntax(path, "an array is not closed");
  if (*cursor.position == ']') {
    ++cursor.position;
    skipSpace(cursor);
    return false;
  }
  if (!first) {
    if (*cursor.position != ',') failSyntax(path, "expected ',' or ']' after an element");
    ++cursor.position;
    skipSpace(cursor);
    if (cursor.position == cursor.end) failSyntax(path, "an array is not closed");
  }
  first = false;
  return true;
}

void finish(Value& value, const Path& path) {
  Cursor& cursor = ValueAccess::cursor(value);
  if (cursor.position == value.location()) skipValue(cursor, path);
}

std::size_t findKey(std::span<const Key> keys, std::string_view key) noexcept {
  std::size_t index = 0;
  while (index < keys.size() && keys[index].name != key) ++index;
  return index;
}

void begin(Cursor& cursor, std::string_view json, char* ownText) {
  // Some editors start UTF-8 files with a byte-order mark; it is not part of the JSON.
  if (json.starts_with("\xEF\xBB\xBF")) {
    json.remove_prefix(3);
    if (ownText != nullptr) ownText += 3;
  }
  if (!Text::isValidUTF8(json)) failSyntax(Path(), "the text is not UTF-8");
  cursor.position = json.data();
  cursor.end = json.data() + json.size();
  if (ownText != nullptr) {
    // Whole pages within the text only: the allocator's own bytes around it stay untouched.
    const auto begin = reinterpret_cast<std::uintptr_t>(ownText);
    const std::uintptr_t page = pageSize();
    cursor.ownText = ownText;
    cursor.releasableEnd = (begin + json.size()) & ~(page - 1);
    cursor.releasedUpTo = (begin + page - 1) & ~(page - 1);
  }
  skipSpace(cursor);
  const std::optional<Type> type = typeAt(cursor);
  if (!type) failSyntax(Path(), cursor.position == cursor.end ? "the text is empty" : "unexpected character");
  if (*type != Type::object && *type != Type::array) failAt(Path(), "expected an object or an array");
}

void end(Cursor& cursor) {
  if (cursor.position != cursor.end) failAt(Path(), "unexpected content after the top-level value");
}

void releaseReadText(Cursor& cursor) noexcept {
  const auto at = reinterpret_cast<std::uintptr_t>(cursor.position);
  if (at > cursor.releasableEnd || at < cursor.releasedUpTo + keptBehind + releaseStep) return;
  const std::uintptr_t upTo = (at - keptBehind) & ~(pageSize() - 1);
  if (upTo <= cursor.releasedUpTo) return;
  ::madvise(reinterpret_cast<void*>(cursor.releasedUpTo), upTo - cursor.releasedUpTo, MADV_DONTNEED);
  cursor.releasedUpTo = upTo;
}

}  // namespace detail
}  // namespace quillmont::JsonReader
