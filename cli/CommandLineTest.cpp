// Black-box tests of the program's surface: version, help and usage errors.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/testing/CommandRunner.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::CommandRunner;

TEST(CommandLine, VersionAndHelpSucceedOnStandardOutput) {
  CommandRunner quillmont;
  const auto version = quillmont.run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_THAT(version.out, HasSubstr("quillmont "));

  const auto help = quillmont.run({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_THAT(help.out, HasSubstr("Usage"));
  EXPECT_THAT(help.err, IsEmpty());
}

TEST(CommandLine, UsageErrorsExitWithTwo) {
  CommandRunner quillmont;
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--no-such-option"}, {"no-such-command"}, {"--data-home"}}) {
    const auto result = quillmont.run(arguments);
    EXPECT_EQ(result.exitCode, 2) << arguments.front();
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, Not(IsEmpty()));
  }
}

}  // namespace
}  // namespace quillmont
