// Base64: the standard RFC 4648 alphabet with "=" padding, no line breaks.
// Decoding is strict: only the alphabet, a length that is a multiple of four,
// exact padding (one or two "=" only at the end); white space or anything
// else fails. Unused low bits of the last symbol are ignored, as the usual
// platform decoders do; re-encoding yields the canonical text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmont::Base64 {

std::string encode(std::string_view bytes);
std::optional<std::string> decode(std::string_view text);

}  // namespace quillmont::Base64
