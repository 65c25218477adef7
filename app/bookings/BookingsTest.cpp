#include "app/bookings/Bookings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/CustomAdjustmentCategory.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::utc;

class BookingsTest : public ::testing::Test {
 protected:
  testing::ScratchHome home{utc(2026, 3, 20, 15)};

  Bookings::Booked book(std::int64_t minutes, std::string day, std::string category = "") {
    StoreSession session;
    return Bookings::add(session, {minutes, std::move(category), "", std::move(day), ""});
  }
  std::size_t stored() {
    StoreSession session;
    return session.context().fetch<BalanceAdjustment>().size();
  }
};

TEST_F(BookingsTest, ACategoryIsAKindOrOwnTitleIgnoringCase) {
  TimeBankSettings settings;
  settings.setCustomAdjustmentCategoriesRawValue(
      CustomAdjustmentCategoryConfiguration::rawValue({*CustomAdjustmentCategory::fromTitle("Gym visits")}));
  EXPECT_EQ(Bookings::category("", settings), "manual");
  EXPECT_EQ(Bookings::category("APPOINTMENT", settings), "appointment");
  EXPECT_EQ(Bookings::category("sick leave", settings), "sickLeave");
  EXPECT_EQ(Bookings::category("gym VISITS", settings), CustomAdjustmentCategory::fromTitle("Gym visits")->rawValue());
  try {
    Bookings::category("gym", settings);
    FAIL();
  } catch (const InvalidInput& error) {
    EXPECT_EQ(error.field(), "category");
    EXPECT_EQ(error.reason(), "'gym' is neither a kind nor one of your categories (choose from manual, appointment, "
                              "personalErrands, longLunch, other, holiday, paidLeave, sickLeave, \"Gym visits\")");
  }
}

TEST_F(BookingsTest, AnAmountOnTheWrongSideOfItsCategoryIsRefused) {
  StoreSession session;
  const auto refusal = [&](std::int64_t minutes, const std::string& category) -> std::string {
    try {
      Bookings::add(session, {minutes, category, "", "", ""});
    } catch (const std::exception& error) {  // the rule's Refusal or the transaction's own error
      return error.what();
    }
    return "(booked)";
  };
  EXPECT_EQ(refusal(30, "appointment"), "\"Appointment\" takes time: give a negative amount, e.g. -30.");
  EXPECT_EQ(refusal(-30, "sick leave"), "\"Sick leave\" adds time: give a positive amount.");
  try {  // a form shows it beside the amount
    Bookings::add(session, {30, "appointment", "", "", ""});
  } catch (const Refusal& error) {
    EXPECT_EQ(error.field(), "amount");
  }
  // Zero and more than a day are the transaction's own refusals, whatever the category.
  EXPECT_THAT(refusal(0, "appointment"), HasSubstr("Choose an amount of time first."));
  EXPECT_THAT(refusal(1441, "appointment"), HasSubstr("can't exceed 24 hours"));
  EXPECT_EQ(stored(), 0u);
  EXPECT_EQ(refusal(-1440, "appointment"), "(booked)");
  EXPECT_EQ(refusal(-30, "manual"), "(booked)");
}

TEST_F(BookingsTest, ABookingIsDatedAtNoonOfItsDayAndReportsTheBalance) {
  const auto booked = book(-90, "2026-03-02", "appointment");
  EXPECT_EQ(booked.booking->date(), utc(2026, 3, 2, 12));
  EXPECT_EQ(booked.booking->minutes(), -90);
  EXPECT_EQ(booked.categoryTitle, "Appointment");
  EXPECT_EQ(booked.balanceSeconds, -5400);
  EXPECT_EQ(book(45, "").booking->date(), utc(2026, 3, 20, 15));
  EXPECT_EQ(book(15, "yesterday").balanceSeconds, -1800);
  StoreSession session;
  EXPECT_THROW(Bookings::add(session, {30, "", "", "2026-02-30", ""}), InvalidInput);
  EXPECT_THROW(Bookings::add(session, {30, "", "\xc3", "", ""}), InvalidInput);
}

TEST_F(BookingsTest, AListReconcilesWithTheBalanceAndLeavesTheLedgerMarkerOut) {
  {
    StoreSession session;
    session.settings().setStartingBalanceMinutes(600);
    ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
    session.saveSettings();
  }
  book(-120, "2026-02-10");
  book(45, "2026-03-02");
  book(-15, "2026-03-20");
  StoreSession session;
  const auto march = Bookings::list(session, DateInterval::between(utc(2026, 3, 1), utc(2026, 3, 20)));
  ASSERT_EQ(march.bookings.size(), 1u);  // the 20th's is outside
  EXPECT_EQ(march.beforeSeconds, 8 * 3600);
  EXPECT_EQ(march.totalSeconds, 45 * 60);
  const auto all = Bookings::list(session, DateInterval::between(Date(-1e300), Date(1e300)));
  EXPECT_EQ(all.bookings.size(), 3u);
  EXPECT_EQ(all.beforeSeconds, 10 * 3600);
  EXPECT_EQ(all.beforeSeconds + all.totalSeconds, 8 * 3600 + 30 * 60);
}

TEST_F(BookingsTest, DeleteNamesTheNewestButNeverTheLedgerMarker) {
  {
    StoreSession session;
    ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
    session.saveSettings();
  }
  {
    StoreSession session;
    EXPECT_THROW(Bookings::remove(session, "@1"), Refusal);  // the marker holds no place
    const auto marker = session.context().fetch<BalanceAdjustment>().front();
    try {
      Bookings::remove(session, marker->id().uuidString());
      FAIL();
    } catch (const Refusal& error) {
      EXPECT_STREQ(error.what(), "This booking marks the switch to the manual ledger and stays.");
    }
  }
  const auto first = book(60, "2026-03-03").booking;
  const auto second = book(120, "2026-03-02").booking;  // made at the same instant, dated earlier
  {
    StoreSession session;
    EXPECT_EQ(Bookings::remove(session, "last")->id(), first->id());
    EXPECT_EQ(Bookings::remove(session, second->id().uuidString().substr(0, 6))->id(), second->id());
  }
  EXPECT_EQ(stored(), 1u);
}

}  // namespace
}  // namespace quillmont
