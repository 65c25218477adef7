#include "core/engine/ManualLedgerMigration.h"

#include <gtest/gtest.h>

#include "core/engine/DataStoreMaintenance.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

class ManualLedgerMigrationTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};
  Calendar utc = *Calendar::make("UTC");
  Date monday = *utc.date(2026, 11, 16);
  Date now = monday + 86400 + 12 * 3600;  // Tuesday noon
  Date::ScopedClock clock{now};
  std::shared_ptr<TimeBankSettings> settings;

  void SetUp() override {
    // Expect one hour on Monday and one on Tuesday, nothing else.
    settings = std::make_shared<TimeBankSettings>(UUID::random(), monday, 10, WeekdayMinutes{60, 60, 0, 0, 0, 0, 0},
                                                  std::vector<std::int64_t>{}, "", "[]", true, monday);
    context.insert(settings);
  }
  void work(Date start, std::optional<Date> end) {
    context.insert(std::make_shared<WorkEntry>(UUID::random(), start, end, 0, "", start, start));
  }
  std::vector<std::shared_ptr<BalanceAdjustment>> markers() {
    return context.fetch<BalanceAdjustment>({[](const BalanceAdjustment& a) { return ManualLedgerMigration::isCarryover(a); }, {}});
  }
};

TEST_F(ManualLedgerMigrationTest, FoldsEarnedTimeIntoTheStartingBalanceOnce) {
  // Monday: 2 h 30 s worked; Tuesday: a timer running since 09:00 (3 h by noon).
  work(monday + 9 * 3600, monday + 11 * 3600 + 30);
  work(monday + 86400 + 9 * 3600, std::nullopt);
  // A booked adjustment is not part of the migrated amount.
  context.insert(std::make_shared<BalanceAdjustment>(UUID::random(), monday, 500, "", BalanceAdjustmentKind::manual, monday, monday));
  // worked 5 h 0.5 min, expected 2 h: +180.5 min, truncated to 180.
  EXPECT_TRUE(ManualLedgerMigration::reconcile(context, *settings, utc, now, true));
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(settings->startingBalanceMinutes(), 190);
  EXPECT_EQ(settings->modifiedAt(), now);
  const auto found = markers();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]->minutes(), 0);
  EXPECT_EQ(found[0]->date(), now);
  EXPECT_EQ(found[0]->kindRawValue(), "manual");
  for (const auto& entry : context.fetch<WorkEntry>()) EXPECT_FALSE(entry->isRunning());

  EXPECT_FALSE(ManualLedgerMigration::reconcile(context, *settings, utc, now + 3600, true));
  EXPECT_EQ(settings->startingBalanceMinutes(), 190);
}

TEST_F(ManualLedgerMigrationTest, WaitsForSetUpAndClampsTheBalance) {
  settings->setHasCompletedOnboarding(false);
  EXPECT_FALSE(ManualLedgerMigration::reconcile(context, *settings, utc, now, true));
  EXPECT_TRUE(markers().empty());

  settings->setHasCompletedOnboarding(true);
  settings->setStartingBalanceMinutes(59000);
  work(monday, monday + 86400 * 1.5);  // 36 h worked against 2 h expected: +2040 min
  EXPECT_TRUE(ManualLedgerMigration::reconcile(context, *settings, utc, now, false));
  EXPECT_EQ(settings->startingBalanceMinutes(), 60000);
  EXPECT_TRUE(context.hasChanges());  // saving was left to the caller
}

TEST_F(ManualLedgerMigrationTest, ReducesMarkersToTheLatest) {
  const UUID id = ManualLedgerMigration::adjustmentID();
  for (int i = 0; i < 3; ++i) {
    context.insert(std::make_shared<BalanceAdjustment>(id, now, 0, "", BalanceAdjustmentKind::manual, now, now + i));
  }
  EXPECT_TRUE(ManualLedgerMigration::reconcile(context, *settings, utc, now, true));
  const auto left = markers();
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0]->modifiedAt(), now + 2);
  EXPECT_EQ(settings->startingBalanceMinutes(), 10);
  EXPECT_FALSE(ManualLedgerMigration::reconcile(context, *settings, utc, now, true));
}

TEST_F(ManualLedgerMigrationTest, ABegunLedgerFoldsNothing) {
  work(monday + 9 * 3600, monday + 17 * 3600);
  EXPECT_TRUE(ManualLedgerMigration::beginLedger(context, now, true));
  EXPECT_FALSE(ManualLedgerMigration::beginLedger(context, now, true));
  EXPECT_FALSE(ManualLedgerMigration::reconcile(context, *settings, utc, now, true));
  EXPECT_EQ(settings->startingBalanceMinutes(), 10);
  EXPECT_EQ(markers().size(), 1u);
}

}  // namespace
}  // namespace quillmont
