#include "core/ledger/TimeBankTransactionController.h"

#include <gtest/gtest.h>

#include "core/ledger/TimeBankTransactionError.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

using Case = TimeBankTransactionError::Case;

class TimeBankTransactionControllerTest : public ::testing::Test {
 protected:
  std::shared_ptr<ModelContainer> container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context{container};

  std::shared_ptr<BalanceAdjustment> book(std::int64_t minutes, std::string_view kind = "manual", std::string_view note = "") {
    return TimeBankTransactionController::record(minutes, Date(1000), note, kind, context);
  }
  Case refusal(std::int64_t minutes, std::string_view kind = "manual", std::string_view note = "") {
    try {
      book(minutes, kind, note);
    } catch (const TimeBankTransactionError& error) {
      return error.errorCase();
    }
    ADD_FAILURE() << minutes << " was booked";
    return Case::zeroDuration;
  }
};

TEST_F(TimeBankTransactionControllerTest, RefusesZeroAndMoreThanADayBeforeMakingAnything) {
  EXPECT_EQ(refusal(0, "Holiday", std::string(400, 'x')), Case::zeroDuration);
  EXPECT_EQ(refusal(1441), Case::durationTooLarge);
  EXPECT_EQ(refusal(-1441), Case::durationTooLarge);
  EXPECT_EQ(refusal(INT64_MIN), Case::durationTooLarge);
  EXPECT_TRUE(context.fetch<BalanceAdjustment>().empty());
  EXPECT_STREQ(TimeBankTransactionError(Case::zeroDuration).what(), "Choose an amount of time first.");
  EXPECT_STREQ(TimeBankTransactionError(Case::durationTooLarge).what(), "A single transaction can't exceed 24 hours.");
  EXPECT_EQ(book(1440)->minutes(), 1440);
  EXPECT_EQ(book(-1440)->minutes(), -1440);
  EXPECT_FALSE(context.hasChanges());  // saved
  ModelContext fresh(container);
  EXPECT_EQ(fresh.fetch<BalanceAdjustment>().size(), 2u);
}

TEST_F(TimeBankTransactionControllerTest, NormalisesCategoryAndNoteButNotMinutes) {
  EXPECT_EQ(book(30, "sickLeave")->kindRawValue(), "sickLeave");
  EXPECT_EQ(book(30, "Holiday")->kindRawValue(), "manual");
  EXPECT_EQ(book(30, "")->kindRawValue(), "manual");
  EXPECT_EQ(book(30, "custom:ICBBICAgQiA=")->kindRawValue(), "custom:QSBC");
  EXPECT_EQ(book(45, "appointment")->minutes(), 45);  // sign is not forced here
  EXPECT_EQ(book(30, "manual", " \n\t ")->note(), "");
}

TEST_F(TimeBankTransactionControllerTest, StampsCreationAndModificationWithTheClock) {
  const Date before = Date::now();
  const auto adjustment = book(15);
  const Date after = Date::now();
  EXPECT_LE(before, adjustment->createdAt());
  EXPECT_LE(adjustment->createdAt(), adjustment->modifiedAt());
  EXPECT_LE(adjustment->modifiedAt(), after);
  EXPECT_EQ(adjustment->date(), Date(1000));
}

TEST(TimeBankTransactionController, SubmissionDateKeepsOtherDaysAndUsesNowForToday) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date today = *berlin.date(2026, 11, 20);
  const Date now = today + (15 * 60 + 42) * 60.0;
  EXPECT_EQ(TimeBankTransactionController::submissionDate(today + 9 * 3600.0, now, berlin), now);
  EXPECT_EQ(TimeBankTransactionController::submissionDate(today - 15 * 3600.0, now, berlin), today - 15 * 3600.0);
  // 23:30 in Berlin is the next day in Tokyo.
  const auto tokyo = *Calendar::make("Asia/Tokyo");
  const Date lateNow = today + 23.5 * 3600.0;
  EXPECT_EQ(TimeBankTransactionController::submissionDate(today + 12 * 3600.0, lateNow, berlin), lateNow);
  EXPECT_EQ(TimeBankTransactionController::submissionDate(today + 12 * 3600.0, lateNow, tokyo), today + 12 * 3600.0);
}

}  // namespace
}  // namespace quillmont
