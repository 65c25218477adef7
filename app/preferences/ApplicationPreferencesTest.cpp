#include "app/preferences/ApplicationPreferences.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace quillmont {
namespace {

class ApplicationPreferencesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/quillmont-preferences-XXXXXX";
    folder_ = ::mkdtemp(pattern);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  UserDefaults defaults() const { return UserDefaults(folder_); }
  ApplicationPreferences preferences() const { return ApplicationPreferences(defaults()); }

  std::filesystem::path folder_;
};

TEST_F(ApplicationPreferencesTest, AFreshProgramShowsTheTrayWithTheBalanceAndFollowsTheDesktop) {
  const auto chosen = preferences();
  EXPECT_TRUE(chosen.showsTray());
  EXPECT_EQ(chosen.trayDisplay(), ApplicationPreferences::TrayDisplay::balance);
  EXPECT_TRUE(chosen.closesToTray());
  EXPECT_EQ(chosen.appearance(), ApplicationPreferences::Appearance::system);
  EXPECT_EQ(chosen.forgottenTimerHours(), 10);
  EXPECT_EQ(chosen.lastRoute(), AppRoute(AppRoute::overview));
  EXPECT_FALSE(chosen.windowGeometry());
}

TEST_F(ApplicationPreferencesTest, ChoicesOutliveTheProcessUnderTheApplicationsKeys) {
  using TrayDisplay = ApplicationPreferences::TrayDisplay;
  using Appearance = ApplicationPreferences::Appearance;
  ASSERT_TRUE(preferences().setShowsTray(false));
  ASSERT_TRUE(preferences().setTrayDisplay(TrayDisplay::balanceAndToday));
  ASSERT_TRUE(preferences().setClosesToTray(false));
  ASSERT_TRUE(preferences().setAppearance(Appearance::dark));
  ASSERT_TRUE(preferences().setForgottenTimerHours(6));
  ASSERT_TRUE(preferences().setLastRoute(AppRoute(AppRoute::reports)));
  ASSERT_TRUE(preferences().setWindowGeometry({-40, 20, 900, 640}));

  const auto later = preferences();  // another run of the program
  EXPECT_FALSE(later.showsTray());
  EXPECT_EQ(later.trayDisplay(), TrayDisplay::balanceAndToday);
  EXPECT_FALSE(later.closesToTray());
  EXPECT_EQ(later.appearance(), Appearance::dark);
  EXPECT_EQ(later.forgottenTimerHours(), 6);
  EXPECT_EQ(later.lastRoute(), AppRoute(AppRoute::reports));
  EXPECT_EQ(later.windowGeometry(), (ApplicationPreferences::Geometry{-40, 20, 900, 640}));

  // What another program of the family reads under the shared keys.
  EXPECT_EQ(defaults().string("showMenuBarExtra"), "false");
  EXPECT_EQ(defaults().string("menuBarDisplayMode"), "balanceAndToday");
  EXPECT_EQ(defaults().string("closeWindowToMenuBar"), "false");
  EXPECT_EQ(defaults().string("appearance"), "dark");
}

TEST_F(ApplicationPreferencesTest, DamagedValuesReadAsTheDefaults) {
  const auto store = defaults();
  store.setString("yes", "showMenuBarExtra");
  store.setString("Balance", "menuBarDisplayMode");
  store.setString("1", "closeWindowToMenuBar");
  store.setString("sepia", "appearance");
  store.setString("0", "forgottenTimerHours");
  store.setString("Overview", "lastRoute");
  const auto chosen = preferences();
  EXPECT_TRUE(chosen.showsTray());
  EXPECT_EQ(chosen.trayDisplay(), ApplicationPreferences::TrayDisplay::balance);
  EXPECT_TRUE(chosen.closesToTray());
  EXPECT_EQ(chosen.appearance(), ApplicationPreferences::Appearance::system);
  EXPECT_EQ(chosen.forgottenTimerHours(), 10);
  EXPECT_EQ(chosen.lastRoute(), AppRoute(AppRoute::overview));

  for (const std::string text : {"1,2,3", "1,2,3,4,5", "1,2,0,4", "1,2,-3,4", "a,b,c,d", "1,2,3,", ""}) {
    store.setString(text, "windowGeometry");
    EXPECT_FALSE(chosen.windowGeometry()) << text;
  }
}

TEST_F(ApplicationPreferencesTest, ValuesOutOfRangeAreRefusedAndKeepTheOldOne) {
  const auto chosen = preferences();
  ASSERT_TRUE(chosen.setForgottenTimerHours(12));
  EXPECT_FALSE(chosen.setForgottenTimerHours(0));
  EXPECT_FALSE(chosen.setForgottenTimerHours(49));
  EXPECT_EQ(chosen.forgottenTimerHours(), 12);
  EXPECT_FALSE(chosen.setWindowGeometry({0, 0, 0, 300}));
  EXPECT_FALSE(chosen.windowGeometry());
}

}  // namespace
}  // namespace quillmont
