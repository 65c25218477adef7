#include "core/widgetstate/WidgetSnapshotBuilder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

using Minutes = std::array<std::int64_t, 4>;

class WidgetSnapshotBuilderTest : public ::testing::Test {
 protected:
  // make() reads the process's zone (ICU follows $TZ on every call).
  void SetUp() override {
    if (const char* zone = std::getenv("TZ")) previousZone = zone;
    useZone("UTC");
  }
  void TearDown() override {
    if (previousZone) return useZone(previousZone->c_str());
    unsetenv("TZ");
    tzset();
  }
  static void useZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  void configure(std::int64_t startingMinutes, bool setUp, Minutes quickActions = {15, 30, 60, 120}) {
    context.insert(std::make_shared<TimeBankSettings>(UUID::random(), longAgo, startingMinutes, defaultWeekdayMinutes,
                                                      quickActions, "", "[]", setUp, longAgo));
    // A bank set up from scratch begins its ledger at once: nothing is folded in later.
    if (setUp) ManualLedgerMigration::beginLedger(context, longAgo, false);
    context.save();
  }
  void book(Date date, std::int64_t minutes) {
    context.insert(std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, "", BalanceAdjustmentKind::manual,
                                                       longAgo, longAgo));
  }
  WidgetSnapshot make(Date at) {
    context.save();
    const Date::ScopedClock clock(at);
    return WidgetSnapshotBuilder::make(context, at);
  }

  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};
  const Date today = *Calendar::make("UTC")->date(2026, 5, 12);
  const Date now = today + 14 * 3600.0;
  const Date longAgo = today - 40 * 86400.0;
  std::optional<std::string> previousZone;
};

TEST_F(WidgetSnapshotBuilderTest, AnEmptyStoreGivesTheSettingsMaintenanceMakes) {
  EXPECT_EQ(make(now), WidgetSnapshot(0, 0, 0, std::nullopt, Minutes{15, 30, 60, 120}, now, false));
  EXPECT_EQ(ModelContext(container).fetch<TimeBankSettings>().size(), 1u);  // and saved
}

TEST_F(WidgetSnapshotBuilderTest, StartingBalanceQuickActionsAndSetUpComeFromTheSettings) {
  configure(90, false, {45, 5, 480, 90});
  auto snapshot = make(now);
  EXPECT_EQ(snapshot.balanceSeconds, 90 * 60);
  EXPECT_EQ(snapshot.quickActionMinutes, (Minutes{45, 5, 480, 90}));
  EXPECT_FALSE(snapshot.isConfigured);

  const auto settings = context.fetch<TimeBankSettings>().front();
  settings->setHasCompletedOnboarding(true);
  settings->setStartingBalanceMinutes(-70000);  // beyond the limit: maintenance runs first and clamps it
  ManualLedgerMigration::beginLedger(context, longAgo, false);
  snapshot = make(now);
  EXPECT_TRUE(snapshot.isConfigured);
  EXPECT_EQ(snapshot.balanceSeconds, -60000 * 60);
}

TEST_F(WidgetSnapshotBuilderTest, TodayCountsCreditsAndDebitsFromMidnightThroughNow) {
  configure(100, true);
  book(today + 9 * 3600.0, 90);
  book(today + 10 * 3600.0, -30);
  book(today + 11 * 3600.0, 15);
  auto snapshot = make(now);
  EXPECT_EQ(snapshot.todayWorkedSeconds, 6300);
  EXPECT_EQ(snapshot.todayExpectedSeconds, 1800);
  EXPECT_EQ(snapshot.balanceSeconds, (100 + 90 - 30 + 15) * 60);

  book(today, 20);             // the first instant of today counts
  book(now, -5);               // and so does now
  book(today - 60, 40);        // yesterday 23:59: the balance only
  book(now + 60, 50);          // after now: neither
  book(today + 12 * 3600, 0);  // nothing either way
  snapshot = make(now);
  EXPECT_EQ(snapshot.todayWorkedSeconds, (90 + 15 + 20) * 60);
  EXPECT_EQ(snapshot.todayExpectedSeconds, (30 + 5) * 60);
  EXPECT_EQ(snapshot.balanceSeconds, (100 + 90 - 30 + 15 + 20 - 5 + 40) * 60);
  EXPECT_EQ(snapshot.updatedAt, now);

  snapshot = make(now + 120);  // later, the booking at now + 60 counts everywhere
  EXPECT_EQ(snapshot.todayWorkedSeconds, (90 + 15 + 20 + 50) * 60);
  EXPECT_EQ(snapshot.balanceSeconds, (100 + 90 - 30 + 15 + 20 - 5 + 40 + 50) * 60);
}

TEST_F(WidgetSnapshotBuilderTest, TodayIsTheLocalDayOfTheProcessZone) {
  useZone("Europe/Berlin");
  ASSERT_EQ(Calendar::autoupdatingCurrent().timeZoneIdentifier(), "Europe/Berlin");
  // 2026-03-29 has 23 hours in Berlin; its midnight is 23:00 UTC of the day before.
  const Date start = *Calendar::make("Europe/Berlin")->date(2026, 3, 29);
  configure(0, true);
  book(start, 30);                  // today in Berlin, still the 28th in UTC
  book(start - 1, 60);              // 23:59:59 on the 28th: yesterday
  book(start + 2.5 * 3600.0, -15);  // 03:30, after the change
  const auto snapshot = make(start + 10 * 3600.0);
  EXPECT_EQ(snapshot.todayWorkedSeconds, 30 * 60);
  EXPECT_EQ(snapshot.todayExpectedSeconds, 15 * 60);
  EXPECT_EQ(snapshot.balanceSeconds, (30 + 60 - 15) * 60);
}

