#include "app/reports/Reports.h"

#include <gtest/gtest.h>

#include "app/session/StoreSession.h"
#include "app/settlement/Settling.h"
#include "app/testing/FiguresStore.h"
#include "platform/foundation/Calendar.h"

namespace quillmont {
namespace {

using testing::FiguresStore;

// 2026-03-04 is a Wednesday.
TEST(Reports, PeriodsAreTheCalendarsWeekMonthAndTheWholeYear) {
  const Calendar calendar = Calendar::autoupdatingCurrent();
  const auto week = Reports::periodAround(Reports::Span::week, {2026, 3, 4}, calendar);
  const auto month = Reports::periodAround(Reports::Span::month, {2026, 3, 4}, calendar);
  const auto year = Reports::periodAround(Reports::Span::year, {2026, 3, 4}, calendar);
  const auto day = Reports::periodAround(Reports::Span::days, {2026, 3, 4}, calendar);
  EXPECT_EQ(week.duration, 7 * 86400);
  EXPECT_LE(week.start, FiguresStore::day(2026, 3, 4));
  EXPECT_EQ(month.start, FiguresStore::at({{2026, 3, 1}, 0, 0}));
  EXPECT_EQ(month.end(), FiguresStore::at({{2026, 4, 1}, 0, 0}));
  EXPECT_EQ(year.start, FiguresStore::at({{2026, 1, 1}, 0, 0}));
  EXPECT_EQ(year.end(), FiguresStore::at({{2027, 1, 1}, 0, 0}));
  EXPECT_EQ(day.start, FiguresStore::at({{2026, 3, 4}, 0, 0}));
  EXPECT_EQ(day.duration, 86400);
}

TEST(Reports, AMonthReachingPastTodayCountsThroughTodayAndNamesItsLastDay) {
  FiguresStore store({{2026, 3, 4}, 12, 0});
  store.setUp({2026, 3, 2}, 0, {480, 480, 480, 480, 480, 0, 0});
  store.work({{2026, 3, 2}, 8, 0}, DateInput::DateTime{{2026, 3, 2}, 18, 15});
  StoreSession session;
  const auto made = Reports::make(session, Reports::periodAround(Reports::Span::month, {2026, 3, 4}, session.calendar()));
  ASSERT_TRUE(made.throughToday);
  EXPECT_EQ(made.lastDay, FiguresStore::at({{2026, 3, 31}, 0, 0}));
  // From the calculation start through today: Monday +2:15, Tuesday −8:00,
  // Wednesday (not over) counts as planned so far.
  ASSERT_EQ(made.report.days.size(), 3u);
  EXPECT_EQ(made.report.days[0].balanceSeconds(), 2.25 * 3600);
  EXPECT_EQ(made.report.days[1].balanceSeconds(), -8 * 3600);
  EXPECT_LT(made.chartRange.lowerBound, -8);
  EXPECT_GT(made.chartRange.upperBound, 2.25);

  const auto past = Reports::make(session, Reports::periodAround(Reports::Span::month, {2026, 2, 4}, session.calendar()));
  EXPECT_FALSE(past.throughToday);
  EXPECT_TRUE(past.report.days.empty());  // before the calculation start
}

TEST(Reports, CategoryTotalsComeInOrderOfFirstBookingWithSettlementsApart) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 3, 2}, 0, {480, 480, 480, 480, 480, 0, 0});
  store.work({{2026, 3, 2}, 8, 0}, DateInput::DateTime{{2026, 3, 2}, 18, 15});
  store.book({2026, 3, 4}, -60, BalanceAdjustmentKind::appointment);
  store.book({2026, 3, 3}, 30);
  store.book({2026, 3, 5}, -30, BalanceAdjustmentKind::appointment);
  store.book({2026, 3, 5}, 0, BalanceAdjustmentKind::longLunch);  // books nothing: left out
  {
    StoreSession session;
    Settling::Request request;
    request.through = DateInput::Day{2026, 3, 2};
    ASSERT_TRUE(Settling::settle(session, request).saved);
  }
  StoreSession session;
  const auto made = Reports::make(session, Reports::periodAround(Reports::Span::week, {2026, 3, 4}, session.calendar()));
  const auto totals = Reports::categoryTotals(session, made.report);
  ASSERT_EQ(totals.size(), 3u);
  EXPECT_EQ(totals[0].title, "Settled worked time");
  EXPECT_EQ(totals[0].seconds, 2.25 * 3600);
  EXPECT_EQ(totals[1].category, "manual");
  EXPECT_EQ(totals[1].count, 1);
  EXPECT_EQ(totals[2].category, "appointment");
  EXPECT_EQ(totals[2].count, 2);
  EXPECT_EQ(totals[2].seconds, -90 * 60);
  // The settled day's own difference is unchanged by its settlement.
  EXPECT_EQ(made.report.days.front().balanceSeconds(), 2.25 * 3600);
}

TEST(Reports, TheCsvDocumentsHaveOneLinePerDayAndPerBookedDay) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 3, 2});
  store.book({2026, 3, 3}, 30);
  store.book({2026, 3, 3}, -15);
  store.book({2026, 3, 5}, 60);
  StoreSession session;
  const auto week = Reports::periodAround(Reports::Span::week, {2026, 3, 4}, session.calendar());
  const auto lines = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
  const std::string days = Reports::daysCSV(session, week);
  EXPECT_EQ(lines(days), 1 + 5);  // a header and Monday through Friday (today)
  const std::string ledger = Reports::ledgerCSV(session, week);
  // Tuesday's two bookings make one line; the ledger's start marker, dated
  // at set-up, makes a line of 0:00.
  EXPECT_EQ(lines(ledger), 1 + 3) << ledger;
  EXPECT_NE(ledger.find("2026-03-03,0.50,0.25,0.25"), std::string::npos) << ledger;
}

}  // namespace
}  // namespace quillmont
