#include "core/engine/StoredDayStart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace quillmont {
namespace {

// Zones from −10:00 to +13:45, with half and three-quarter hours, both
// hemispheres' daylight saving, and São Paulo's skipped midnights.
const std::vector<std::string> zones{"Pacific/Honolulu", "America/Los_Angeles", "America/New_York", "America/Sao_Paulo",
                                     "UTC",              "Europe/Berlin",       "Asia/Kolkata",     "Asia/Kathmandu",
                                     "Asia/Tokyo",       "Australia/Adelaide",  "Pacific/Auckland", "Pacific/Chatham"};

TEST(StoredDayStart, ADayStartWrittenInOneZoneIsTheSameDayInEveryOther) {
  const Calendar utc = *Calendar::make("UTC");
  for (const std::string& writerZone : zones) {
    const Calendar writer = *Calendar::make(writerZone);
    for (const std::string& readerZone : zones) {
      const Calendar reader = *Calendar::make(readerZone);
      // Every ninth day of two years, so every season and change is crossed.
      for (int day = 0; day < 730; day += 9) {
        const Date written = writer.startOfDay(*utc.date(2017, 1, 1) + day * 86400.0 + 43200);
        // The reader's start of the writer's calendar day (a local day number).
        const double localDay =
            std::floor((written.timeIntervalSince1970() + static_cast<double>(writer.secondsFromGMT(written))) / 86400);
        const Date localNoon = Date::fromTimeIntervalSince1970(localDay * 86400 + 43200);
        const Date expected =
            reader.startOfDay(localNoon - static_cast<double>(reader.secondsFromGMT(localNoon)));
        ASSERT_EQ(StoredDayStart::startOfDay(written, reader, writer), expected)
            << "written in " << writerZone << ", read in " << readerZone << ", day " << day;
        // And back: what the reader stores is the writer's day again.
        ASSERT_EQ(StoredDayStart::startOfDay(expected, writer, reader), written)
            << "read back in " << writerZone << " from " << readerZone << ", day " << day;
      }
    }
  }
}

TEST(StoredDayStart, ATimeOfDayIsTheDayItFallsOnForTheReader) {
  const Calendar tokyo = *Calendar::make("Asia/Tokyo");
  const Calendar berlin = *Calendar::make("Europe/Berlin");
  const Date afternoon = Date::fromTimeIntervalSince1970(1767623833);  // 2026-01-05 14:37:13 UTC
  EXPECT_EQ(StoredDayStart::startOfDay(afternoon, tokyo, berlin), tokyo.startOfDay(afternoon));
  EXPECT_EQ(StoredDayStart::startOfDay(afternoon, berlin, tokyo), berlin.startOfDay(afternoon));
  // 17:00 in Berlin is midnight in Perth, but the store's days were written in Berlin.
  const Date evening = *berlin.date(2026, 1, 5) + 17 * 3600.0;
  EXPECT_EQ(StoredDayStart::startOfDay(evening, tokyo, berlin), tokyo.startOfDay(evening));
  const Date dayStart = *berlin.date(2026, 1, 5);
  EXPECT_EQ(StoredDayStart::startOfDay(dayStart, berlin, std::nullopt), dayStart);
  EXPECT_EQ(StoredDayStart::startOfDay(dayStart, tokyo, std::nullopt), tokyo.startOfDay(dayStart));
}

}  // namespace
}  // namespace quillmont
