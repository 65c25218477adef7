#include "app/configuration/Configuration.h"

#include <gtest/gtest.h>

#include "app/testing/FiguresStore.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

using testing::FiguresStore;

TEST(Configuration, ReadsTheSetUpWeekAndSchedulesInTheOrderTheyTakeEffect) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  {
    StoreSession session;
    EXPECT_FALSE(Configuration::read(session).isSetUp);
  }
  store.setUp({2026, 3, 2}, -90, {420, 420, 420, 420, 300, 0, 0});
  {
    StoreSession session;
    const Date now = session.now();
    const WeekdayMinutes later{480, 480, 480, 480, 480, 0, 0};
    const WeekdayMinutes earlier{240, 240, 240, 240, 240, 0, 0};
    session.context().insert(std::make_shared<WorkSchedule>(UUID::random(), FiguresStore::day(2026, 4, 1), later, now, now));
    session.context().insert(std::make_shared<WorkSchedule>(UUID::random(), FiguresStore::day(2026, 1, 1), earlier, now, now));
    session.context().save();
  }
  StoreSession session;
  const auto settings = Configuration::read(session);
  EXPECT_TRUE(settings.isSetUp);
  EXPECT_EQ(settings.startingBalanceMinutes, -90);
  EXPECT_EQ(settings.week[4], 300);
  EXPECT_EQ(settings.quickActionMinutes.size(), 4u);
  EXPECT_FALSE(settings.visibleKinds.empty());
  ASSERT_GE(settings.schedules.size(), 2u);
  for (std::size_t i = 1; i < settings.schedules.size(); ++i) {
    EXPECT_LE(settings.schedules[i - 1].effectiveFrom, settings.schedules[i].effectiveFrom);
  }
  EXPECT_EQ(settings.schedules.back().week[0], 480);
}

}  // namespace
}  // namespace quillmont
