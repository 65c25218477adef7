#include "platform/foundation/JsonReader.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>

namespace quillmont::JsonReader {
namespace {

using simdjson::ondemand::json_type;

[[noreturn]] void failAt(const Path& path, std::string_view problem) {
  std::string message = path.description();
  message += ": ";
  message += problem;
  throw JsonDecodingError(message);
}

std::string_view typeName(json_type type) {
  switch (type) {
    case json_type::array: return "an array";
    case json_type::object: return "an object";
    case json_type::number: return "a number";
    case json_type::string: return "a string";
    case json_type::boolean: return "a Boolean";
    case json_type::null: return "null";
  }
  return "something else";
}

// Reports a failed read: a type mismatch names what was found, anything else
// is malformed text.
[[noreturn]] void failRead(simdjson::error_code error, simdjson::ondemand::value& value, const Path& path,
                           std::string_view expected) {
  json_type type{};
  if (error == simdjson::INCORRECT_TYPE) error = value.type().get(type);
  if (error) detail::fail(error, path);
  std::string problem = "expected ";
  problem += expected;
  problem += ", found ";
  problem += typeName(type);
  failAt(path, problem);
}

// A string value written without escapes, read in place (see
// detail::plainText) and consumed; nothing for any other value, which is
// left unread.
std::optional<std::string_view> plainString(simdjson::ondemand::value& value) {
  const std::string_view token = value.raw_json_token();
  if (token.empty() || token.front() != '"') return std::nullopt;
  const auto plain = detail::plainText(token.data() + 1);
  simdjson::ondemand::raw_json_string consumed;
  if (!plain || value.get_raw_json_string().get(consumed)) return std::nullopt;
  return plain;
}

// A number's text as written, for messages (long ones cut short).
std::string shortened(std::string_view token) {
  token = token.substr(0, token.find_first_of(" \t\n\r"));
  constexpr std::size_t limit = 40;
  return token.size() <= limit ? std::string(token) : std::string(token.substr(0, limit)) + "...";
}

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

std::int64_t int64(simdjson::ondemand::value& value, const Path& path) {
  std::int64_t integer;
  if (!value.get_int64().get(integer)) [[likely]] return integer;
  // Not a plain integer within range: either a number written with a
  // fraction or exponent whose value may still be an integer, or no number.
  const std::string_view token = value.raw_json_token();
  double number;
  if (auto error = value.get_double().get(number)) failRead(error, value, path, "an integer");
  if (token.find_first_of(".eE") == std::string_view::npos) {
    failAt(path, "integer " + shortened(token) + " is out of the 64-bit range");
  }
  // Both bounds are powers of two, so exact as doubles: [-2^63, 2^63).
  if (!(number >= -0x1p63 && number < 0x1p63)) {
    failAt(path, "number " + shortened(token) + " is out of the 64-bit range");
  }
  if (std::trunc(number) != number) failAt(path, "expected an integer, found the fractional number " + shortened(token));
  return static_cast<std::int64_t>(number);
}

double number(simdjson::ondemand::value& value, const Path& path) {
  double result;
  if (auto error = value.get_double().get(result)) [[unlikely]] failRead(error, value, path, "a number");
  return result;
}

std::string_view string(simdjson::ondemand::value& value, const Path& path) {
  if (const auto plain = plainString(value)) [[likely]] return *plain;
  std::string_view result;
  if (auto error = value.get_string().get(result)) [[unlikely]] failRead(error, value, path, "a string");
  return result;
}

bool boolean(simdjson::ondemand::value& value, const Path& path) {
  bool result;
  if (auto error = value.get_bool().get(result)) [[unlikely]] failRead(error, value, path, "a Boolean");
  return result;
}

UUID uuid(simdjson::ondemand::value& value, const Path& path) {
  std::string_view text;
  if (const auto plain = plainString(value)) [[likely]] {
    text = *plain;
  } else if (auto error = value.get_string().get(text)) [[unlikely]] {
    failRead(error, value, path, "a UUID string");
  }
  const std::optional<UUID> result = UUID::parse(text);
  if (!result) [[unlikely]] failAt(path, "expected a UUID in the 8-4-4-4-12 form");
  return *result;
}

bool isNull(simdjson::ondemand::value& value) {
  bool result = false;
  return !value.is_null().get(result) && result;
}

std::optional<std::vector<std::string>> stringArray(std::string_view json) {
  try {
    return parse(json, [](simdjson::ondemand::value& root) {
      std::vector<std::string> strings;
      forEachElement(root, Path(), [&strings](simdjson::ondemand::value& element, const Path& path) {
        strings.emplace_back(string(element, path));
      });
      return strings;
    });
  } catch (const JsonDecodingError&) {
    return std::nullopt;
  }
}

namespace detail {

thread_local ConsumedText* consumedText = nullptr;

namespace {
std::uintptr_t pageSize() noexcept { return static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE)); }
// The reader never looks back, but the pages just behind it stay, and
// pages are given back a megabyte at a time.
constexpr std::uintptr_t keptBehind = std::uintptr_t{1} << 20;
constexpr std::uintptr_t releaseStep = std::uintptr_t{1} << 20;
}  // namespace

ConsumedTextScope::ConsumedTextScope(const std::string& text) noexcept : previous_(consumedText) {
  const auto begin = reinterpret_cast<std::uintptr_t>(text.data());
  const std::uintptr_t page = pageSize();
  // Whole pages within the text only: the allocator's own bytes around it stay untouched.
  text_.begin = begin;
  text_.end = (begin + text.size()) & ~(page - 1);
  text_.releasedUpTo = (begin + page - 1) & ~(page - 1);
  consumedText = &text_;
}

ConsumedTextScope::~ConsumedTextScope() { consumedText = previous_; }

void releaseReadText(simdjson::ondemand::value& element) noexcept {
  ConsumedText& text = *consumedText;
  const char* location = nullptr;
  if (element.current_location().get(location)) return;
  const auto at = reinterpret_cast<std::uintptr_t>(location);
  // Elements of another document (a parse within the parse) are not ours.
  if (at < text.begin || at > text.end || at < text.releasedUpTo + keptBehind + releaseStep) return;
  const std::uintptr_t upTo = (at - keptBehind) & ~(pageSize() - 1);
  if (upTo <= text.releasedUpTo) return;
  ::madvise(reinterpret_cast<void*>(text.releasedUpTo), upTo - text.releasedUpTo, MADV_DONTNEED);
  text.releasedUpTo = upTo;
}

void fail(simdjson::error_code error, const Path& path) {
  std::string problem = "not valid JSON: ";
  problem += simdjson::error_message(error);
  failAt(path, problem);
}

void failMissingKey(std::string_view key, const Path& path) {
  std::string problem = "missing key \"";
  problem += key;
  problem += '"';
  failAt(path, problem);
}

void failTrailingContent() { failAt(Path(), "unexpected content after the top-level value"); }

std::string_view unescapedKey(simdjson::ondemand::field& field, const Path& path) {
  std::string_view name;
  if (auto error = field.unescaped_key().get(name)) fail(error, path);
  return name;
}

simdjson::ondemand::object object(simdjson::ondemand::value& value, const Path& path) {
  simdjson::ondemand::object result;
  if (auto error = value.get_object().get(result)) [[unlikely]] failRead(error, value, path, "an object");
  return result;
}

simdjson::ondemand::array array(simdjson::ondemand::value& value, const Path& path) {
  simdjson::ondemand::array result;
  if (auto error = value.get_array().get(result)) [[unlikely]] failRead(error, value, path, "an array");
  return result;
}

std::size_t findKey(std::span<const Key> keys, std::string_view key) noexcept {
  std::size_t index = 0;
  while (index < keys.size() && keys[index].name != key) ++index;
  return index;
}

simdjson::ondemand::document iterate(simdjson::ondemand::parser& parser, simdjson::padded_string_view json) {
  simdjson::ondemand::document document;
  if (auto error = parser.iterate(json).get(document)) fail(error, Path());
  return document;
}

simdjson::ondemand::value rootValue(simdjson::ondemand::document& document) {
  simdjson::ondemand::value root;
  if (auto error = document.get_value().get(root)) {
    if (error == simdjson::SCALAR_DOCUMENT_AS_VALUE) failAt(Path(), "expected an object or an array");
    fail(error, Path());
  }
  return root;
}

}  // namespace detail
}  // namespace quillmont::JsonReader
