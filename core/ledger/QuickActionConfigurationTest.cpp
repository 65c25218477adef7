#include "core/ledger/QuickActionConfiguration.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/ledger/RecordTimestampValidation.h"

namespace quillmont {
namespace {

using Minutes = std::vector<std::int64_t>;
using Four = std::array<std::int64_t, 4>;

Four normalized(const Minutes& minutes) { return QuickActionConfiguration::normalized(minutes); }

TEST(QuickActionConfiguration, NormalisesToFourSupportedAmounts) {
  EXPECT_EQ(normalized({}), (Four{15, 30, 60, 120}));
  EXPECT_EQ(normalized({25}), (Four{20, 30, 60, 120}));  // midway: the smaller
  EXPECT_EQ(normalized({0, 1000, 50, 200}), (Four{5, 480, 45, 180}));
  EXPECT_EQ(normalized({5, 10, 15, 20, 30, 45}), (Four{5, 10, 15, 20}));
  EXPECT_EQ(normalized({30, 30, 30, 30}), (Four{30, 30, 30, 30}));
  EXPECT_EQ(normalized({-500, 75, 300, 420}), (Four{5, 60, 240, 360}));
  EXPECT_EQ(normalized({INT64_MIN, INT64_MAX}), (Four{5, 480, 60, 120}));
}

TEST(QuickActionConfiguration, DisplayNames) {
  const std::vector<std::pair<std::int64_t, std::string>> cases{
      {0, "0 min"},     {5, "5 min"},     {45, "45 min"},   {59, "59 min"},  {-59, "-59 min"},
      {60, "1 hr"},     {90, "1 hr 30 min"}, {120, "2 hrs"}, {150, "2 hr 30 min"}, {480, "8 hrs"},
      {-60, "-1 hrs"},  {-90, "-1 hr -30 min"}};
  for (const auto& [minutes, label] : cases) EXPECT_EQ(QuickActionConfiguration::displayName(minutes), label) << minutes;
}

TEST(RecordTimestampValidation, FutureSkewAndCreationOrder) {
  using namespace RecordTimestampValidation;
  const Date now(1000);
  EXPECT_EQ(normalizedModifiedAt(now + 299, now), now + 299);
  EXPECT_EQ(normalizedModifiedAt(now + 300, now), now + 300);
  EXPECT_EQ(normalizedModifiedAt(now + 301, now), now);
  EXPECT_EQ(normalizedModifiedAt(Date(-5e8), now), Date(-5e8));
  EXPECT_EQ(normalizedCreatedAt(Date(900), Date(800)), Date(800));
  EXPECT_EQ(normalizedCreatedAt(Date(700), Date(800)), Date(700));
}

}  // namespace
}  // namespace quillmont
