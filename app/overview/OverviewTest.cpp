#include "app/overview/Overview.h"

#include <gtest/gtest.h>

#include "app/reports/Reports.h"
#include "app/testing/FiguresStore.h"

namespace quillmont {
namespace {

using testing::FiguresStore;

TEST(Overview, AnUnsetBankShowsNothingUnsettled) {
  FiguresStore store({{2026, 3, 4}, 10, 0});
  store.work({{2026, 3, 2}, 8, 0}, DateInput::DateTime{{2026, 3, 2}, 18, 0});
  StoreSession session;
  const Overview::Figures figures = Overview::read(session);
  EXPECT_FALSE(figures.isConfigured);
  EXPECT_EQ(figures.unsettledSeconds, 0);
  EXPECT_FALSE(figures.unsettledSince);
  EXPECT_FALSE(figures.runningSince);
}

// Worked time counts time that two entries cover once, a running entry up
// to now, and agrees with the report of today; yesterday's night work that
// reaches into today brings its share (its break spread over the chain).
TEST(Overview, WorkedTodayCountsTimeCoveredTwiceOnceAndAgreesWithTheReport) {
  FiguresStore store({{2026, 3, 4}, 4, 30});
  store.setUp({2026, 3, 3}, 0, {480, 480, 480, 480, 480, 480, 480});
  store.work({{2026, 3, 4}, 1, 0}, DateInput::DateTime{{2026, 3, 4}, 2, 0});
  store.work({{2026, 3, 4}, 1, 30}, DateInput::DateTime{{2026, 3, 4}, 2, 30});
  {
    StoreSession session;
    EXPECT_EQ(Overview::read(session).todayWorkedSeconds, 5400);
  }
  store.work({{2026, 3, 3}, 23, 0}, DateInput::DateTime{{2026, 3, 4}, 1, 0}, 60);
  StoreSession session;
  const double worked = Overview::read(session).todayWorkedSeconds;
  EXPECT_NEAR(worked, 2.5 * 3600 * 2.5 / 3.5, 1e-6);
  const auto today = Reports::make(session, Reports::periodAround(Reports::Span::days, {2026, 3, 4}, session.calendar()));
  EXPECT_EQ(worked, today.report.workedSeconds());
}

TEST(Overview, TheTimerRunsSinceTheEarliestOfSeveralRunningEntries) {
  FiguresStore store({{2026, 3, 4}, 11, 0});
  store.setUp({2026, 3, 4});
  store.work({{2026, 3, 4}, 10, 0}, std::nullopt);
  {
    StoreSession session;
    const auto figures = Overview::read(session);
    ASSERT_TRUE(figures.runningSince);
    EXPECT_EQ(*figures.runningSince, FiguresStore::at({{2026, 3, 4}, 10, 0}));
    EXPECT_EQ(figures.todayWorkedSeconds, 3600);
  }
  // Two running entries (two machines merged, say): one timer is kept.
  store.work({{2026, 3, 4}, 9, 0}, std::nullopt);
  StoreSession session;
  const auto figures = Overview::read(session);
  ASSERT_TRUE(figures.runningSince);
  EXPECT_EQ(*figures.runningSince, FiguresStore::at({{2026, 3, 4}, 9, 0}));
  EXPECT_LE(figures.todayWorkedSeconds, 2 * 3600);
}

TEST(Overview, BalanceTodayAndUnsettledAreTheLedgersFigures) {
  FiguresStore store({{2026, 3, 4}, 12, 0});
  store.setUp({2026, 3, 2}, 60, {480, 480, 480, 480, 480, 0, 0});
  store.work({{2026, 3, 3}, 8, 0}, DateInput::DateTime{{2026, 3, 3}, 18, 15});  // +2:15 on Tuesday
  store.book({2026, 3, 4}, 30);
  store.book({2026, 3, 4}, -45, BalanceAdjustmentKind::appointment);
  StoreSession session;
  const auto figures = Overview::read(session);
  EXPECT_TRUE(figures.isConfigured);
  EXPECT_EQ(figures.balanceSeconds, (60 + 30 - 45) * 60);  // worked time is not in the ledger until settled
  EXPECT_EQ(figures.todayCreditSeconds, 30 * 60);
  EXPECT_EQ(figures.todayDebitSeconds, 45 * 60);
  ASSERT_TRUE(figures.unsettledSince);
  EXPECT_EQ(session.calendar().startOfDay(*figures.unsettledSince), FiguresStore::at({{2026, 3, 3}, 0, 0}));
  EXPECT_EQ(figures.unsettledSeconds, 2.25 * 3600);
}

}  // namespace
}  // namespace quillmont