// The marks that let a command skip maintenance, the ledger-start check and
// the sum of every booking must never change a result. Two stores go through
// the same commands and the same writes of another program (bookings out of
// normal form, extra and deleted start markers, a clock that goes back); one
// store loses its marks before every command, so it always takes the full
// path. Both must hold the same bookings and give the same widget figures
// after every command.
struct Twin {
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);

  using Row = std::tuple<double, std::int64_t, std::string, std::string, double, double, bool>;
  std::vector<Row> rows() {
    ModelContext context(container);
    std::vector<Row> result;
    for (const auto& adjustment : context.fetch<BalanceAdjustment>()) {
      result.emplace_back(adjustment->date().timeIntervalSinceReferenceDate, adjustment->minutes(),
                          adjustment->kindRawValue(), adjustment->note(),
                          adjustment->createdAt().timeIntervalSinceReferenceDate,
                          adjustment->modifiedAt().timeIntervalSinceReferenceDate,
                          ManualLedgerMigration::isCarryover(*adjustment));
    }
    std::sort(result.begin(), result.end());
    return result;
  }
  void forgetMarks() {
    for (const char* key : {"maintenance.BalanceAdjustmentChecked", "maintenance.WorkEntryChecked",
                            "maintenance.WorkScheduleChecked", "ledger.singleMarkerGeneration",
                            "ledger.BalanceAdjustmentTotal"}) {
      container->setMetadata(key, "-");
    }
  }
};

RC_GTEST_PROP(WidgetSnapshotBuilderProperty, MarksNeverChangeWhatACommandSees, ()) {
  const Date start = *Calendar::make("UTC")->date(2026, 5, 12) + 9 * 3600.0;
  Twin marked;
  Twin full;
  for (Twin* twin : {&marked, &full}) {
    ModelContext context(twin->container);
    context.insert(std::make_shared<TimeBankSettings>(*UUID::parse("00000000-0000-4000-8000-000000000001"),
                                                      start - 86400 * 30, 0, defaultWeekdayMinutes,
                                                      std::vector<std::int64_t>{}, "", "[]", true, start - 86400));
    context.save();
  }
  Date now = start;
  // A write of records as they come (an import, or another program): out of
  // normal form, extra start markers, deletions.
  struct Write {
    bool deletes;
    UUID id;
    std::int64_t minutes;
    std::string category;
    Date modifiedAt;
    void apply(ModelContext& context, Date now) const {
      if (deletes) {
        const auto all = context.fetch<BalanceAdjustment>();
        if (!all.empty()) context.deleteRecord(all[all.size() / 2]);
        return;
      }
      auto adjustment = std::make_shared<BalanceAdjustment>(id, now - 3600, minutes, " note ",
                                                            BalanceAdjustmentKind::manual, now - 3600, modifiedAt);
      adjustment->setKindRawValue(category);
      context.insert(adjustment);
    }
  };
  const auto someWrite = [&] {
    const int kind = *rc::gen::inRange(0, 4);
    return Write{kind == 1, kind == 0 ? ManualLedgerMigration::adjustmentID() : UUID::random(),
                 *rc::gen::element<std::int64_t>(30, -30, 70000, -2000),
                 *rc::gen::element<std::string>("manual", "holiday", "Holiday", "lunchBreak"),
                 now + *rc::gen::element(0, 3600, 86400)};
  };
  const int steps = *rc::gen::inRange(1, 14);
  for (int step = 0; step < steps; ++step) {
    now = now + *rc::gen::inRange(-900, 4 * 3600);  // the clock may go back
    const Date::ScopedClock clock(now);
    if (*rc::gen::inRange(0, 5) < 2) {
      // A command: maintenance, a booking or a write of records as they
      // come, then the widget's figures.
      const std::int64_t minutes = *rc::gen::element<std::int64_t>(0, 60, -60, 45);
      const std::optional<Write> write = minutes == 0 ? std::optional(someWrite()) : std::nullopt;
      full.forgetMarks();
      std::vector<WidgetSnapshot> snapshots;
      for (Twin* twin : {&marked, &full}) {
        ModelContext context(twin->container);
        DataStoreMaintenance::reconcile(context, Calendar::autoupdatingCurrent(), now, true);
        if (minutes != 0) TimeBankTransactionController::record(minutes, now, "", "manual", context);
        if (write) {
          write->apply(context, now);
          context.save();
        }
        snapshots.push_back(WidgetSnapshotBuilder::make(context, now));
      }
      RC_ASSERT(snapshots[0] == snapshots[1]);
      RC_ASSERT(marked.rows() == full.rows());
    } else {
      const Write write = someWrite();
      for (Twin* twin : {&marked, &full}) {
        ModelContext context(twin->container);
        write.apply(context, now);
        context.save();
      }
    }
  }
}

}  // namespace
}  // namespace quillmont
