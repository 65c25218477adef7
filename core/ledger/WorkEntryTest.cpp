#include "core/ledger/WorkEntry.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmont {
namespace {

WorkEntry entry(Date start, std::optional<Date> end, std::int64_t breakMinutes, std::string_view note = "") {
  return WorkEntry(UUID::random(), start, end, breakMinutes, note, start, start);
}

TEST(WorkEntry, DefaultsReadTheClock) {
  Date::ScopedClock clock(Date(5000));
  const WorkEntry fresh;
  EXPECT_EQ(fresh.startedAt(), Date(5000));
  EXPECT_EQ(fresh.createdAt(), Date(5000));
  EXPECT_EQ(fresh.modifiedAt(), Date(5000));
  EXPECT_TRUE(fresh.isRunning());
  EXPECT_EQ(fresh.breakMinutes(), 0);
  EXPECT_EQ(fresh.note(), "");
  EXPECT_NE(fresh.id(), WorkEntry().id());
}

TEST(WorkEntry, ConstructorRaisesNegativeBreaksAndNormalisesTheNote) {
  EXPECT_EQ(entry(Date(0), Date(60), -15).breakMinutes(), 0);
  EXPECT_EQ(entry(Date(0), Date(60), 2000).breakMinutes(), 2000);
  EXPECT_EQ(entry(Date(0), Date(60), 0, "  stand-up\n").note(), "stand-up");
  std::string accented;
  for (int i = 0; i < 300; ++i) accented += "a\u0308";
  EXPECT_EQ(entry(Date(0), Date(60), 0, accented).note().size(), 280u * 3);
}

TEST(WorkEntry, WorkedSeconds) {
  const Date start(10000);
  WorkEntry running = entry(start, std::nullopt, 30);
  EXPECT_EQ(running.workedSeconds(start + 90 * 60), 3600);
  running.setEndedAt(start + 45 * 60);
  EXPECT_EQ(running.workedSeconds(start + 1e6), 900);
  EXPECT_EQ(running.workedSeconds(start - 1e6), 900);

  EXPECT_EQ(entry(start, start - 60, 0).workedSeconds(start), 0);
  EXPECT_EQ(entry(start, start + 600, 11).workedSeconds(start), 0);
  WorkEntry negative = entry(start, start + 600, 0);
  negative.setBreakMinutes(-30);  // setters store as given
  EXPECT_EQ(negative.breakMinutes(), -30);
  EXPECT_EQ(negative.workedSeconds(start), 600);
  EXPECT_EQ(entry(start, Date(std::nan("")), 0).workedSeconds(start), 0);
}

TEST(WorkEntry, RunningEvenWhenStartingInTheFuture) {
  EXPECT_TRUE(entry(Date::now() + 1e6, std::nullopt, 0).isRunning());
  EXPECT_FALSE(entry(Date(0), Date(1), 0).isRunning());
}

}  // namespace
}  // namespace quillmont
