// Days kept in the store (the calculation start, a schedule's first day) stay
// on their day whichever zone the program runs in next, across daylight
// saving, and after an export and import.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/testing/CommandRunner.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;

const std::vector<std::string> zones{"UTC",           "Europe/Berlin",  "Asia/Tokyo",       "America/New_York",
                                     "Asia/Tokyo",    "UTC",            "America/New_York", "Europe/Berlin",
                                     "Pacific/Auckland", "America/Los_Angeles", "Pacific/Auckland", "UTC"};

void expectDaysKept(CommandRunner& quillmont, const std::string& zone, const std::string& start,
                    const std::string& scheduleDay) {
  quillmont.setEnvironment("TZ", zone);
  const auto settings = quillmont.run({"settings"});
  ASSERT_EQ(settings.exitCode, 0) << settings.err;
  EXPECT_THAT(settings.out, HasSubstr("Calculation start   " + start)) << "in " << zone;
  EXPECT_THAT(quillmont.run({"schedule", "list"}).out, HasSubstr(scheduleDay)) << "in " << zone;
}

TEST(TimeZoneTravel, StoredDaysStayOnTheirDayInEveryZone) {
  // Winter and summer days, so both sides of daylight saving are crossed.
  for (const auto& [start, scheduleDay] : {std::pair{"2026-01-05", "2026-03-30"}, std::pair{"2026-07-06", "2026-10-26"}}) {
    CommandRunner quillmont;
    quillmont.setEnvironment("TZ", "UTC");
    ASSERT_EQ(quillmont.run({"setup", "--start", start, "--balance", "0", "--week", "8h,8h,8h,8h,8h,0,0"}).exitCode, 0);
    ASSERT_EQ(quillmont.run({"schedule", "add", scheduleDay, "6h,6h,6h,6h,6h,0,0"}).exitCode, 0);
    for (const std::string& zone : zones) expectDaysKept(quillmont, zone, start, scheduleDay);

    // Exported and imported in Tokyo, then on the road again.
    quillmont.setEnvironment("TZ", "Asia/Tokyo");
    const auto archive = quillmont.run({"export", "-"});
    ASSERT_EQ(archive.exitCode, 0) << archive.err;
    CommandRunner elsewhere;
    elsewhere.setEnvironment("TZ", "Asia/Tokyo");
    const auto imported = elsewhere.run({"import", "-"}, archive.out);
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
    for (const std::string& zone : zones) expectDaysKept(elsewhere, zone, start, scheduleDay);
  }
}

TEST(TimeZoneTravel, ATimeOfDayStillCountsAsTheDayItFallsOn) {
  // An archive whose start is 14:37 UTC on 2026-01-05 (not a day start at any
  // offset): the day it falls on where it is read.
  CommandRunner quillmont;
  quillmont.setEnvironment("TZ", "UTC");
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05", "--balance", "0"}).exitCode, 0);
  std::string archive = quillmont.run({"export", "-"}).out;
  const std::string key = "\"calculationStartDate\" : ";
  const auto at = archive.find(key);
  ASSERT_NE(at, std::string::npos);
  const auto end = archive.find_first_of(",\n", at + key.size());
  // 2026-01-05 14:37:13 UTC in seconds since 1970.
  archive.replace(at + key.size(), end - at - key.size(), "1767623833");
  CommandRunner tokyo;
  tokyo.setEnvironment("TZ", "Asia/Tokyo");
  ASSERT_EQ(tokyo.run({"import", "-"}, archive).exitCode, 0);
  EXPECT_THAT(tokyo.run({"settings"}).out, HasSubstr("Calculation start   2026-01-05"));
}

}  // namespace
}  // namespace quillmont
