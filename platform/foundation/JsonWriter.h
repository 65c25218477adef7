// JsonWriter: a streaming JSON writer that appends to a caller's string, for
// encoders that walk their own structs (the archive, settings, status output).
//
// The caller drives the structure: open a container, write its members or
// elements, close it, with exactly one value at the top level. In an object
// every value follows a key(); keys are written in the order given, so callers
// that want sorted output give them sorted. Structural misuse (a value in an
// object without a key, a mismatched end, a second top-level value) is caught
// by assertions in debug builds; release builds write whatever they are told.
//
// Output: compact text has no white space at all, `{"a":[1,2]}`. Pretty text
// puts each member or element on its own line, indented two spaces per level,
// writes `"key" : value`, keeps empty containers on one line (`{}`, `[]`) and
// ends without a new line. Strings escape `"`, `\`, the control characters
// (as \b \f \n \r \t where those exist, else \u00xx in lower-case hex) and,
// unless turned off, "/" as `\/`; other bytes, UTF-8 included, pass through
// unchanged (the caller supplies valid UTF-8). Numbers are the shortest text
// that reads back to the same value (`std::to_chars`), so 16200.0 is `16200`.
//
// The writer keeps a reference to the output string: the string must outlive it.
#pragma once

#include <concepts>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillmont {

/// Thrown when a value has no JSON text (a NaN or an infinity).
class JsonEncodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class JsonWriter {
 public:
  struct Options {
    bool prettyPrinted = false;
    /// Writes "/" as `\/`.
    bool escapeSlashes = true;
    /// Debug builds assert that the keys of each object strictly ascend
    /// (byte order). The writer never reorders keys.
    bool sortedKeys = false;
  };

  explicit JsonWriter(std::string& output);
  JsonWriter(std::string& output, Options options);

  void beginObject();
  void endObject();
  void beginArray();
  void endArray();

  /// The key of the next object member.
  void key(std::string_view name);

  void string(std::string_view text);
  /// Any integer type except bool; an unsigned value above INT64_MAX is a
  /// caller error.
  void integer(std::int64_t number);
  /// Throws JsonEncodingError for a NaN or an infinity; what was written to
  /// the output by then is unspecified.
  void number(double value);
  void boolean(bool value);
  void null();

  // Calls that would convert silently: integer(1.5), integer(true),
  // boolean(pointer), boolean(1).
  template <class T>
    requires(!std::integral<T> || std::same_as<T, bool>)
  void integer(T) = delete;
  template <class T>
    requires(!std::same_as<T, bool>)
  void boolean(T) = delete;

 private:
  struct Frame {
    bool isObject;
    bool isEmpty = true;
    std::string lastKey;  // only kept for the sortedKeys check
  };

  void beforeValue();
  void beginContainer(bool isObject, char open);
  void endContainer(bool isObject, char close);
  void newLine(std::size_t depth);
  void writeString(std::string_view text);

  std::string& output_;
  Options options_;
  const char* escapes_;  // per byte: 0 to copy it, else the escape letter
  std::vector<Frame> frames_;
  bool afterKey_ = false;
  bool wroteTopLevelValue_ = false;
};

}  // namespace quillmont
