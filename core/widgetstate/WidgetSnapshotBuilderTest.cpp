#include "core/widgetstate/WidgetSnapshotBuilder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
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

}  // namespace
}  // namespace quillmont
