#include "app/settlement/Settling.h"

#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/overview/Overview.h"
#include "app/testing/FiguresStore.h"
#include "platform/store/ModelContainer.h"

namespace quillmont {
namespace {

using testing::FiguresStore;

Settling::Result settle(std::optional<DateInput::Day> from, std::optional<DateInput::Day> through, bool dryRun) {
  StoreSession session;
  Settling::Request request;
  request.from = from;
  request.through = through;
  request.dryRun = dryRun;
  return Settling::settle(session, request);
}

double balance() {
  StoreSession session;
  return Overview::read(session).balanceSeconds;
}

TEST(Settling, RefusesUnsetBanksDaysNotOverAndRangesBackToFront) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  try {
    settle(std::nullopt, std::nullopt, false);
    ADD_FAILURE() << "the bank is not set up";
  } catch (const Refusal& refusal) {
    EXPECT_STREQ(refusal.what(), "the time bank is not set up yet");
    EXPECT_EQ(refusal.remedy().kind, Remedy::Kind::finishSetup);
  }
  store.setUp({2026, 3, 2});
  try {
    settle(std::nullopt, DateInput::Day{2026, 3, 6}, false);
    ADD_FAILURE() << "today is not over";
  } catch (const InvalidInput& error) {
    EXPECT_EQ(error.field(), "through");
  }
  try {
    settle(DateInput::Day{2026, 3, 5}, DateInput::Day{2026, 3, 4}, false);
    ADD_FAILURE() << "from after through";
  } catch (const InvalidInput& error) {
    EXPECT_EQ(error.field(), "from");
  }
}

// A ledger kept by bookings alone owes nothing; the days before work was
// first recorded are not counted against it unless asked for.
TEST(Settling, StartsAtTheFirstRecordedWorkAndBooksEachDayOnce) {
  FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 2, 23}, 0, {480, 480, 480, 480, 480, 0, 0});
  EXPECT_TRUE(settle(std::nullopt, DateInput::Day{2026, 3, 4}, false).noWork);

  store.work({{2026, 3, 2}, 8, 0}, DateInput::DateTime{{2026, 3, 2}, 18, 15});
  store.work({{2026, 3, 3}, 9, 0}, DateInput::DateTime{{2026, 3, 3}, 17, 0});
  const auto planned = settle(std::nullopt, DateInput::Day{2026, 3, 4}, true);
  EXPECT_FALSE(planned.saved);
  ASSERT_EQ(planned.planned.size(), 3u);  // Monday through Wednesday
  ASSERT_EQ(planned.booked.size(), 2u);   // Tuesday balances to 0:00
  EXPECT_EQ(planned.minutes, 135 - 480);
  EXPECT_EQ(balance(), 0);

  const auto done = settle(std::nullopt, DateInput::Day{2026, 3, 4}, false);
  EXPECT_TRUE(done.saved);
  EXPECT_EQ(done.minutes, 135 - 480);
  EXPECT_EQ(balance(), (135 - 480) * 60);
  // Settled days are not settled again; undo takes the action back whole.
  const auto again = settle(std::nullopt, DateInput::Day{2026, 3, 4}, false);
  EXPECT_TRUE(again.booked.empty());
  EXPECT_FALSE(again.saved);
  {
    StoreSession session;
    session.container()->undoLastAction();
  }
  EXPECT_EQ(balance(), 0);

  // Asked for, the earlier days are settled too.
  const auto earlier = settle(DateInput::Day{2026, 2, 27}, DateInput::Day{2026, 3, 2}, true);
  ASSERT_FALSE(earlier.booked.empty());
  EXPECT_EQ(earlier.booked.front().minutes, -480);
}

}  // namespace
}  // namespace quillmont
