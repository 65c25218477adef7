// The window as a frame around its pages: what it remembers between runs,
// the shortcuts that reach into the pages, the day change, and the colours
// the person chose.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimeZone>

#include <cstdlib>
#include <string>

#include "app/preferences/ApplicationPreferences.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/application/Appearance.h"
#include "desktop/application/HistoryPage.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/QuillmontWindow.h"

namespace quillmont {
namespace {

using testing::CommandRunner;

class QuillmontWindowFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    quillmont_.shareStoreWithThisProcess();
    ASSERT_EQ(quillmont_.run({"setup", "--start", "today", "--balance", "0"}).exitCode, 0);
  }
  void TearDown() override {
    ::unsetenv("QUILLMONT_HOME");
    ::unsetenv("QUILLMONT_ENTITLEMENTS");
  }
  CommandRunner quillmont_;
};

TEST_F(QuillmontWindowFrameTest, TheNextWindowOpensWithTheSizeAndPageTheLastOneHad) {
  {
    QuillmontWindow window;
    window.openLast();
    EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::overview));
    window.resize(1010, 700);
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    ASSERT_EQ(window.currentRoute(), AppRoute(AppRoute::reports));
    window.close();
  }
  QuillmontWindow again;
  again.openLast();
  EXPECT_EQ(again.currentRoute(), AppRoute(AppRoute::reports));
  EXPECT_EQ(again.size(), QSize(1010, 700));

  // A window that only draws a picture leaves both as they were.
  {
    QuillmontWindow picture;
    picture.setRemembering(false);
    picture.resize(400, 300);
    picture.open(AppRoute::settings);
    picture.close();
  }
  EXPECT_EQ(ApplicationPreferences().lastRoute(), AppRoute(AppRoute::reports));
  EXPECT_EQ(ApplicationPreferences().windowGeometry()->width, 1010);
}

TEST_F(QuillmontWindowFrameTest, NewBookingAndFilterShortcutsPutTheKeyboardOnTheirPagesFields) {
  QuillmontWindow window;
  window.open(AppRoute::settings);
  QApplication::setActiveWindow(&window);
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));

  QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::history));
  ASSERT_NE(QApplication::focusWidget(), nullptr);
  EXPECT_TRUE(window.historyPage().isAncestorOf(QApplication::focusWidget()));
  QTest::keyClick(&window, Qt::Key_N, Qt::ControlModifier);
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::overview));
  ASSERT_NE(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);  // the amount
  EXPECT_TRUE(window.overviewPage().isAncestorOf(QApplication::focusWidget()));
}

TEST(QuillmontWindowDayChange, TheWindowReadsAgainJustAfterEachMidnightAndNeverLongAfter) {
  const QTimeZone berlin("Europe/Berlin");
  // An ordinary evening, the last second of a day, and the night the
  // clocks go back (a day of 25 hours).
  EXPECT_EQ(QuillmontWindow::millisecondsToNextDay(QDateTime(QDate(2026, 3, 10), QTime(23, 0), berlin)), 3601000);
  EXPECT_EQ(QuillmontWindow::millisecondsToNextDay(QDateTime(QDate(2026, 3, 10), QTime(23, 59, 59, 999), berlin)), 1001);
  EXPECT_EQ(QuillmontWindow::millisecondsToNextDay(QDateTime(QDate(2026, 10, 24), QTime(23, 30), berlin)), 1801000);
  EXPECT_EQ(QuillmontWindow::millisecondsToNextDay(QDateTime(QDate(2026, 10, 25), QTime(0, 0), berlin)),
            25 * 3600 * 1000 + 1000);
}

TEST(Appearance, LightAndDarkAreFullPalettesWhateverTheDesktopsAndSystemIsTheDesktops) {
  QPalette desktop;
  desktop.setColor(QPalette::Window, QColor(10, 80, 10));
  desktop.setColor(QPalette::WindowText, Qt::yellow);
  using Choice = ApplicationPreferences::Appearance;
  EXPECT_EQ(Appearance::palette(Choice::system, desktop), desktop);
  const QPalette dark = Appearance::palette(Choice::dark, desktop);
  const QPalette light = Appearance::palette(Choice::light, desktop);
  EXPECT_TRUE(Appearance::isDark(dark));
  EXPECT_FALSE(Appearance::isDark(light));
  // Text stands clear of its ground in every pair a control draws, and
  // disabled text is dimmer than enabled text yet still readable.
  for (const QPalette& palette : {light, dark}) {
    for (const auto& [text, ground] : {std::pair{QPalette::WindowText, QPalette::Window},
                                       std::pair{QPalette::Text, QPalette::Base},
                                       std::pair{QPalette::ButtonText, QPalette::Button},
                                       std::pair{QPalette::HighlightedText, QPalette::Highlight}}) {
      EXPECT_GT(std::abs(palette.color(text).lightness() - palette.color(ground).lightness()), 100)
          << text << " on " << ground;
    }
    const int ground = palette.color(QPalette::Window).lightness();
    const int enabled = std::abs(palette.color(QPalette::Active, QPalette::WindowText).lightness() - ground);
    const int disabled = std::abs(palette.color(QPalette::Disabled, QPalette::WindowText).lightness() - ground);
    EXPECT_LT(disabled, enabled);
    EXPECT_GT(disabled, 60);
  }
}

}  // namespace
}  // namespace quillmont
