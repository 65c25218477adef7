#include "core/engine/DataStoreMaintenance.h"

#include <gtest/gtest.h>

#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

class DataStoreMaintenanceTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};
  Calendar berlin = *Calendar::make("Europe/Berlin");
  Date now = *berlin.date(2026, 11, 20) + 12 * 3600.0;
  Date::ScopedClock clock{now};

  template <class Record, class... Arguments>
  std::shared_ptr<Record> add(Arguments&&... arguments) {
    auto record = std::make_shared<Record>(std::forward<Arguments>(arguments)...);
    context.insert(record);
    return record;
  }
  std::shared_ptr<TimeBankSettings> addSettings(bool completed, Date modifiedAt, const char* id = nullptr) {
    return add<TimeBankSettings>(id ? *UUID::parse(id) : UUID::random(), now - 86400 * 30, 0, defaultWeekdayMinutes,
                                 std::vector<std::int64_t>{}, "", "[]", completed, modifiedAt);
  }
  std::shared_ptr<WorkSchedule> addSchedule(Date effectiveFrom, Date modifiedAt, WeekdayMinutes minutes = defaultWeekdayMinutes) {
    return add<WorkSchedule>(UUID::random(), effectiveFrom, minutes, modifiedAt, modifiedAt);
  }
};

// Work entries are checked again whenever they may have changed since a pass
// found them in order: another process wrote them, this context holds
// unsaved ones, or the clock went back.
TEST_F(DataStoreMaintenanceTest, ActivityChecksEntriesAgainWheneverTheyMayHaveChanged) {
  add<WorkEntry>(UUID::random(), now - 7200, now - 60, 30, "", now - 7200, now - 7200);
  context.save();
  DataStoreMaintenance::reconcileActivity(context, now, true);
  const auto passed = container->metadata("maintenance.WorkEntryChecked");
  ASSERT_TRUE(passed) << "a clean pass records itself";
  EXPECT_TRUE(passed->starts_with(std::to_string(context.generation<WorkEntry>()) + " "));

  // Another connection (another process) stores an entry out of order.
  {
    ModelContext other(container);
    other.insert(std::make_shared<WorkEntry>(UUID::random(), now - 3600, now - 60, 900, "", now, now));
    other.save();
  }
  DataStoreMaintenance::reconcileActivity(context, now, true);
  for (const auto& entry : context.fetch<WorkEntry>()) EXPECT_LE(entry->breakMinutes(), 240);

  // Unsaved entries of this context are checked even when the store is in order.
  DataStoreMaintenance::reconcileActivity(context, now, true);
  const auto pending = add<WorkEntry>(UUID::random(), now - 3600, now - 60, 999, "", now, now);
  DataStoreMaintenance::reconcileActivity(context, now, false);
  EXPECT_EQ(pending->breakMinutes(), 240);
  context.save();

  // A clock set back makes a modification time "in the future" again.
  DataStoreMaintenance::reconcileActivity(context, now, true);
  DataStoreMaintenance::reconcileActivity(context, now, true);
  ModelContext fresh(container);
  DataStoreMaintenance::reconcileActivity(fresh, now - 3600, true);
  for (const auto& entry : fresh.fetch<WorkEntry>()) EXPECT_LE(entry->modifiedAt(), now - 3600 + 300);
}

TEST_F(DataStoreMaintenanceTest, SchedulesAreCheckedAgainWhenTheyOrTheCalendarChange) {
  addSettings(true, now);
  addSchedule(*berlin.date(2026, 3, 1), now);
  context.save();
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  ASSERT_TRUE(container->metadata("maintenance.WorkScheduleChecked"));

  // Another connection stores a schedule that does not start at midnight.
  {
    ModelContext other(container);
    other.insert(std::make_shared<WorkSchedule>(UUID::random(), *berlin.date(2026, 4, 1) + 3600, defaultWeekdayMinutes,
                                                now, now));
    other.save();
  }
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  for (const auto& schedule : context.fetch<WorkSchedule>()) {
    EXPECT_EQ(schedule->effectiveFrom(), berlin.startOfDay(schedule->effectiveFrom()));
  }
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);

  // The same store read in another zone: its day starts are midnights there.
  const Calendar tokyo = *Calendar::make("Asia/Tokyo");
  DataStoreMaintenance::reconcileConfiguration(context, tokyo, now, true);
  for (const auto& schedule : context.fetch<WorkSchedule>()) {
    EXPECT_EQ(schedule->effectiveFrom(), tokyo.startOfDay(schedule->effectiveFrom()));
  }
}

TEST_F(DataStoreMaintenanceTest, ActivityClampsEntriesAndAdjustments) {
  const auto longBreak = add<WorkEntry>(UUID::random(), now - 7200, now - 60, 300, "", now - 7200, now - 7200);
  const auto backwards = add<WorkEntry>(UUID::random(), now - 3600, now - 7200, 0, "", now - 7200, now - 7200);
  const auto running = add<WorkEntry>(UUID::random(), now - 3600, std::nullopt, 0, "", now - 3600, now - 3600);
  const auto future = add<WorkEntry>(UUID::random(), now - 3600, now, 0, "", now + 900, now + 600);
  const auto unknown = add<BalanceAdjustment>(UUID::random(), now, 70000, "", BalanceAdjustmentKind::manual, now, now);
  unknown->setKindRawValue("Holiday");
  const auto credit = add<BalanceAdjustment>(UUID::random(), now, -30, "  x  ", BalanceAdjustmentKind::holiday, now, now);
  context.save();

  DataStoreMaintenance::reconcileActivity(context, now, true);
  EXPECT_FALSE(context.hasChanges());
  EXPECT_EQ(longBreak->breakMinutes(), 240);
  EXPECT_EQ(backwards->endedAt(), backwards->startedAt());
  EXPECT_TRUE(running->isRunning());
  EXPECT_EQ(future->modifiedAt(), now);
  EXPECT_EQ(future->createdAt(), now);
  EXPECT_EQ(unknown->kindRawValue(), "manual");
  EXPECT_EQ(unknown->minutes(), 60000);
  EXPECT_EQ(credit->minutes(), 0);
  EXPECT_EQ(credit->note(), "x");
  EXPECT_EQ(running->modifiedAt(), now - 3600);  // untouched records keep their times
}

