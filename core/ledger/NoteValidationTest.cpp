#include "core/ledger/NoteValidation.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmont {
namespace {

std::string repeated(const std::string& piece, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}

TEST(NoteValidation, TrimsTheEndsAndKeepsInnerLineBreaks) {
  EXPECT_EQ(NoteValidation::normalized("\u3000Team sync\r\nran long\u00A0\n"), "Team sync\r\nran long");
  EXPECT_EQ(NoteValidation::normalized(" \t\r\n\u2028\u0085 "), "");
}

TEST(NoteValidation, KeepsAtMost280Characters) {
  const std::string exact = repeated("a", 280);
  EXPECT_EQ(NoteValidation::normalized(exact), exact);
  EXPECT_EQ(NoteValidation::normalized(exact + "b"), exact);
  // Characters, not bytes.
  EXPECT_EQ(NoteValidation::normalized(repeated("e\u0301", 281)), repeated("e\u0301", 280));
  const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
  EXPECT_EQ(NoteValidation::limited(repeated(family, 300)), repeated(family, 280));
  EXPECT_EQ(NoteValidation::limited(repeated("\r\n", 281)), repeated("\r\n", 280));
}

TEST(NoteValidation, CutsAfterTrimming) {
  const std::string note = repeated(" ", 30) + repeated("x", 270);
  EXPECT_EQ(NoteValidation::normalized(note), repeated("x", 270));
  EXPECT_EQ(NoteValidation::limited(note), repeated(" ", 30) + repeated("x", 250));
  // A blank that ends up as the 280th character stays.
  const std::string xs = repeated("x", 279);
  EXPECT_EQ(NoteValidation::normalized(std::string(" ").append(xs).append(" y ")), xs + " ");
}

}  // namespace
}  // namespace quillmont
