// NoteValidation: the rule for the free-text note on an entry. A note holds at
// most 280 user-perceived characters (grapheme clusters, so an emoji family
// or a flag counts once). Both functions accept any bytes; invalid UTF-8 is
// kept as it is and each ill-formed sequence counts as one character.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmont::NoteValidation {

inline constexpr std::size_t maximumCharacterCount = 280;

/// The note as stored: white space and line breaks trimmed from both ends,
/// then cut to the first 280 characters. The cut comes after trimming, so a
/// note whose 280th character is a blank keeps that blank at its end.
std::string normalized(std::string_view note);

/// The first 280 characters of the note, nothing trimmed.
std::string limited(std::string_view note);

}  // namespace quillmont::NoteValidation