TEST_F(DataStoreMaintenanceTest, AnEmptyStoreGainsDefaultSettingsAndIsNotMigrated) {
  const auto settings = DataStoreMaintenance::reconcile(context, berlin, now, true);
  EXPECT_FALSE(context.hasChanges());
  ASSERT_EQ(context.fetch<TimeBankSettings>().size(), 1u);
  EXPECT_EQ(settings->weekdayMinutes(), defaultWeekdayMinutes);
  EXPECT_EQ(settings->quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{15, 30, 60, 120}));
  EXPECT_EQ(settings->calculationStartDate(), *berlin.date(2026, 11, 20));
  EXPECT_FALSE(settings->hasCompletedOnboarding());
  EXPECT_TRUE(context.fetch<BalanceAdjustment>().empty());
}

TEST_F(DataStoreMaintenanceTest, OneSettingsRecordSurvives) {
  const auto setUp = addSettings(true, now - 86400);
  addSettings(false, now);
  const auto future = addSettings(false, now + 3600);
  EXPECT_EQ(DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true), setUp);
  EXPECT_EQ(context.fetch<TimeBankSettings>().size(), 1u);
  EXPECT_EQ(future->modifiedAt(), now);

  // Equal in set-up and time: the greater identifier text wins.
  addSettings(true, setUp->modifiedAt(), "FFFFFFFF-0000-4000-8000-000000000000");
  const auto winner = DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  EXPECT_EQ(winner->id().uuidString(), "FFFFFFFF-0000-4000-8000-000000000000");
}

TEST_F(DataStoreMaintenanceTest, SettingsAreNormalised) {
  const auto settings = addSettings(true, now - 100);
  settings->setCalculationStartDate(*berlin.date(1995, 6, 1) + 3600);
  settings->setStartingBalanceMinutes(70000);
  settings->setMondayMinutes(2000);
  settings->setQuickActionOneMinutes(7);
  settings->setVisibleAdjustmentKindsRawValue("other,unknown");
  settings->setCustomAdjustmentCategoriesRawValue(R"(["Gym","gym"," "])");
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  EXPECT_EQ(settings->calculationStartDate(), *berlin.date(2000, 1, 1));
  EXPECT_EQ(settings->startingBalanceMinutes(), 60000);
  EXPECT_EQ(settings->mondayMinutes(), 1440);
  EXPECT_EQ(settings->quickActionOneMinutes(), 5);
  EXPECT_EQ(settings->visibleAdjustmentKindsRawValue(), "other");
  EXPECT_EQ(settings->customAdjustmentCategoriesRawValue(), R"(["Gym"])");
  EXPECT_EQ(settings->modifiedAt(), now);

  settings->setCalculationStartDate(now + 86400 * 10);  // never after today
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  EXPECT_EQ(settings->calculationStartDate(), *berlin.date(2026, 11, 20));
  const Date stamped = settings->modifiedAt();
  EXPECT_EQ(DataStoreMaintenance::reconcileConfiguration(context, berlin, now + 60, true), settings);
  EXPECT_EQ(settings->modifiedAt(), stamped);  // nothing to change
}

TEST_F(DataStoreMaintenanceTest, OneSchedulePerDayStartingAtMidnight) {
  addSettings(false, now);
  const Date day = *berlin.date(2026, 3, 2);
  addSchedule(day + 8 * 3600, now - 100);
  const auto later = addSchedule(day + 17 * 3600, now - 50, WeekdayMinutes{0, 0, 1, 2, 3, 4, 5});
  later->setMondayMinutes(2000);  // single setters store out-of-range values
  later->setTuesdayMinutes(-30);
  const auto other = addSchedule(*berlin.date(2026, 4, 1), now - 10);
  DataStoreMaintenance::reconcileConfiguration(context, berlin, now, true);
  const auto schedules = context.fetch<WorkSchedule>();
  ASSERT_EQ(schedules.size(), 2u);
  EXPECT_EQ(later->effectiveFrom(), day);
  EXPECT_EQ(later->weekdayMinutes(), (WeekdayMinutes{1440, 0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(later->modifiedAt(), now);
  EXPECT_EQ(other->modifiedAt(), now - 10);
  EXPECT_EQ(ModelContext(container).fetch<WorkSchedule>().size(), 2u);
}

TEST_F(DataStoreMaintenanceTest, EraseAllEmptiesEveryType) {
  addSettings(true, now);
  addSchedule(now, now);
  add<WorkEntry>();
  add<BalanceAdjustment>();
  context.save();
  DataStoreMaintenance::eraseAll(context);
  ModelContext fresh(container);
  EXPECT_TRUE(fresh.fetch<WorkEntry>().empty());
  EXPECT_TRUE(fresh.fetch<BalanceAdjustment>().empty());
  EXPECT_TRUE(fresh.fetch<WorkSchedule>().empty());
  EXPECT_TRUE(fresh.fetch<TimeBankSettings>().empty());
}

}  // namespace
}  // namespace quillmont
