// Text: the Unicode operations the system needs on UTF-8 strings, on ICU.
// "Characters" are user-perceived characters (extended grapheme clusters).
// Pure-ASCII input takes fast paths that never touch ICU. Invalid UTF-8 is
// never an error: each ill-formed sequence counts as one replacement character.
// Safe to call from any thread. Non-ASCII text must be shorter than 2 GiB,
// ICU's index range; longer text throws std::length_error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmont::Text {

bool isASCII(std::string_view text);
bool isValidUTF8(std::string_view text);

/// Number of user-perceived characters.
std::size_t characterCount(std::string_view text);
/// The columns `text` takes on a terminal: two for a character whose first
/// scalar is East Asian wide or full-width, or shown as emoji by default;
/// none for one that starts with a control, format or combining scalar; one
/// for any other.
std::size_t displayWidth(std::string_view text);
/// The first `count` user-perceived characters of `text` (all of it when shorter).
std::string_view prefix(std::string_view text, std::size_t count);

/// `text` without leading and trailing scalars of the white-space-and-new-line
/// set: category Zs, tab, LF, VT, FF, CR, U+0085, U+2028, U+2029.
std::string_view trimmingWhitespaceAndNewlines(std::string_view text);

/// The pieces between white-space characters, where a character is white
/// space when its first scalar has the Unicode White_Space property (a CR LF
/// pair is one character). Empty pieces are dropped.
std::vector<std::string_view> splitOnWhitespace(std::string_view text);

/// The Unicode default (locale-independent) lower-case mapping; ill-formed
/// sequences come out as U+FFFD.
std::string lowercased(std::string_view text);

}  // namespace quillmont::Text
