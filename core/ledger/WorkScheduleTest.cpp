// Weekly schedules and the settings record: the weekday rule, quick actions,
// stored category texts, and the minutes scheduled on a day.
#include <gtest/gtest.h>

#include <vector>

#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

using Minutes = std::vector<std::int64_t>;

WorkSchedule schedule(const Minutes& minutes) { return WorkSchedule(UUID::random(), Date(0), minutes, Date(0), Date(0)); }

TimeBankSettings settings(const Minutes& weekdays, const Minutes& quickActions = {}, std::string_view kinds = "",
                          std::string_view categories = "[]") {
  return TimeBankSettings(UUID::random(), Date(0), -30, weekdays, quickActions, kinds, categories, false, Date(0));
}

TEST(WorkSchedule, MissingWeekdaysAreZeroForSchedulesButDefaultsForSettings) {
  EXPECT_EQ(schedule({300, 300, 300}).weekdayMinutes(), (WeekdayMinutes{300, 300, 300, 0, 0, 0, 0}));
  EXPECT_EQ(settings({300, 300, 300}).weekdayMinutes(), (WeekdayMinutes{300, 300, 300, 480, 480, 0, 0}));
  EXPECT_EQ(schedule({-30, 2000, 1, 2, 3, 4, 5, 6}).weekdayMinutes(), (WeekdayMinutes{0, 1440, 1, 2, 3, 4, 5}));
  auto settingsRecord = settings({});
  settingsRecord.setWeekdayMinutes(Minutes{60});  // the setter fills with 0, not 480
  EXPECT_EQ(settingsRecord.weekdayMinutes(), (WeekdayMinutes{60, 0, 0, 0, 0, 0, 0}));
  auto scheduleRecord = schedule({});
  scheduleRecord.setWeekdayMinutes(Minutes{-30, 2000});
  EXPECT_EQ(scheduleRecord.weekdayMinutes(), (WeekdayMinutes{0, 1440, 0, 0, 0, 0, 0}));
}

TEST(WorkSchedule, ScheduledMinutesFollowTheCalendarsZoneAndClamp) {
  auto record = schedule({1, 2, 3, 4, 5, 6, 7});
  const auto berlin = *Calendar::make("Europe/Berlin");
  const auto newYork = *Calendar::make("America/New_York");
  const Date lateSundayInNewYork = *newYork.date(2026, 11, 22) + 22 * 3600.0;  // Monday 04:00 in Berlin
  EXPECT_EQ(record.scheduledMinutes(lateSundayInNewYork, newYork), 7);
  EXPECT_EQ(record.scheduledMinutes(lateSundayInNewYork, berlin), 1);
  record.setMondayMinutes(5000);
  EXPECT_EQ(record.weekdayMinutes()[0], 5000);
  EXPECT_EQ(record.scheduledMinutes(lateSundayInNewYork, berlin), 1440);
  record.setMondayMinutes(-5);
  EXPECT_EQ(record.scheduledMinutes(lateSundayInNewYork, berlin), 0);
}

TEST(TimeBankSettings, ConstructorCanonicalisesEverything) {
  const auto record = settings({}, {25, 0, 700}, "holiday", "not json");
  EXPECT_EQ(record.quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{20, 5, 480, 120}));
  EXPECT_EQ(record.visibleAdjustmentKindsRawValue(), "appointment,personalErrands,longLunch,other");
  EXPECT_EQ(record.customAdjustmentCategoriesRawValue(), "[]");
  EXPECT_EQ(record.startingBalanceMinutes(), -30);
  EXPECT_EQ(settings({}, {}, "").visibleAdjustmentKindsRawValue(), "");
  EXPECT_EQ(settings({}, {}, "other,appointment", R"([" Team/1:1 ","team/1:1"])").customAdjustmentCategoriesRawValue(),
            R"(["Team\/1:1"])");
}

TEST(TimeBankSettings, DefaultsAndQuickActionSetter) {
  Date::ScopedClock clock(Date(77));
  TimeBankSettings record;
  EXPECT_EQ(record.calculationStartDate(), Date(77));
  EXPECT_EQ(record.weekdayMinutes(), defaultWeekdayMinutes);
  EXPECT_EQ(record.quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{15, 30, 60, 120}));
  EXPECT_EQ(record.visibleAdjustmentKindsRawValue(), "appointment,personalErrands,longLunch,other");
  EXPECT_EQ(record.customAdjustmentCategoriesRawValue(), "[]");
  EXPECT_FALSE(record.hasCompletedOnboarding());
  auto quick = record.quickActionMinutes();
  quick[1] = 100;  // changing one element writes all four back through the rule
  record.setQuickActionMinutes(quick);
  EXPECT_EQ(record.quickActionMinutes(), (TimeBankSettings::QuickActionMinutes{15, 90, 60, 120}));
  record.setQuickActionTwoMinutes(7);  // single setters store as given
  EXPECT_EQ(record.quickActionTwoMinutes(), 7);
}

}  // namespace
}  // namespace quillmont
