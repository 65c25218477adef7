#include "app/bookings/Bookings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/overview/Overview.h"
#include "app/session/StoreSession.h"
#include "app/settlement/Settling.h"
#include "app/testing/FiguresStore.h"
#include "app/testing/ScratchHome.h"
#include "core/engine/Settlement.h"
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


// Editing: the same rules as booking, in place, as one action.

Bookings::Edited edit(std::string_view identifier, Bookings::Change change) {
  StoreSession session;
  return Bookings::edit(session, identifier, change);
}

TEST_F(BookingsTest, AnEditChangesOnlyWhatItIsGivenInPlaceAndUndoTakesItBack) {
  const auto booked = book(-90, "2026-03-02", "appointment");
  const std::string id = booked.booking->id().uuidString();
  {
    StoreSession session;
    Bookings::edit(session, "last", {.amount = std::nullopt, .category = std::nullopt, .note = "dentist", .day = {}});
  }
  const auto edited = edit(id.substr(0, 8), {.amount = "-2h", .category = std::nullopt, .note = {}, .day = {}});
  EXPECT_EQ(edited.before.minutes, -90);
  EXPECT_EQ(edited.after.minutes, -120);
  EXPECT_EQ(edited.after.categoryTitle, "Appointment");
  EXPECT_EQ(edited.after.note, "dentist");
  EXPECT_EQ(edited.balanceSeconds, -7200);
  {
    StoreSession session;
    const auto stored = session.context().fetch<BalanceAdjustment>();
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0]->id(), booked.booking->id());
    EXPECT_EQ(stored[0]->createdAt(), booked.booking->createdAt());
    EXPECT_EQ(stored[0]->date(), utc(2026, 3, 2, 12));
    EXPECT_EQ(stored[0]->kindRawValue(), "appointment");
  }
  // A day is dated as a new booking's: noon, or now for today; a note is
  // trimmed and an empty one clears it; a category is read as add reads it.
  EXPECT_EQ(edit(id, {.amount = {}, .category = {}, .note = {}, .day = "2026-03-05"}).after.date, utc(2026, 3, 5, 12));
  EXPECT_EQ(edit(id, {.amount = {}, .category = {}, .note = {}, .day = "today"}).after.date, utc(2026, 3, 20, 15));
  EXPECT_EQ(edit(id, {.amount = {}, .category = {}, .note = "  x  ", .day = {}}).after.note, "x");
  EXPECT_EQ(edit(id, {.amount = {}, .category = {}, .note = "", .day = {}}).after.note, "");
  const auto moved = edit(id, {.amount = "1:00", .category = "Sick leave", .note = {}, .day = {}});
  EXPECT_EQ(moved.before.category, "appointment");
  EXPECT_EQ(moved.after.category, "sickLeave");
  EXPECT_EQ(moved.balanceSeconds, 3600);

  // Each edit is one action: undo takes back the last one whole.
  {
    StoreSession session;
    const auto undone = session.container()->undoLastAction();
    ASSERT_TRUE(undone);
    EXPECT_EQ(undone->name, "bookings edit " + id);
  }
  StoreSession session;
  const auto stored = session.context().fetch<BalanceAdjustment>();
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0]->minutes(), -120);
  EXPECT_EQ(stored[0]->kindRawValue(), "appointment");
}

