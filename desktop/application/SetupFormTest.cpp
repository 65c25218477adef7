// The first run: an empty data home opens on the set-up form, whose fields
// refuse what the settings refuse (beside the field, nothing stored), and
// whose "Set up" leads to the pages with the bank as it was typed.
#include "desktop/application/SetupForm.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <cstdlib>
#include <string>

#include "app/session/StoreSession.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/QuillmontWindow.h"

namespace quillmont {
namespace {

using testing::CommandRunner;

class SetupFormTest : public testing::StoreSharingTest {
 protected:
  static void type(QLineEdit& field, const QString& text) {
    field.selectAll();
    QTest::keyClicks(&field, text);
  }

};

TEST_F(SetupFormTest, AnEmptyDataHomeIsSetUpThroughTheFormAndItsRefusalsStandBesideTheirFields) {
  QuillmontWindow window;
  window.open(AppRoute::overview);
  ASSERT_TRUE(window.showsSetup());
  SetupForm& form = window.setupForm();
  // The settings' defaults: eight hours on weekdays, none at the weekend.
  EXPECT_EQ(form.weekday(0).text(), "8:00");
  EXPECT_EQ(form.weekday(4).text(), "8:00");
  EXPECT_EQ(form.weekday(6).text(), "0:00");
  EXPECT_EQ(form.balance().text(), "0:00");
  // The page shortcuts wait until there are pages to go to.
  QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
  EXPECT_TRUE(window.showsSetup());

  type(form.balance(), "1.5h");
  type(form.weekday(5), "25:00");
  QTest::mouseClick(&form.submit(), Qt::LeftButton);
  EXPECT_EQ(form.refusal("balance").toStdString(),
            "'1.5h' is not a duration (try 90, -45, 1:30, -0:45, 1h30m, -2h or 45m)");
  EXPECT_TRUE(window.showsSetup());
  EXPECT_EQ(quillmont_.run({"settings"}).out.find("Set-up: complete"), std::string::npos);

  type(form.balance(), "1:30");
  QTest::mouseClick(&form.submit(), Qt::LeftButton);
  EXPECT_TRUE(form.refusal("balance").isEmpty());
  EXPECT_EQ(form.refusal("week").toStdString(), "a day's expected time lies between 0:00 and 24:00");
  EXPECT_TRUE(window.showsSetup());

  type(form.weekday(5), "2h");
  form.start().setDate(QDate::currentDate().addDays(-1));
  QTest::keyClick(&form.weekday(5), Qt::Key_Return);
  EXPECT_TRUE(form.refusal("week").isEmpty());
  ASSERT_FALSE(window.showsSetup());
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::overview));
  EXPECT_TRUE(window.overviewPage().problem().isEmpty());
  StoreSession session;
  EXPECT_TRUE(session.settings().hasCompletedOnboarding());
  EXPECT_EQ(session.settings().startingBalanceMinutes(), 90);
  EXPECT_EQ(session.settings().weekdayMinutes()[5], 120);
  // Set up as typed, yesterday's start and all, and one action to undo.
  const auto shown = quillmont_.run({"settings"});
  EXPECT_NE(shown.out.find("+1:30"), std::string::npos) << shown.out;
  EXPECT_NE(quillmont_.run({"undo", "--dry-run"}).out.find("setup"), std::string::npos);
}

TEST_F(SetupFormTest, ABankErasedElsewhereBringsTheFormBackAndUndoTakesTheErasureBack) {
  ASSERT_EQ(quillmont_.run({"setup", "--start", "today", "--balance", "2:00"}).exitCode, 0);
  QuillmontWindow window;
  window.open(AppRoute::history);
  ASSERT_FALSE(window.showsSetup());
  ASSERT_EQ(quillmont_.run({"erase", "--yes"}).exitCode, 0);
  window.refresh();
  EXPECT_TRUE(window.showsSetup());
  QApplication::setActiveWindow(&window);
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(window.statusText().toStdString(), "Undid erase.");
  EXPECT_FALSE(window.showsSetup());
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::history));
  window.undo();
  window.undo();
  EXPECT_EQ(window.statusText().toStdString(), "Nothing to undo.");
}

}  // namespace
}  // namespace quillmont
