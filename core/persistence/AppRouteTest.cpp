#include "core/persistence/AppRoute.h"

#include <gtest/gtest.h>

#include "core/persistence/AppConstants.h"

namespace quillmont {
namespace {

TEST(AppRoute, ParsesDeepLinksByLowerCasedSchemeAndHost) {
  EXPECT_EQ(AppRoute::fromURL("quillmont://Overview"), AppRoute::overview);
  EXPECT_EQ(AppRoute::fromURL("QUILLMONT://settings"), AppRoute::settings);
  EXPECT_EQ(AppRoute::fromURL("quillmont://reports/2024?x=1#top"), AppRoute::reports);
  EXPECT_FALSE(AppRoute::fromRawValue("Overview"));
  for (const char* none : {"https://overview", "quillmont://", "quillmont:settings", "quillmont://unknown", "overview",
                           "", "quillmont:// settings"}) {
    EXPECT_FALSE(AppRoute::fromURL(none)) << none;
  }
  for (const AppRoute route : AppRoute::allCases()) EXPECT_EQ(AppRoute::fromURL(route.url()), route);
  EXPECT_EQ(AppRoute(AppRoute::history).url(), "quillmont://history");
  EXPECT_EQ(AppRoute(AppRoute::reports).title(), "Calendar");
}

TEST(AppConstants, IdentifiersHaveTheirShape) {
  EXPECT_EQ(AppConstants::appGroupIdentifier.size(), 25u);
  EXPECT_EQ(AppConstants::cloudKitContainerIdentifier.size(), 26u);
  EXPECT_EQ(AppConstants::appGroupIdentifier.substr(6), AppConstants::cloudKitContainerIdentifier.substr(7));
  EXPECT_EQ(&AppConstants::manualLedgerMigrationAdjustmentID(), &AppConstants::manualLedgerMigrationAdjustmentID());
  EXPECT_EQ(AppConstants::manualLedgerMigrationAdjustmentID().uuidString(), "C0DE5EED-0B4A-4C2A-9D6E-000000000001");
}

}  // namespace
}  // namespace quillmont