TEST_F(BookingsTest, AnEditIsRefusedByAddsRulesAndChangesNothing) {
  {
    StoreSession session;
    ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
    session.saveSettings();
  }
  book(-30, "2026-03-02", "appointment");
  const auto refusal = [&](const Bookings::Change& change, std::string identifier = "@1") -> std::string {
    try {
      edit(identifier, change);
    } catch (const InvalidInput& error) {
      return error.field() + ": " + error.what();
    } catch (const Refusal& error) {
      return error.field() + ": " + error.what();
    } catch (const std::exception& error) {  // the transaction's own error
      return error.what();
    }
    return "(edited)";
  };
  // The category's side of zero, whichever of the two changes.
  EXPECT_EQ(refusal({.amount = "30", .category = {}, .note = {}, .day = {}}),
            "amount: \"Appointment\" takes time: give a negative amount, e.g. -30.");
  EXPECT_EQ(refusal({.amount = {}, .category = "sick leave", .note = {}, .day = {}}),
            "amount: \"Sick leave\" adds time: give a positive amount.");
  EXPECT_THAT(refusal({.amount = "0", .category = {}, .note = {}, .day = {}}), HasSubstr("Choose an amount of time first."));
  EXPECT_THAT(refusal({.amount = "-24:01", .category = {}, .note = {}, .day = {}}), HasSubstr("can't exceed 24 hours"));
  EXPECT_THAT(refusal({.amount = "soon", .category = {}, .note = {}, .day = {}}), ::testing::StartsWith("amount: "));
  EXPECT_THAT(refusal({.amount = {}, .category = "gym", .note = {}, .day = {}}), ::testing::StartsWith("category: "));
  EXPECT_THAT(refusal({.amount = {}, .category = {}, .note = {}, .day = "2026-02-30"}), ::testing::StartsWith("day: "));
  EXPECT_THAT(refusal({}), HasSubstr("nothing to change"));
  EXPECT_THAT(refusal({.amount = "-10", .category = {}, .note = {}, .day = {}}, "@2"), HasSubstr("no booking @2"));
  StoreSession session;
  const auto stored = session.context().fetch<BalanceAdjustment>();
  const auto marker = std::ranges::find_if(stored, [](const auto& booking) {
    return ManualLedgerMigration::isCarryover(*booking);
  });
  ASSERT_NE(marker, stored.end());
  EXPECT_EQ(refusal({.amount = "-10", .category = {}, .note = {}, .day = {}}, (*marker)->id().uuidString()),
            ": This booking marks the switch to the manual ledger and cannot be changed.");
  for (const auto& booking : session.context().fetch<BalanceAdjustment>()) {
    if (!ManualLedgerMigration::isCarryover(*booking)) {
      EXPECT_EQ(booking->minutes(), -30);
    }
  }
}

TEST(BookingsEdit, TheNextOverviewCountsAnEditedSettlementAgain) {
  testing::FiguresStore store({{2026, 3, 6}, 12, 0});
  store.setUp({2026, 3, 2}, 0, {480, 480, 480, 480, 480, 0, 0});
  store.work({{2026, 3, 2}, 8, 0}, DateInput::DateTime{{2026, 3, 2}, 18, 0});  // +2:00
  store.work({{2026, 3, 3}, 8, 0}, DateInput::DateTime{{2026, 3, 3}, 15, 0});  // -1:00
  store.work({{2026, 3, 4}, 8, 0}, DateInput::DateTime{{2026, 3, 4}, 16, 30});  // +0:30
  store.work({{2026, 3, 5}, 8, 0}, DateInput::DateTime{{2026, 3, 5}, 16, 15});  // +0:15
  const auto figures = [] {
    StoreSession session;
    return Overview::read(session);
  };
  {
    StoreSession session;
    ASSERT_TRUE(Settling::settle(session, {.from = std::nullopt, .through = DateInput::Day{2026, 3, 3}}).saved);
  }
  // Read once, the count is recorded with the store and carried by later reads.
  EXPECT_EQ(figures().unsettledSeconds, 45 * 60);
  EXPECT_EQ(figures().balanceSeconds, 3600);

  // The 3rd's settlement changed and dated on the 5th: the 3rd stays settled
  // (a day is settled once, by its settlement's identifier), the 4th and 5th
  // are still owed, and the balance holds the new amount.
  const std::string third = Settlement::identifier("2026-03-03").uuidString();
  edit(third, {.amount = "-30", .category = {}, .note = {}, .day = "2026-03-05"});
  EXPECT_EQ(figures().unsettledSeconds, 45 * 60);
  EXPECT_EQ(figures().balanceSeconds, 90 * 60);
  // Settling now books the 4th and 5th only, and nothing is owed after it.
  {
    StoreSession session;
    const auto settled = Settling::settle(session, {});
    ASSERT_EQ(settled.booked.size(), 2u);
    EXPECT_EQ(settled.minutes, 45);
  }
  EXPECT_EQ(figures().unsettledSeconds, 0);
  EXPECT_EQ(figures().balanceSeconds, 135 * 60);

  // A booking of the future moved into the past counts at once.
  store.book({2026, 3, 20}, 60);
  EXPECT_EQ(figures().balanceSeconds, 135 * 60);
  edit("@1", {.amount = {}, .category = {}, .note = {}, .day = "yesterday"});
  EXPECT_EQ(figures().balanceSeconds, 195 * 60);
}

}  // namespace
}  // namespace quillmont
