#include "app/settings/Settings.h"

#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using testing::utc;

TEST(Settings, ValuesOutsideWhatTheStoreKeepsAreRefused) {
  EXPECT_EQ(Settings::startingBalance(-60000), -60000);
  EXPECT_THROW(Settings::startingBalance(60001), InvalidInput);
  EXPECT_EQ(Settings::week({480, 480, 480, 480, 360, 0, 1440}, "week"), (WeekdayMinutes{480, 480, 480, 480, 360, 0, 1440}));
  for (const std::vector<std::int64_t>& week :
       {std::vector<std::int64_t>{480, 480, 480, 480, 480, 0, 1441}, {-1, 0, 0, 0, 0, 0, 0}, {480, 480}}) {
    try {
      Settings::week(week, "WEEK");
      ADD_FAILURE() << week.size();
    } catch (const InvalidInput& error) {
      EXPECT_EQ(error.field(), "WEEK");
    }
  }
}

TEST(Settings, SetupCompletesTheBankAndStartsTheLedgerFromTheBalanceStated) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  {
    StoreSession session;
    const auto applied =
        Settings::setup(session, {DateInput::Day{2025, 1, 6}, 750, WeekdayMinutes{480, 480, 480, 480, 360, 0, 0},
                                  std::vector<std::int64_t>{10, 45, 90, 240}});
    EXPECT_FALSE(applied.quickActionsMoved);
  }
  StoreSession session;
  const TimeBankSettings& settings = session.settings();
  EXPECT_TRUE(settings.hasCompletedOnboarding());
  EXPECT_EQ(settings.calculationStartDate(), utc(2025, 1, 6));
  EXPECT_EQ(settings.startingBalanceMinutes(), 750);
  EXPECT_EQ(settings.weekdayMinutes(), (WeekdayMinutes{480, 480, 480, 480, 360, 0, 0}));
  EXPECT_EQ(settings.quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{10, 45, 90, 240}));
  // Nothing earned since the calculation start is folded in: the marker books nothing.
  const auto bookings = session.context().fetch<BalanceAdjustment>();
  ASSERT_EQ(bookings.size(), 1u);
  EXPECT_TRUE(ManualLedgerMigration::isCarryover(*bookings[0]));
}

TEST(Settings, AChangeKeepsWhatItDoesNotNameAndSaysWhenAQuickActionMoved) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  {
    StoreSession session;
    Settings::setup(session, {DateInput::Day{2026, 1, 5}, 120, std::nullopt, std::nullopt});
  }
  {
    StoreSession session;
    EXPECT_FALSE(Settings::change(session, {}).quickActionsMoved);
    const auto applied = Settings::change(session, {std::nullopt, std::nullopt, std::nullopt,
                                                    std::vector<std::int64_t>{7, 30, 60, 120}});
    EXPECT_TRUE(applied.quickActionsMoved);
  }
  StoreSession session;
  EXPECT_EQ(session.settings().calculationStartDate(), utc(2026, 1, 5));
  EXPECT_EQ(session.settings().startingBalanceMinutes(), 120);
  EXPECT_EQ(session.settings().quickActionMinutes()[1], 30);
  EXPECT_NE(session.settings().quickActionMinutes()[0], 7);
}

}  // namespace
}  // namespace quillmont
