#include "platform/foundation/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quillmont {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466";  // joined with ZWJ
const std::string germany = "\U0001F1E9\U0001F1EA";
const std::string france = "\U0001F1EB\U0001F1F7";
const std::string thumbsUpMediumSkin = "\U0001F44D\U0001F3FD";
const std::string eAcute = "e\u0301";  // e + combining acute accent

TEST(Text, DetectsASCIIAndValidUTF8) {
  EXPECT_TRUE(Text::isASCII("Doctor appointment, room 12\r\n"));
  EXPECT_FALSE(Text::isASCII("Doctor appointment: Caf\u00E9"));       // in the byte tail
  EXPECT_FALSE(Text::isASCII("Caf\u00E9 and then a longer ASCII run"));  // in the first word
  EXPECT_TRUE(Text::isValidUTF8("Caf\u00E9 " + family));
  EXPECT_FALSE(Text::isValidUTF8("abc\xE2\x82"));
  EXPECT_TRUE(Text::isValidUTF8("a long run of ASCII before \U0010FFFF and after it"));
  // Ill-formed sequences, each after a run of ASCII and before one.
  for (std::string_view bad : {"\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xFF",
                               "\xE2\x82" "abcdefgh"}) {
    EXPECT_FALSE(Text::isValidUTF8("twelve bytes" + std::string(bad) + "and more ASCII")) << bad;
  }
}

TEST(Text, CountsUserPerceivedCharacters) {
  EXPECT_EQ(Text::characterCount(""), 0u);
  EXPECT_EQ(Text::characterCount("a\r\nb\n\r"), 5u);
  EXPECT_EQ(Text::characterCount("Caf" + eAcute + " r\u00E9union"), 12u);
  EXPECT_EQ(Text::characterCount(family), 1u);
  EXPECT_EQ(Text::characterCount(germany + france), 2u);
  EXPECT_EQ(Text::characterCount(thumbsUpMediumSkin), 1u);
  EXPECT_EQ(Text::characterCount("\r\n" + eAcute), 2u);
  // Each ill-formed sequence is one character.
  EXPECT_EQ(Text::characterCount("\xFF\xFE" "a\xE2\x82"), 4u);
}

TEST(Text, DisplayWidthCountsTerminalColumns) {
  EXPECT_EQ(Text::displayWidth("Holiday"), 7u);
  EXPECT_EQ(Text::displayWidth("\u4F11\u6687"), 4u);           // 休暇: two wide characters
  EXPECT_EQ(Text::displayWidth("\uFF21"), 2u);                  // full-width A
  EXPECT_EQ(Text::displayWidth("e\u0301t\u00E9"), 3u);         // a combining accent takes no column
  EXPECT_EQ(Text::displayWidth("\U0001F334 x"), 4u);            // emoji shown wide
  EXPECT_EQ(Text::displayWidth("\u2212" "0:15"), 5u);           // the minus sign is narrow
  EXPECT_EQ(Text::displayWidth("a\u200Bb"), 2u);                // zero-width space
  EXPECT_EQ(Text::displayWidth(std::string("\xff") + "a"), 2u);  // ill-formed: one replacement character
  EXPECT_EQ(Text::displayWidth("\u2588\u0301\u2502"), 2u);       // an accent on a block stays with it
  EXPECT_EQ(Text::displayWidth("\u2212" "1\t"), 2u);              // a tab takes no column
}

// Tables are mostly ASCII, minus signs, ellipses and bars, which are counted
// without breaking the text into clusters; every such symbol must count as
// the full rules count it (the accent after it sends the text down that path).
TEST(Text, TheSymbolsOfTablesAreOneColumnEachAsTheFullRulesSay) {
  std::vector<char32_t> symbols{0x2026, 0x2212};
  for (char32_t c = 0x2500; c <= 0x259f; ++c) symbols.push_back(c);
  for (const char32_t c : symbols) {
    std::string symbol;
    symbol += static_cast<char>(0xE0 | (c >> 12));
    symbol += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    symbol += static_cast<char>(0x80 | (c & 0x3F));
    EXPECT_EQ(Text::displayWidth(symbol + "x" + eAcute), 3u) << std::hex << static_cast<unsigned>(c);
    EXPECT_EQ(Text::displayWidth(symbol + "x" + symbol), 3u) << std::hex << static_cast<unsigned>(c);
  }
}

TEST(Text, PrefixCutsBetweenCharacters) {
  EXPECT_EQ(Text::prefix("ab" + eAcute + "x", 3), "ab" + eAcute);  // the accent stays with its letter
  EXPECT_EQ(Text::prefix("abc\r\ndef", 4), "abc\r\n");
  EXPECT_EQ(Text::prefix("x" + family + "y", 2), "x" + family);
  EXPECT_EQ(Text::prefix(germany + france + germany, 2), germany + france);
  EXPECT_EQ(Text::prefix(thumbsUpMediumSkin + "!", 1), thumbsUpMediumSkin);
  EXPECT_EQ(Text::prefix("abc", 0), "");
  const std::string owner = "Doctor visit";
  EXPECT_EQ(Text::prefix(owner, 6).data(), owner.data());
}

