// StoreSharingTest: a fixture for the window's tests. The real `quillmont`
// program and this process (whose pages open the store in-process) share one
// scratch data home, in the command runner's time zone; `run` makes a change
// through the program as a person at a terminal would, and fails the test
// when the program refuses it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "cli/testing/CommandRunner.h"

namespace quillmont::testing {

class StoreSharingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* zone = std::getenv("TZ");
    zone_ = zone != nullptr ? zone : "";
    ::setenv("TZ", std::string(CommandRunner::defaultTimeZone).c_str(), 1);
    ::tzset();
    quillmont_.shareStoreWithThisProcess();
  }
  void TearDown() override {
    zone_.empty() ? ::unsetenv("TZ") : ::setenv("TZ", zone_.c_str(), 1);
    ::tzset();
    ::unsetenv("QUILLMONT_HOME");
    ::unsetenv("QUILLMONT_ENTITLEMENTS");
  }
  /// What the program printed; the test fails when it refused.
  std::string run(const std::vector<std::string>& arguments) {
    const auto result = quillmont_.run(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return result.out;
  }

  CommandRunner quillmont_;

 private:
  std::string zone_;
};

}  // namespace quillmont::testing
