// Built-in kinds, custom categories, options and category validation.
#include <gtest/gtest.h>

#include "core/ledger/AdjustmentCategoryOption.h"
#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/CustomAdjustmentCategory.h"

namespace quillmont {
namespace {

using Behavior = AdjustmentCategoryBehavior;

TEST(BalanceAdjustmentKind, RawValuesMatchExactly) {
  ASSERT_EQ(BalanceAdjustmentKind::allCases().size(), 8u);
  for (const auto kind : BalanceAdjustmentKind::allCases()) {
    EXPECT_EQ(BalanceAdjustmentKind::fromRawValue(kind.rawValue()), kind);
  }
  EXPECT_FALSE(BalanceAdjustmentKind::fromRawValue("Holiday"));
  EXPECT_FALSE(BalanceAdjustmentKind::fromRawValue(""));
  const BalanceAdjustmentKind holiday = BalanceAdjustmentKind::holiday;
  EXPECT_EQ(holiday.title(), "Public holiday");
  EXPECT_EQ(holiday.systemImage(), "calendar.badge.checkmark");
  EXPECT_EQ(holiday.behavior(), Behavior::credit);
  EXPECT_EQ(BalanceAdjustmentKind(BalanceAdjustmentKind::longLunch).behavior(), Behavior::debit);
  EXPECT_EQ(BalanceAdjustmentKind(BalanceAdjustmentKind::manual).behavior(), Behavior::manual);
}

TEST(CustomAdjustmentCategory, TitlesAreCollapsedAndCut) {
  EXPECT_FALSE(CustomAdjustmentCategory::fromTitle(" \t  \t"));
  const auto doctor = CustomAdjustmentCategory::fromTitle("\tDoctor   visit\n");
  ASSERT_TRUE(doctor);
  EXPECT_EQ(doctor->title(), "Doctor visit");
  EXPECT_EQ(doctor->rawValue(), "custom:RG9jdG9yIHZpc2l0");
  EXPECT_EQ(doctor->id(), doctor->rawValue());
  EXPECT_EQ(CustomAdjustmentCategory::fromTitle("Caf\u00e9")->rawValue(), "custom:Q2Fmw6k=");
  EXPECT_EQ(CustomAdjustmentCategory::fromTitle(std::string(50, 'x'))->title(), std::string(40, 'x'));
  // Accented letters written with combining marks count once each.
  std::string accented;
  for (int i = 0; i < 45; ++i) accented += "e\u0301";
  EXPECT_EQ(CustomAdjustmentCategory::fromTitle(accented)->title().size(), 40u * 3);
}

TEST(CustomAdjustmentCategory, CutAfterCollapseKeepsTrailingBlankUntilDecodedAgain) {
  const std::string letters(39, 'a');
  const auto category = CustomAdjustmentCategory::fromTitle(letters + "   more words");
  ASSERT_TRUE(category);
  EXPECT_EQ(category->title(), letters + " ");
  const auto decoded = CustomAdjustmentCategory::fromRawValue(category->rawValue());
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->title(), letters);
  EXPECT_NE(decoded->rawValue(), category->rawValue());
}

TEST(CustomAdjustmentCategory, RawValuesDecodeToCanonicalForm) {
  const auto spaced = CustomAdjustmentCategory::fromRawValue("custom:ICBBICAgQiA=");
  ASSERT_TRUE(spaced);
  EXPECT_EQ(spaced->title(), "A B");
  EXPECT_EQ(spaced->rawValue(), "custom:QSBC");
  for (const char* bad : {"RG9jdG9y", "Custom:RG9jdG9y", "custom:RG9jdG9y IHZpc2l0", "custom:RG9jdG9", "custom:",
                          "custom:/w==", "custom:ICAg", "custom:RG9j=G9y"}) {
    EXPECT_FALSE(CustomAdjustmentCategory::fromRawValue(bad)) << bad;
  }
}

TEST(AdjustmentCategoryOption, ResolvesBuiltInAndCustomTexts) {
  EXPECT_EQ(AdjustmentCategoryOption::resolve("sickLeave"), AdjustmentCategoryOption::builtIn(BalanceAdjustmentKind::sickLeave));
  const auto custom = AdjustmentCategoryOption::resolve("custom:ICBBICAgQiA=");
  ASSERT_TRUE(custom);
  EXPECT_EQ(*custom, (AdjustmentCategoryOption{"custom:QSBC", "A B", "tag", Behavior::debit}));
  EXPECT_FALSE(AdjustmentCategoryOption::resolve("Holiday"));
  EXPECT_FALSE(AdjustmentCategoryOption::resolve("custom:%%%"));
}

TEST(AdjustmentCategoryValidation, RawValuesAndMinuteRanges) {
  using namespace AdjustmentCategoryValidation;
  EXPECT_EQ(normalizedRawValue("holiday"), "holiday");
  EXPECT_EQ(normalizedRawValue("Holiday"), "manual");
  EXPECT_EQ(normalizedRawValue(""), "manual");
  EXPECT_EQ(normalizedRawValue("custom:ICBBICAgQiA="), "custom:QSBC");
  EXPECT_EQ(normalizedRawValue("custom:ICAg"), "manual");

  const std::string custom = "custom:QSBC";
  EXPECT_EQ(normalizedMinutes(-90, "holiday"), 0);
  EXPECT_EQ(normalizedMinutes(90, "holiday"), 90);
  EXPECT_EQ(normalizedMinutes(2000, "paidLeave"), 1440);
  EXPECT_EQ(normalizedMinutes(90, "appointment"), 0);
  EXPECT_EQ(normalizedMinutes(-2000, "longLunch"), -1440);
  EXPECT_EQ(normalizedMinutes(-70000, "manual"), -60000);
  EXPECT_EQ(normalizedMinutes(90, custom), 0);
  EXPECT_EQ(normalizedMinutes(-90, custom), -90);
  EXPECT_EQ(normalizedMinutes(70000, "no such kind"), 60000);
}

TEST(BalanceAdjustment, KindAndCategoryFollowTheRawValue) {
  BalanceAdjustment adjustment(UUID::random(), Date(0), 5000, "  lunch \n", BalanceAdjustmentKind::appointment, Date(1), Date(2));
  EXPECT_EQ(adjustment.minutes(), 5000);  // the constructor does not validate minutes
  EXPECT_EQ(adjustment.note(), "lunch");
  EXPECT_EQ(adjustment.kindRawValue(), "appointment");

  adjustment.setKindRawValue("custom:QSBC");
  EXPECT_EQ(adjustment.kind(), BalanceAdjustmentKind::manual);
  EXPECT_EQ(adjustment.category().title, "A B");
  adjustment.setKind(BalanceAdjustmentKind::holiday);
  EXPECT_EQ(adjustment.kindRawValue(), "holiday");
  adjustment.setKindRawValue("Holiday");
  EXPECT_EQ(adjustment.category(), AdjustmentCategoryOption::builtIn(BalanceAdjustmentKind::manual));
}

}  // namespace
}  // namespace quillmont
