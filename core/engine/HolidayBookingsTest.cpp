#include "core/engine/HolidayBookings.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

using HolidayBookings::Outcome;

class HolidayBookingsTest : public ::testing::Test {
 protected:
  HolidayBookingsTest()
      : calendar_(*Calendar::make("Europe/Berlin")),
        context_(QuillmontPersistence::makeContainer(true, true, false)),
        settings_(std::make_shared<TimeBankSettings>()) {
    settings_->setCalculationStartDate(noon(2026, 1, 5) - 12 * 3600);
    const std::array<std::int64_t, 7> week{480, 480, 480, 480, 360, 0, 0};
    settings_->setWeekdayMinutes(week);
    context_.insert(settings_);
    context_.save();
  }

  Date noon(int year, int month, int day) const { return *calendar_.date(year, month, day) + 12 * 3600; }

  HolidayBookings::Holiday holiday(const char* uid, int month, int day) const {
    char text[16];
    std::snprintf(text, sizeof text, "2026-%02d-%02d", month, day);
    return {uid, uid, text, noon(2026, month, day)};
  }

  Calendar calendar_;
  ModelContext context_;
  std::shared_ptr<TimeBankSettings> settings_;
};

TEST_F(HolidayBookingsTest, HolidaysFreeThePlannedTimeOnceAndBookNothing) {
  // From March on a schedule of six hours a day, Monday to Friday.
  const std::array<std::int64_t, 7> shorter{360, 360, 360, 360, 360, 0, 0};
  context_.insert(std::make_shared<WorkSchedule>(UUID::random(), noon(2026, 3, 2) - 12 * 3600, shorter, Date::now(),
                                                 Date::now()));
  // An earlier version booked Labour Day as a credit.
  context_.insert(std::make_shared<BalanceAdjustment>(HolidayBookings::identifier("labour", "2026-05-01"),
                                                      noon(2026, 5, 1), 360, "labour", BalanceAdjustmentKind::holiday,
                                                      Date::now(), Date::now()));
  context_.save();
  const std::vector<HolidayBookings::Holiday> holidays{
      holiday("newyear", 1, 1),   holiday("epiphany", 1, 6), holiday("goodfriday", 4, 3),
      holiday("saturday", 5, 2),  holiday("epiphany", 1, 6),  // the same day again
      holiday("labour", 5, 1)};
  auto plans = HolidayBookings::plan(holidays, {}, context_, *settings_, calendar_);
  ASSERT_EQ(plans.size(), 5u);
  EXPECT_EQ(plans[0].outcome, Outcome::beforeCalculationStart);
  EXPECT_EQ(plans[1].outcome, Outcome::plannedTimeFreed);
  EXPECT_EQ(plans[1].minutes, 480);  // a Tuesday under the settings
  EXPECT_EQ(plans[2].minutes, 360);  // a Friday under the schedule
  EXPECT_EQ(plans[3].outcome, Outcome::notAWorkingDay);
  EXPECT_EQ(plans[4].outcome, Outcome::bookedBefore);
  EXPECT_FALSE(plans[4].adds());

  ModelContainer& container = *context_.container();
  EXPECT_EQ(HolidayBookings::record(plans, container), 4);
  EXPECT_EQ(context_.fetch<BalanceAdjustment>().size(), 1u);  // only the old credit
  const auto kept = container.holidays();
  ASSERT_EQ(kept.size(), 4u);
  EXPECT_EQ(kept[1], (HolidayList::Entry{"2026-01-06", "epiphany", "epiphany"}));

  // The same file again, or on another machine that has the list, adds nothing.
  plans = HolidayBookings::plan(holidays, kept, context_, *settings_, calendar_);
  EXPECT_EQ(plans[1].outcome, Outcome::knownBefore);
  EXPECT_EQ(HolidayBookings::record(plans, container), 0);
  EXPECT_EQ(container.holidays().size(), 4u);
}

}  // namespace
}  // namespace quillmont
