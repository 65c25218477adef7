// Erase, undo and the diagnosis on stores in temporary data homes.
#include "app/housekeeping/Housekeeping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "app/Refusal.h"
#include "app/housekeeping/Diagnosis.h"
#include "app/testing/TemporaryHome.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryHome;

const Date now = Date::fromTimeIntervalSince1970(1'780'272'000);

void book(std::int64_t minutes, const std::string& action) {
  StoreSession session;
  session.journal(action);
  session.context().insert(std::make_shared<BalanceAdjustment>(UUID::random(), now, minutes, "",
                                                               BalanceAdjustmentKind::manual, now, now));
  session.context().save();
}

std::size_t bookings() {
  StoreSession session;
  return session.context().fetch<BalanceAdjustment>().size();
}

TEST(Housekeeping, AnEraseIsTakenBackWholeAndThenTheChangeBeforeIt) {
  Date::ScopedClock clock(now);
  TemporaryHome home;
  {
    StoreSession session;
    EXPECT_THROW(Housekeeping::lastChange(session), Refusal);
    EXPECT_THROW(Housekeeping::undo(session), Refusal);
  }
  book(30, "book 30");
  book(-15, "book -15");
  {
    StoreSession session;
    Housekeeping::eraseAll(session);
  }
  EXPECT_EQ(bookings(), 0u);
  StoreSession session;
  EXPECT_EQ(Housekeeping::lastChange(session).name, "erase");
  EXPECT_EQ(Housekeeping::undo(session).name, "erase");
  EXPECT_EQ(bookings(), 2u);
  EXPECT_EQ(Housekeeping::lastChange(session).name, "book -15");  // a look changes nothing
  EXPECT_EQ(Housekeeping::undo(session).name, "book -15");
  EXPECT_EQ(bookings(), 1u);
}

TEST(Housekeeping, UndoIsRefusedWhenItsRecordsChangedSince) {
  Date::ScopedClock clock(now);
  TemporaryHome home;
  book(30, "book 30");
  {
    // Changed without a journal, as another program would.
    StoreSession session;
    session.context().fetch<BalanceAdjustment>().front()->setMinutes(45);
    session.context().save();
  }
  StoreSession session;
  try {
    Housekeeping::undo(session);
    ADD_FAILURE() << "undid a changed booking";
  } catch (const Refusal& refusal) {
    EXPECT_THAT(refusal.what(), HasSubstr("the last change cannot be undone: 1 of its"));
  }
  EXPECT_EQ(session.context().fetch<BalanceAdjustment>().front()->minutes(), 45);
}

TEST(Diagnosis, ExaminingAHomeWithoutAStoreCreatesNothing) {
  TemporaryHome home;
  const Diagnosis diagnosis = Diagnosis::examine();
  EXPECT_TRUE(diagnosis.dataHomeFromEnvironment);
  EXPECT_EQ(diagnosis.entitlements, ProcessEntitlements::Source::overridden);
  EXPECT_TRUE(diagnosis.appGroupUsable);
  EXPECT_FALSE(diagnosis.storeExists);
  EXPECT_FALSE(diagnosis.widgetSnapshotExists);
  EXPECT_TRUE(diagnosis.healthy());
  EXPECT_FALSE(std::filesystem::exists(home.folder() / "data"));
}

TEST(Diagnosis, AStoreIsCountedAndChecked) {
  Date::ScopedClock clock(now);
  TemporaryHome home;
  book(30, "book 30");
  const Diagnosis diagnosis = Diagnosis::examine();
  ASSERT_TRUE(diagnosis.store.has_value()) << diagnosis.storeError;
  EXPECT_EQ(diagnosis.store->integrity, "ok");
  EXPECT_EQ(diagnosis.store->bookings, 1u);
  EXPECT_EQ(diagnosis.store->timeZone, "UTC");
  EXPECT_TRUE(diagnosis.healthy());

  // A store that is no database cannot be opened: that needs attention.
  std::filesystem::resize_file(diagnosis.storePath, 0);
  std::ofstream(diagnosis.storePath) << "this is not a database, not even a small one, but text";
  const Diagnosis damaged = Diagnosis::examine();
  EXPECT_FALSE(damaged.store.has_value());
  EXPECT_FALSE(damaged.storeError.empty());
  EXPECT_FALSE(damaged.healthy());
}

}  // namespace
}  // namespace quillmont
