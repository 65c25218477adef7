// Black-box tests of the overview's worked time: it must count the day as
// the reports count it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "cli/testing/CommandRunner.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;

// The number after `"key" : ` in a JSON document, as written.
std::string number(const std::string& json, const std::string& key) {
  std::smatch match;
  if (!std::regex_search(json, match, std::regex("\"" + key + "\" : ([-0-9.e+]+)"))) return "(no " + key + ")";
  return match[1];
}

TEST(OverviewCommand, PrintsWorkedTodayAsTextAndSeconds) {
  const auto clock = testing::zoneWhereItIsNow(4);  // 04:00 to 04:59 there
  CommandRunner quillmont;
  quillmont.setEnvironment("TZ", clock.zone);
  ASSERT_EQ(quillmont.run({"setup", "--start", clock.yesterday, "--balance", "0", "--week", "8h,8h,8h,8h,8h,8h,8h"})
                .exitCode,
            0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "01:00", "--end", "02:00"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "01:30", "--end", "02:30", "--force"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({}).out, HasSubstr("1:30 today"));
  EXPECT_EQ(number(quillmont.run({"overview", "--json"}).out, "todayWorkedSeconds"), "5400");
}

}  // namespace
}  // namespace quillmont
