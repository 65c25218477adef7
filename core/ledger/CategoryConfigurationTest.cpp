// Stored texts of the settings: visible kinds and the custom category list.
#include <gtest/gtest.h>

#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"

namespace quillmont {
namespace {

using AdjustmentKindConfiguration::KindSet;
using Kind = BalanceAdjustmentKind;

std::vector<std::string> titles(std::string_view rawValue) {
  std::vector<std::string> result;
  for (const auto& category : CustomAdjustmentCategoryConfiguration::categories(rawValue)) result.push_back(category.title());
  return result;
}

std::vector<CustomAdjustmentCategory> make(const std::vector<std::string>& names) {
  std::vector<CustomAdjustmentCategory> result;
  for (const auto& name : names) result.push_back(*CustomAdjustmentCategory::fromTitle(name));
  return result;
}

TEST(AdjustmentKindConfiguration, DecodesExactPiecesAndWidensCreditKinds) {
  using namespace AdjustmentKindConfiguration;
  EXPECT_EQ(kinds("other,appointment"), (KindSet{Kind::appointment, Kind::other}));
  EXPECT_EQ(rawValue(kinds("other,appointment")), "appointment,other");
  EXPECT_EQ(kinds("manual,appointment"), (KindSet{Kind::appointment}));
  EXPECT_EQ(kinds("appointment,,longLunch,"), (KindSet{Kind::appointment, Kind::longLunch}));
  EXPECT_EQ(kinds("appointment, longLunch"), (KindSet{Kind::appointment}));
  EXPECT_EQ(kinds("unknown"), KindSet{});
  EXPECT_EQ(kinds(""), KindSet{});
  EXPECT_EQ(rawValue(KindSet{}), "");
  EXPECT_EQ(kinds("appointment,sickLeave").size(), 4u);
  EXPECT_EQ(rawValue(KindSet{Kind::holiday}), "");
  EXPECT_EQ(rawValue(kinds(defaultRawValue)), defaultRawValue);
}

TEST(CustomAdjustmentCategoryConfiguration, DecodingToleratesAnything) {
  EXPECT_TRUE(titles("[]").empty());
  EXPECT_TRUE(titles("not json").empty());
  EXPECT_TRUE(titles(R"({"a":"b"})").empty());
  EXPECT_TRUE(titles(R"("Doctor")").empty());
  EXPECT_TRUE(titles(R"(["Doctor", 3])").empty());
  EXPECT_EQ(titles(R"(["Doctor","doctor","  Gym  ",""])"), (std::vector<std::string>{"Doctor", "Gym"}));
  EXPECT_EQ(titles(R"(["Team\/1:1"])"), (std::vector<std::string>{"Team/1:1"}));
  EXPECT_EQ(titles(R"(["\u00c9COLE","\u00e9cole"])"), (std::vector<std::string>{"\u00c9COLE"}));
}

TEST(CustomAdjustmentCategoryConfiguration, EncodesCompactWithEscapedSolidusAndLimits) {
  using CustomAdjustmentCategoryConfiguration::rawValue;
  EXPECT_EQ(rawValue({}), "[]");
  EXPECT_EQ(rawValue(make({"Team/1:1", "Caf\u00e9 \"quoted\""})), R"(["Team\/1:1","Café \"quoted\""])");
  EXPECT_EQ(rawValue(make({"Doctor", "DOCTOR"})), R"(["Doctor"])");
  std::vector<std::string> many;
  std::string encodedTwenty = "[";
  for (int i = 0; i < 25; ++i) {
    many.push_back("Category " + std::to_string(i));
    if (i < 20) encodedTwenty += (i ? ",\"" : "\"") + many.back() + "\"";
  }
  encodedTwenty += "]";
  EXPECT_EQ(rawValue(make(many)), encodedTwenty);
  EXPECT_EQ(titles(rawValue(make(many))).size(), 20u);
  std::string twentyFive = "[";
  for (int i = 0; i < 25; ++i) twentyFive += (i ? ",\"" : "\"") + many[static_cast<std::size_t>(i)] + "\"";
  EXPECT_EQ(titles(twentyFive + "]").size(), 20u);
}

}  // namespace
}  // namespace quillmont
