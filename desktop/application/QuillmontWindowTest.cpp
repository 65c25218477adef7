// The Quillmont window's pages over a store the real `quillmont` fills: the
// figures each page shows, how they follow a change of the store, and what
// a page shows when the store cannot be read. With QUILLMONT_SCREENSHOTS
// set to a folder, each page is also saved there as a PNG to look at.
#include "desktop/application/QuillmontWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QStandardItemModel>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "app/session/StoreSession.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "desktop/application/DayTableModel.h"
#include "desktop/application/HistoryModel.h"
#include "desktop/application/HistoryPage.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/ReportsPage.h"
#include "desktop/application/SettingsPage.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::CommandRunner;

// The pages are read in this process: in the program's zone, one day for both.
class QuillmontWindowTest : public testing::StoreSharingTest {
 protected:
  static std::string cell(const QAbstractItemModel& model, int row, int column) {
    return model.index(row, column).data().toString().toStdString();
  }
  static void saveScreenshot(QuillmontWindow& window, AppRoute route) {
    const char* folder = std::getenv("QUILLMONT_SCREENSHOTS");
    window.open(route);
    const QPixmap picture = window.grab();
    EXPECT_FALSE(picture.isNull());
    if (folder == nullptr) return;
    std::filesystem::create_directories(folder);
    const std::string name = std::string(folder) + "/" + std::string(route.title()) + ".png";
    EXPECT_TRUE(picture.save(QString::fromStdString(name), "PNG")) << name;
  }

};

TEST_F(QuillmontWindowTest, EachPageShowsTheStoresFiguresAndFollowsItsChanges) {
  run({"setup", "--start", "yesterday", "--balance", "2:00", "--week", "8h,8h,8h,8h,8h,8h,8h"});
  run({"book", "-45m", "--category", "appointment", "--note", "dentist"});
  run({"work", "add", "--start", "yesterday 08:00", "--end", "yesterday 18:15", "--break", "30"});

  QuillmontWindow window;
  window.open(AppRoute::overview);
  const OverviewPage& overview = window.overviewPage();
  EXPECT_TRUE(overview.problem().isEmpty()) << overview.problem().toStdString();
  EXPECT_EQ(overview.balanceText(), QString::fromUtf8("+1:15"));
  EXPECT_EQ(overview.todayText(), QString::fromUtf8("\u22120:45 debited"));
  EXPECT_EQ(overview.timerText(), "not running");
  // Yesterday: 9:45 worked against 8:00 planned, not settled yet.
  EXPECT_THAT(overview.unsettledText().toStdString(), StartsWith("+1:45 since "));

  window.open(AppRoute::history);
  const HistoryModel& history = window.historyPage().model();
  ASSERT_EQ(history.rowCount(), 2);
  EXPECT_EQ(cell(history, 0, HistoryModel::what), "Appointment");
  EXPECT_EQ(cell(history, 0, HistoryModel::amount), "\u22120:45");
  EXPECT_EQ(cell(history, 0, HistoryModel::balanceAfter), "+1:15");
  EXPECT_EQ(cell(history, 0, HistoryModel::note), "dentist");
  EXPECT_EQ(cell(history, 1, HistoryModel::what), "Work, break 0:30");
  EXPECT_EQ(cell(history, 1, HistoryModel::amount), "9:45");
  EXPECT_EQ(cell(history, 1, HistoryModel::balanceAfter), "");

  // Another program books: the reload signal reads the page on show again.
  run({"book", "+30m", "--note", "late call"});
  window.refresh();
  ASSERT_EQ(history.rowCount(), 3);
  EXPECT_EQ(cell(history, 0, HistoryModel::balanceAfter), "+1:45");

  window.open(AppRoute::reports);
  ReportsPage& reports = window.reportsPage();
  EXPECT_THAT(reports.title().toStdString(), StartsWith("Month "));
  const DayTableModel& days = reports.days();
  ASSERT_GE(days.rowCount(), 2);
  EXPECT_EQ(cell(days, days.rowCount() - 1, DayTableModel::date), "Total");
  const QStandardItemModel& categories = reports.categories();
  ASSERT_EQ(categories.rowCount(), 2);
  EXPECT_EQ(cell(categories, 0, 0), "Appointment");
  EXPECT_EQ(cell(categories, 0, 2), "\u22120:45");
  reports.period().setCurrentIndex(0);
  EXPECT_THAT(reports.title().toStdString(), StartsWith("Week "));

  window.open(AppRoute::settings);
  const SettingsPage& settings = window.settingsPage();
  EXPECT_EQ(settings.value("Set-up"), "complete");
  EXPECT_EQ(settings.value("Starting balance"), "+2:00");
  EXPECT_THAT(settings.value("Planned week").toStdString(), HasSubstr("Sun 8:00"));

  // The keyboard reaches every page.
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::history));

  window.resize(900, 640);
  for (const AppRoute route : AppRoute::allCases()) saveScreenshot(window, route);
}

TEST_F(QuillmontWindowTest, AnEmptyStoreAsksForSetUpAndListsNothing) {
  QuillmontWindow window;
  window.open(AppRoute::overview);
  EXPECT_EQ(window.overviewPage().balanceText(), "+0:00");
  EXPECT_EQ(window.overviewPage().todayText(), "nothing booked");
  window.open(AppRoute::history);
  EXPECT_EQ(window.historyPage().model().rowCount(), 0);
  EXPECT_FALSE(window.historyPage().view().isVisibleTo(&window));
  window.open(AppRoute::settings);
  EXPECT_THAT(window.settingsPage().value("Set-up").toStdString(), StartsWith("not complete"));
}

TEST_F(QuillmontWindowTest, ARunningTimerShowsWhenItStarted) {
  run({"setup", "--start", "today", "--balance", "0"});
  run({"timer", "start"});
  QuillmontWindow window;
  window.open(AppRoute::overview);
  EXPECT_THAT(window.overviewPage().timerText().toStdString(), StartsWith("running since "));
  EXPECT_TRUE(window.overviewPage().figures().runningSince.has_value());
  run({"timer", "stop"});
  window.refresh();
  EXPECT_EQ(window.overviewPage().timerText(), "not running");
}

TEST_F(QuillmontWindowTest, AStoreThatCannotBeReadLeavesThePageEmptyAndSaysWhy) {
  run({"setup", "--start", "today", "--balance", "2:00"});
  QuillmontWindow window;
  window.open(AppRoute::overview);
  ASSERT_EQ(window.overviewPage().balanceText(), "+2:00");
  // Something else took the store's place: the store refuses it.
  const auto store = StoreSession::storePath();
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) std::filesystem::remove(store.string() + suffix);
  { std::ofstream(store) << std::string(4096, 'x'); }
  window.refresh();
  EXPECT_THAT(window.overviewPage().problem().toStdString(), StartsWith("The time bank could not be read: "));
  EXPECT_EQ(window.overviewPage().balanceText(), QString::fromUtf8("\u2014"));
}

}  // namespace
}  // namespace quillmont