TEST(Text, TrimsWhitespaceAndNewlineScalarsFromBothEnds) {
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines(" \t Doctor\nvisit \r\n"), "Doctor\nvisit");
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines("\u00A0\u3000Caf\u00E9\u2028\u0085"), "Caf\u00E9");
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines("\u2029\v\f x\u2002\u202F\u205F"), "x");
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines(" \n\u3000\r\n\u00A0"), "");
  // Not in the set: zero-width space, byte-order mark, other controls.
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines("\u200Bx\uFEFF\x1F"), "\u200Bx\uFEFF\x1F");
  // Scalars, not characters: the blank under a combining mark goes, the mark stays.
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines(" \u0301x "), "\u0301x");
  // Ill-formed bytes stop the trimming, including a cut-off U+2028.
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines(" \xFF x \xE2\x80"), "\xFF x \xE2\x80");
  EXPECT_EQ(Text::trimmingWhitespaceAndNewlines("\x80\x80\x80\x80 "), "\x80\x80\x80\x80");
}

TEST(Text, SplitsOnWhiteSpaceCharacters) {
  EXPECT_THAT(Text::splitOnWhitespace("\tDoctor   visit\n"), ElementsAre("Doctor", "visit"));
  EXPECT_THAT(Text::splitOnWhitespace("Doctor\u00A0visit\r\nr\u00E9union\u0085x"),
              ElementsAre("Doctor", "visit", "r\u00E9union", "x"));
  // A blank carrying a combining mark is one white-space character.
  EXPECT_THAT(Text::splitOnWhitespace("a \u0301b"), ElementsAre("a", "b"));
  // The zero-width space lacks White_Space.
  EXPECT_THAT(Text::splitOnWhitespace("a\u200Bb " + family), ElementsAre("a\u200Bb", family));
  EXPECT_THAT(Text::splitOnWhitespace(" \u2028\n\u3000"), IsEmpty());
  EXPECT_THAT(Text::splitOnWhitespace("\xFF \xE2\x80"), ElementsAre("\xFF", "\xE2\x80"));
}

TEST(Text, LowercasesWithTheDefaultMapping) {
  EXPECT_EQ(Text::lowercased("Doctor VISIT 12"), "doctor visit 12");
  EXPECT_EQ(Text::lowercased("\u00C9COLE"), "\u00E9cole");
  EXPECT_EQ(Text::lowercased("\u0130I"), "i\u0307i");  // not the Turkish rules
  EXPECT_EQ(Text::lowercased("\u039F\u0394\u039F\u03A3"), "\u03BF\u03B4\u03BF\u03C2");  // final sigma
  EXPECT_EQ(Text::lowercased("A\xFF" "B"), "a\uFFFD" "b");
}

/// Text built from pieces that stress character boundaries, mixed with arbitrary bytes.
rc::Gen<std::string> mixedText() {
  const std::vector<std::string> pieces = {"a", " ", "\r", "\n", "\u00A0", "\u0301", "\u200D", "\u3000",
                                           "\U0001F1E9", "\U0001F468", "\U0001F3FD", "\xFF", "\xE2\x80", "\x80"};
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(
                          rc::gen::oneOf(rc::gen::elementOf(pieces), rc::gen::arbitrary<std::string>())),
                      [](const std::vector<std::string>& parts) {
                        std::string text;
                        for (const std::string& part : parts) text += part;
                        return text;
                      });
}

RC_GTEST_PROP(Text, PrefixAgreesWithCharacterCount, ()) {
  const std::string text = *mixedText();
  const std::size_t total = Text::characterCount(text);
  const std::size_t wanted = *rc::gen::inRange<std::size_t>(0, total + 2);
  const std::string_view cut = Text::prefix(text, wanted);
  RC_ASSERT(std::string_view(text).starts_with(cut));
  RC_ASSERT(Text::characterCount(cut) == std::min(wanted, total));
}

RC_GTEST_PROP(Text, TrimmingAndSplittingReturnPiecesOfTheInput, ()) {
  const std::string text = *mixedText();
  const auto inside = [&](std::string_view piece) {
    return piece.data() >= text.data() && piece.data() + piece.size() <= text.data() + text.size();
  };
  const std::string_view trimmed = Text::trimmingWhitespaceAndNewlines(text);
  RC_ASSERT(inside(trimmed));
  RC_ASSERT(Text::trimmingWhitespaceAndNewlines(trimmed) == trimmed);
  for (const std::string_view piece : Text::splitOnWhitespace(text)) RC_ASSERT(!piece.empty() && inside(piece));
}

}  // namespace
}  // namespace quillmont
