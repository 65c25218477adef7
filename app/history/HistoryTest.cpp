#include "app/history/History.h"

#include <gtest/gtest.h>

#include "app/testing/FiguresStore.h"

namespace quillmont {
namespace {

using testing::FiguresStore;
using Kind = History::Row::Kind;

TEST(History, NewestFirstWithTheBalanceAfterEachBookingAndNoStartMarker) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 3, 2}, 120);
  store.book({2026, 3, 4}, -30, BalanceAdjustmentKind::appointment);
  store.book({2026, 3, 2}, 45);
  store.work({{2026, 3, 3}, 9, 0}, DateInput::DateTime{{2026, 3, 3}, 17, 30}, 30);
  store.work({{2026, 3, 6}, 11, 0}, std::nullopt);  // running: counts up to now

  StoreSession session;
  const auto rows = History::read(session);
  ASSERT_EQ(rows.size(), 4u);  // the ledger's start marker is not listed
  EXPECT_EQ(rows[0].kind, Kind::work);
  EXPECT_FALSE(rows[0].endedAt);
  EXPECT_EQ(rows[0].seconds, 3600);
  EXPECT_FALSE(rows[0].balanceAfterSeconds);

  EXPECT_EQ(rows[1].kind, Kind::booking);
  EXPECT_EQ(rows[1].seconds, -30 * 60);
  EXPECT_EQ(rows[1].category, "Appointment");
  EXPECT_EQ(rows[1].balanceAfterSeconds, (120 + 45 - 30) * 60);

  EXPECT_EQ(rows[2].kind, Kind::work);
  EXPECT_EQ(rows[2].seconds, 8 * 3600);
  EXPECT_EQ(rows[2].breakMinutes, 30);

  EXPECT_EQ(rows[3].balanceAfterSeconds, (120 + 45) * 60);
}

TEST(History, BookingsOfOneInstantReadDownToTheBalanceBeforeThem) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 3, 2});
  store.book({2026, 3, 4}, 10);
  store.book({2026, 3, 4}, 20);
  store.book({2026, 3, 4}, 40);
  StoreSession session;
  const auto rows = History::read(session);
  ASSERT_EQ(rows.size(), 3u);
  // Each row's balance less its amount is the next row's balance.
  EXPECT_EQ(rows[0].balanceAfterSeconds, 70 * 60);
  EXPECT_EQ(*rows[0].balanceAfterSeconds - rows[0].seconds, *rows[1].balanceAfterSeconds);
  EXPECT_EQ(*rows[1].balanceAfterSeconds - rows[1].seconds, *rows[2].balanceAfterSeconds);
  EXPECT_EQ(*rows[2].balanceAfterSeconds - rows[2].seconds, 0);
}

}  // namespace
}  // namespace quillmont
