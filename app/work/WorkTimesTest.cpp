#include "app/work/WorkTimes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/testing/ScratchHome.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::utc;

const Calendar calendar = *Calendar::iso8601("UTC");
const DateInput::Day today{2026, 3, 5};

std::string refusal(const std::function<void()>& read) {
  try {
    read();
  } catch (const InvalidInput& error) {
    return error.field() + ": " + error.reason();
  }
  return "(accepted)";
}

Remedy remedy(const std::function<void()>& read) {
  try {
    read();
  } catch (const InvalidInput& error) {
    return error.remedy();
  }
  return {};
}

TEST(WorkTimes, ATimeAloneStaysOnTheDayOfWhatItChanges) {
  // A start alone is on the entry's own day; a full time stands as typed.
  EXPECT_EQ(WorkTimes::startTime("08:30", {2026, 3, 2}, today, calendar, "start"), utc(2026, 3, 2, 8, 30));
  EXPECT_EQ(WorkTimes::startTime("2026-03-01 08:30", {2026, 3, 2}, today, calendar, "start"), utc(2026, 3, 1, 8, 30));
  // An end alone is on the start's day, or the next when that comes first.
  EXPECT_EQ(WorkTimes::endTime("17:00", utc(2026, 3, 2, 8), today, calendar, "end"), utc(2026, 3, 2, 17));
  EXPECT_EQ(WorkTimes::endTime("06:00", utc(2026, 3, 2, 22), today, calendar, "end"), utc(2026, 3, 3, 6));
  EXPECT_EQ(WorkTimes::endTime("08:00", utc(2026, 3, 2, 8), today, calendar, "end"), utc(2026, 3, 2, 8));
  EXPECT_EQ(refusal([] { WorkTimes::endTime("25:00", utc(2026, 3, 2, 8), today, calendar, "end"); }),
            "end: '25:00' is not a time (try \"YYYY-MM-DD HH:MM\" or HH:MM for today)");
}

TEST(WorkTimes, AnEndAloneMustNotLieAheadNorMakeALongNight) {
  const Date now = utc(2026, 3, 5, 4, 10);
  // Each refusal offers the dated form of what was typed, in the field it came from.
  const auto ahead = [&] { WorkTimes::workEndTime(" 23:00", utc(2026, 3, 5, 2), now, calendar, "end"); };
  EXPECT_EQ(refusal(ahead), "end: '23:00' would end the work at 2026-03-05 23:00, which is still to come");
  EXPECT_EQ(remedy(ahead), (Remedy{Remedy::Kind::writeTheDay, "end", "2026-03-05 23:00"}));
  const auto night = [&] { WorkTimes::workEndTime("07:00", utc(2026, 3, 2, 8, 30), now, calendar, "finish"); };
  EXPECT_EQ(refusal(night), "finish: '07:00' would end the work on the next day, 2026-03-03 07:00, after 22:30");
  EXPECT_EQ(remedy(night), (Remedy{Remedy::Kind::writeTheDay, "finish", "2026-03-03 07:00"}));
  // Twelve hours over midnight are a night shift; the end up to now is fine.
  EXPECT_EQ(WorkTimes::workEndTime("06:00", utc(2026, 3, 2, 18), now, calendar, "end"), utc(2026, 3, 3, 6));
  EXPECT_EQ(WorkTimes::workEndTime("04:10", utc(2026, 3, 5, 1), now, calendar, "end"), now);
  // Typed with their days, both stand.
  EXPECT_EQ(WorkTimes::workEndTime("2026-03-05 23:00", utc(2026, 3, 5, 2), now, calendar, "end"),
            utc(2026, 3, 5, 23));
  EXPECT_EQ(WorkTimes::workEndTime("2026-03-03 07:00", utc(2026, 3, 2, 8, 30), now, calendar, "end"),
            utc(2026, 3, 3, 7));
}

TEST(WorkTimes, APastTimeAloneIsTodaysAndMustHaveCome) {
  const Date now = utc(2026, 3, 5, 4, 10);
  EXPECT_EQ(WorkTimes::pastTime("04:10", now, calendar, "at"), now);
  EXPECT_EQ(WorkTimes::pastTime("2026-03-04 23:30", now, calendar, "at"), utc(2026, 3, 4, 23, 30));
  const auto tonight = [&] { WorkTimes::pastTime(" 23:30", now, calendar, "at"); };
  EXPECT_EQ(refusal(tonight), "at: '23:30' today is still to come (it is 04:10 now)");
  EXPECT_EQ(remedy(tonight), (Remedy{Remedy::Kind::writeYesterday, "at", "2026-03-04 23:30"}));
  // A time typed with its day has nothing better to offer.
  const auto dated = [&] { WorkTimes::pastTime("2026-03-05 04:11", now, calendar, "at"); };
  EXPECT_EQ(refusal(dated), "at: '2026-03-05 04:11' is still to come");
  EXPECT_EQ(remedy(dated), Remedy{});
}

}  // namespace
}  // namespace quillmont
