#include "platform/foundation/Text.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>

namespace quillmont::Text {
namespace {

constexpr std::size_t none = std::string_view::npos;

constexpr bool isASCIIByte(char c) { return static_cast<unsigned char>(c) < 0x80; }

/// In ASCII the White_Space set and the trimmed set coincide: tab to CR, and space.
constexpr bool isASCIIWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

const std::uint8_t* bytes(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

/// ICU indexes text with int32_t; longer text is refused rather than misread.
std::int32_t icuLength(std::string_view text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw std::length_error("Text: text longer than ICU can index");
  }
  return static_cast<std::int32_t>(text.size());
}

/// This thread's character break iterator: creating one loads rules, so it is
/// made once per thread and pointed at new text with setText.
icu::BreakIterator& characterBreakIterator() {
  thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> made(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !made) throw std::runtime_error(std::string("Text: no ICU character break iterator: ") + u_errorName(status));
    return made;
  }();
  return *iterator;
}

/// Walks the grapheme-cluster ends of `text` (byte offsets), straight over
/// the UTF-8 bytes. `text` must outlive the walk; one walk per thread at a time.
class ClusterEnds {
 public:
  explicit ClusterEnds(std::string_view text) : iterator_(characterBreakIterator()) {
    UErrorCode status = U_ZERO_ERROR;
    utext_openUTF8(&utext_, text.data(), icuLength(text), &status);
    iterator_.setText(&utext_, status);  // keeps its own shallow clone of utext_
    if (U_FAILURE(status)) throw std::runtime_error(std::string("Text: ICU cannot walk text: ") + u_errorName(status));
  }
  ~ClusterEnds() { utext_close(&utext_); }
  ClusterEnds(const ClusterEnds&) = delete;
  ClusterEnds& operator=(const ClusterEnds&) = delete;

  /// The end of the next cluster, or `none` after the last.
  std::size_t next() {
    const std::int32_t end = iterator_.next();
    return end == icu::BreakIterator::DONE ? none : static_cast<std::size_t>(end);
  }

 private:
  UText utext_ = UTEXT_INITIALIZER;
  icu::BreakIterator& iterator_;
};

/// The scalar starting at `at` (advancing it), or a negative value for an
/// ill-formed sequence, which is then skipped as one unit.
UChar32 nextScalar(std::string_view text, std::size_t& at) {
  UChar32 c;
  U8_NEXT(bytes(text), at, text.size(), c);
  return c;
}

bool isTrimmed(UChar32 c) {
  if (c < 0x80) return c >= 0 && isASCIIWhiteSpace(static_cast<char>(c));
  return c == 0x85 || c == 0x2028 || c == 0x2029 || u_charType(c) == U_SPACE_SEPARATOR;
}

}  // namespace

bool isASCII(std::string_view text) {
  constexpr std::uint64_t highBits = 0x8080808080808080ULL;
  const char* p = text.data();
  std::size_t n = text.size();
  for (; n >= 8; p += 8, n -= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    if (word & highBits) return false;
  }
  for (; n > 0; ++p, --n) {
    if (!isASCIIByte(*p)) return false;
  }
  return true;
}

bool isValidUTF8(std::string_view text) {
  // Eight ASCII bytes at a time; ICU judges each other sequence (overlong
  // forms, surrogates and scalars beyond U+10FFFF are ill-formed).
  constexpr std::uint64_t highBits = 0x8080808080808080ULL;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t length = text.size();
  std::size_t index = 0;
  while (index < length) {
    if (length - index >= 8) {
      std::uint64_t word;
      std::memcpy(&word, bytes + index, 8);
      if (!(word & highBits)) {
        index += 8;
        continue;
      }
    }
    if (bytes[index] < 0x80) {
      ++index;
      continue;
    }
    // One sequence is at most four bytes: ICU's 32-bit indexes see only those.
    const std::int32_t window = static_cast<std::int32_t>(std::min<std::size_t>(length - index, 4));
    std::int32_t taken = 0;
    UChar32 scalar;
    U8_NEXT(bytes + index, taken, window, scalar);
    if (scalar < 0) return false;
    index += static_cast<std::size_t>(taken);
  }
  return true;
}

std::size_t characterCount(std::string_view text) {
  if (isASCII(text)) {
    std::size_t crlf = 0;
    for (std::size_t i = 1; i < text.size(); ++i) crlf += text[i - 1] == '\r' && text[i] == '\n';
    return text.size() - crlf;
  }
  ClusterEnds ends(text);
  std::size_t count = 0;
  while (ends.next() != none) ++count;
  return count;
}

