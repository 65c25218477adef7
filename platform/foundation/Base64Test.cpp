#include "platform/foundation/Base64.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <utility>

namespace quillmont {
namespace {

TEST(Base64, EncodesAndDecodesKnownVectors) {
  const std::pair<std::string, std::string> vectors[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"}, {"Doctor visit", "RG9jdG9yIHZpc2l0"},
      {"Caf\u00E9", "Q2Fmw6k="}, {"  A   B ", "ICBBICAgQiA="}, {std::string("\0\xFF\xFE", 3), "AP/+"}};
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(Base64::encode(bytes), text);
    EXPECT_EQ(Base64::decode(text), bytes) << text;
  }
  // Unused low bits of the last symbol are ignored.
  EXPECT_EQ(Base64::decode("Zh=="), "f");
  EXPECT_EQ(Base64::decode("Zm9="), "fo");
}

TEST(Base64, RejectsAnythingButStrictText) {
  for (const std::string text : {"RG9jdG9yIHZpc2l0 ", " RG9", "RG9\t", "RG9j\nZG9", "RG9", "Zg=", "Zg==Zg==", "Z=g=",
                                 "Zm=v", "A===", "===", "====", "Zm9v-_ab", "Zm9v_w==", "\xC3\xA9\xC3\xA9"}) {
    EXPECT_EQ(Base64::decode(text), std::nullopt) << text;
  }
  EXPECT_EQ(Base64::decode(std::string("Zm9v\0AAA", 8)), std::nullopt);
}

RC_GTEST_PROP(Base64, DecodingReversesEncoding, (const std::string& bytes)) {
  RC_ASSERT(Base64::decode(Base64::encode(bytes)) == bytes);
}

}  // namespace
}  // namespace quillmont
