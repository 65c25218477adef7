// Where widget windows go: the first free slot on a screen, and new
// instances kept clear of the places other instances remember.
#include "desktop/WindowPlacement.h"

#include <gtest/gtest.h>

#include "cli/testing/CommandRunner.h"
#include "desktop/WidgetLayout.h"

namespace quillmont {
namespace {

using testing::CommandRunner;

constexpr int gap = WindowPlacement::gap;
const QRect screen(0, 0, 800, 600);
const QSize small(170, 170);

TEST(WindowPlacement, TheFirstFreeSlotRunsDownFromTheTopRightThenColumnByColumnLeft) {
  const QPoint first(800 - gap - 170, gap);
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, {}), first);
  // Below the first, then below that; the column holds three (24 + 2 × 194 + 170 ≤ 600).
  std::vector<QRect> taken{QRect(first, small)};
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, taken), first + QPoint(0, 170 + gap));
  taken.emplace_back(first + QPoint(0, 170 + gap), small);
  taken.emplace_back(first + QPoint(0, 2 * (170 + gap)), small);
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, taken), first - QPoint(170 + gap, 0));

  // A widget dragged between slots takes both; one a little too close to a
  // slot (inside the gap) takes it too.
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, {QRect(first + QPoint(-60, 90), small)}),
            first + QPoint(0, 2 * (170 + gap)));
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, {QRect(QPoint(first.x(), first.y() + 170 + 10), small)}),
            first + QPoint(0, 2 * (170 + gap)));
  // A wide widget on the far left is no obstacle.
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, {QRect(0, 0, 364, 170)}), first);
  // On a screen that does not start at the origin.
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen.translated(1920, 0), small, {QRect(first, small)}),
            first + QPoint(1920, 0));
}

TEST(WindowPlacement, WhenEverySlotIsTakenTheFirstOneIsUsed) {
  std::vector<QRect> taken{screen};
  EXPECT_EQ(WindowPlacement::firstFreeSlot(screen, small, taken), QPoint(800 - gap - 170, gap));
  // A screen smaller than the window.
  EXPECT_EQ(WindowPlacement::firstFreeSlot(QRect(0, 0, 100, 100), small, {}), QPoint(100 - gap - 170, gap));
}

TEST(WindowPlacement, ANewInstanceKeepsClearOfTheOthersRememberedPlaces) {
  CommandRunner scratch;
  scratch.shareStoreWithThisProcess();
  const QSize medium = WidgetLayout::sizeOf(WidgetFamily::systemMedium).toSize();
  const QPoint first = WindowPlacement::placeNew("one", small, screen);
  EXPECT_EQ(first, QPoint(800 - gap - 170, gap));
  ASSERT_TRUE((WindowPlacement{first, WidgetFamily::systemSmall}.save("one")));
  // A medium widget remembered on another screen takes no room on this one.
  ASSERT_TRUE((WindowPlacement{QPoint(2500, 24), WidgetFamily::systemMedium}.save("elsewhere")));

  const QPoint second = WindowPlacement::placeNew("two", medium, screen);
  EXPECT_FALSE(QRect(second, medium).intersects(QRect(first, small)));
  EXPECT_TRUE(screen.contains(QRect(second, medium)));
  ASSERT_TRUE((WindowPlacement{second, WidgetFamily::systemMedium}.save("two")));
  const auto all = WindowPlacement::all();
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all.at("two").frame(), QRect(second, medium));

  // An instance's own remembered place is not in its way.
  EXPECT_EQ(WindowPlacement::placeNew("one", small, screen), first);
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

}  // namespace
}  // namespace quillmont