namespace {

// The width of text made only of printable ASCII and the symbols tables
// and amounts use (U+2026 …, U+2212 −, box drawing and blocks U+2500 to
// U+259F): each is a cluster of its own (none extends or joins another) one
// column wide. Nothing for any other text.
std::optional<std::size_t> simpleWidth(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
      if (byte < 0x20 || byte == 0x7f) return std::nullopt;
      ++at;
    } else {
      const UChar32 c = nextScalar(text, at);
      if (!(c == 0x2026 || c == 0x2212 || (c >= 0x2500 && c <= 0x259f))) return std::nullopt;
    }
    ++width;
  }
  return width;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  if (isASCII(text)) {
    std::size_t width = 0;
    for (const char c : text) width += c >= 0x20 && c != 0x7f;
    return width;
  }
  if (const auto width = simpleWidth(text)) return *width;
  ClusterEnds ends(text);
  std::size_t width = 0;
  std::size_t start = 0;
  for (std::size_t end = ends.next(); end != none; start = end, end = ends.next()) {
    std::size_t at = start;
    const UChar32 c = nextScalar(text, at);
    if (c < 0) {
      width += 1;  // shown as a replacement character
      continue;
    }
    const auto eastAsian = static_cast<UEastAsianWidth>(u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH));
    const std::int8_t type = u_charType(c);
    if (type == U_CONTROL_CHAR || type == U_FORMAT_CHAR || type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK) {
      continue;
    }
    width += eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH || u_hasBinaryProperty(c, UCHAR_EMOJI_PRESENTATION)
                 ? 2
                 : 1;
  }
  return width;
}

std::string_view prefix(std::string_view text, std::size_t count) {
  // Every character takes at least one byte.
  if (text.size() <= count) return text;

  // Between two ASCII bytes there is always a boundary, except inside CR LF;
  // ICU is needed only when a non-ASCII byte comes before or right after the cut.
  std::size_t end = 0;
  std::size_t left = count;
  for (; left > 0 && end < text.size() && isASCIIByte(text[end]); --left) {
    end += text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1;
  }
  if (end == text.size() || (left == 0 && isASCIIByte(text[end]))) return text.substr(0, end);

  ClusterEnds ends(text);
  end = 0;
  for (; count > 0; --count) {
    const std::size_t next = ends.next();
    if (next == none) return text;
    end = next;
  }
  return text.substr(0, end);
}

std::string_view trimmingWhitespaceAndNewlines(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t next = start;
    if (!isTrimmed(nextScalar(text, next))) break;
    start = next;
  }
  std::size_t end = text.size();
  while (end > start) {
    // The last scalar's lead byte is at most three continuation bytes back.
    std::size_t lead = end - 1;
    for (int steps = 0; steps < 3 && lead > start && (bytes(text)[lead] & 0xC0) == 0x80; ++steps) --lead;
    std::size_t next = lead;
    if (!isTrimmed(nextScalar(std::string_view(text.data(), end), next)) || next != end) break;
    end = lead;
  }
  return std::string_view(text.data() + start, end - start);
}

std::vector<std::string_view> splitOnWhitespace(std::string_view text) {
  std::vector<std::string_view> pieces;
  std::size_t pieceStart = none;
  const auto visit = [&](std::size_t characterStart, bool white) {
    if (!white && pieceStart == none) pieceStart = characterStart;
    if (white && pieceStart != none) {
      pieces.push_back(text.substr(pieceStart, characterStart - pieceStart));
      pieceStart = none;
    }
  };

  if (isASCII(text)) {
    // ASCII characters are single bytes but for CR LF, whose bytes are both white.
    for (std::size_t i = 0; i < text.size(); ++i) visit(i, isASCIIWhiteSpace(text[i]));
  } else {
    ClusterEnds ends(text);
    for (std::size_t start = 0, end; (end = ends.next()) != none; start = end) {
      std::size_t after = start;
      const UChar32 first = nextScalar(text.substr(0, end), after);
      visit(start, first >= 0 && u_hasBinaryProperty(first, UCHAR_WHITE_SPACE));
    }
  }
  if (pieceStart != none) pieces.push_back(text.substr(pieceStart));
  return pieces;
}

std::string lowercased(std::string_view text) {
  if (isASCII(text)) {
    std::string result(text);
    for (char& c : result) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
  }
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), icuLength(text)));
  unicode.toLower(icu::Locale::getRoot());
  std::string result;
  unicode.toUTF8String(result);
  return result;
}

}  // namespace quillmont::Text
