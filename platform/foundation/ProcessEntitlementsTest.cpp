#include "platform/foundation/ProcessEntitlements.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillmont {
namespace {

// The program's own entitlements are read when first asked for; a later
// embedding replaces what an earlier one was read as.
TEST(ProcessEntitlements, EmbeddedTextIsReadWhenAskedForAndReplacedWhole) {
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
  ProcessEntitlements::embed(R"({"team": "FIRST", "groups": ["one", "two"], "count": 3})");
  ASSERT_EQ(ProcessEntitlements::source(), ProcessEntitlements::Source::builtIn);
  auto entitlements = ProcessEntitlements::current();
  ASSERT_TRUE(entitlements);
  EXPECT_EQ(entitlements->string("team"), "FIRST");
  EXPECT_EQ(entitlements->stringList("groups"), (std::vector<std::string>{"one", "two"}));
  EXPECT_FALSE(entitlements->string("count"));  // not text

  ProcessEntitlements::embed(R"({"team": "SECOND"})");
  entitlements = ProcessEntitlements::current();
  ASSERT_TRUE(entitlements);
  EXPECT_EQ(entitlements->string("team"), "SECOND");
  EXPECT_TRUE(entitlements->stringList("groups").empty());

  // Of twin keys the first counts; a list with anything but texts is no list of texts.
  ProcessEntitlements::embed(R"({"team": "A", "groups": ["one", 2], "team": "B", "nested": {"team": "C"}})");
  entitlements = ProcessEntitlements::current();
  ASSERT_TRUE(entitlements);
  EXPECT_EQ(entitlements->string("team"), "A");
  EXPECT_TRUE(entitlements->stringList("groups").empty());

  // Text that is not a JSON object gives the program none (as before this test).
  ProcessEntitlements::embed("[1, 2]");
  EXPECT_FALSE(ProcessEntitlements::current());
  EXPECT_EQ(ProcessEntitlements::source(), ProcessEntitlements::Source::none);
  ProcessEntitlements::embed("");
  EXPECT_FALSE(ProcessEntitlements::current());
}

}  // namespace
}  // namespace quillmont
