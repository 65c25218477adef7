// The settings page driven as a person would: setting the bank up from an
// empty data home (and a refused value changing nothing), a schedule that
// the calendar then plans with, the application preferences, and an archive
// import that says what it would do before it does it.
#include "desktop/application/SettingsPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <string>

#include "app/preferences/ApplicationPreferences.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "desktop/application/DayTableModel.h"
#include "desktop/application/ReportsPage.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::CommandRunner;

class SettingsPageTest : public testing::StoreSharingTest {
 protected:
  static std::string day(int offset) { return QDate::currentDate().addDays(offset).toString(Qt::ISODate).toStdString(); }
  template <typename Widget>
  static Widget* named(QWidget& page, const QString& name) {
    for (Widget* found : page.findChildren<Widget*>()) {
      if (found->accessibleName() == name) return found;
    }
    ADD_FAILURE() << "no control named " << name.toStdString();
    return nullptr;
  }
  static void type(QLineEdit* field, const QString& text) {
    field->clear();
    QTest::keyClicks(field, text);
  }

};

TEST_F(SettingsPageTest, AnEmptyDataHomeIsSetUpFromTheFormAndARefusedValueChangesNothing) {
  SettingsPage page;
  page.refresh();
  EXPECT_THAT(page.value("Set-up").toStdString(), StartsWith("not complete"));
  auto* save = named<QPushButton>(page, "Save the time bank's settings");
  ASSERT_NE(save, nullptr);
  EXPECT_EQ(save->text(), "Set up");

  type(named<QLineEdit>(page, "Starting balance"), "1h30x");
  QTest::mouseClick(save, Qt::LeftButton);
  EXPECT_FALSE(page.message("Time bank").isEmpty());
  EXPECT_THAT(page.value("Set-up").toStdString(), StartsWith("not complete"));

  type(named<QLineEdit>(page, "Starting balance"), "-1:30");
  type(named<QLineEdit>(page, "Planned Saturday"), "0");
  type(named<QLineEdit>(page, "Planned Sunday"), "0");
  named<QComboBox>(page, "Quick action 4")->setCurrentText("8 hrs");
  QTest::mouseClick(save, Qt::LeftButton);
  EXPECT_EQ(page.message("Time bank"), "");
  EXPECT_EQ(page.value("Set-up"), "complete");
  EXPECT_EQ(page.value("Starting balance").toStdString(), "\u22121:30");
  EXPECT_THAT(page.value("Planned week").toStdString(), HasSubstr("Sun 0:00"));
  const std::string settings = run({"settings"});
  EXPECT_THAT(settings, HasSubstr("8 hrs"));

  // A day beyond 24 hours is refused in the bank's own words, and nothing changes.
  type(named<QLineEdit>(page, "Planned Monday"), "25h");
  QTest::mouseClick(save, Qt::LeftButton);
  EXPECT_FALSE(page.message("Time bank").isEmpty());
  EXPECT_EQ(run({"settings"}), settings);
}

TEST_F(SettingsPageTest, ANewScheduleShowsInTheCalendarAndCanBeRemoved) {
  run({"setup", "--start", day(-20), "--week", "8h,8h,8h,8h,8h,8h,8h"});
  SettingsPage page;
  page.refresh();
  for (const char* weekday : {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"}) {
    type(named<QLineEdit>(page, QString("New schedule ") + weekday), "4h");
  }
  named<QDateEdit>(page, "New schedule valid from")->setDate(QDate::currentDate().addDays(-2));
  QTest::mouseClick(named<QPushButton>(page, "Add schedule"), Qt::LeftButton);
  EXPECT_EQ(page.message("Weekly schedules"), "");
  ASSERT_EQ(page.schedules().rowCount(), 1);
  EXPECT_EQ(page.schedules().item(0, 0)->text().toStdString(), day(-2));

  ReportsPage reports;
  reports.showRange(QDate::currentDate().addDays(-3), QDate::currentDate().addDays(-1));
  ASSERT_EQ(reports.days().rowCount(), 4);
  EXPECT_EQ(reports.days().index(0, DayTableModel::planned).data().toString(), "8:00");
  EXPECT_EQ(reports.days().index(1, DayTableModel::planned).data().toString(), "4:00");
  EXPECT_EQ(reports.days().index(2, DayTableModel::planned).data().toString(), "4:00");

  // Changing and removing need a schedule chosen; choosing one fills the form.
  QTest::mouseClick(named<QPushButton>(page, "Remove the selected schedule"), Qt::LeftButton);
  EXPECT_FALSE(page.message("Weekly schedules").isEmpty());
  page.schedules().selectRow(0);
  EXPECT_EQ(named<QLineEdit>(page, "New schedule Monday")->text(), "4:00");
  named<QDateEdit>(page, "New schedule valid from")->setDate(QDate::currentDate().addDays(-1));
  type(named<QLineEdit>(page, "New schedule " + QDate::currentDate().addDays(-1).toString("dddd")), "6h");
  QTest::mouseClick(named<QPushButton>(page, "Change the selected schedule"), Qt::LeftButton);
  EXPECT_EQ(page.message("Weekly schedules"), "");
  ASSERT_EQ(page.schedules().rowCount(), 1);
  reports.refresh();
  EXPECT_EQ(reports.days().index(1, DayTableModel::planned).data().toString(), "8:00");
  EXPECT_EQ(reports.days().index(2, DayTableModel::planned).data().toString(), "6:00");

  // Removed, the calendar plans the week again.
  page.schedules().selectRow(0);
  QTest::mouseClick(named<QPushButton>(page, "Remove the selected schedule"), Qt::LeftButton);
  EXPECT_EQ(page.schedules().rowCount(), 0);
  reports.refresh();
  EXPECT_EQ(reports.days().index(1, DayTableModel::planned).data().toString(), "8:00");
}

TEST_F(SettingsPageTest, TheTrayAndAppearanceChoicesAreStoredAndAnnounced) {
  run({"setup", "--start", day(-1)});
  SettingsPage page;
  page.refresh();
  QSignalSpy changed(&page, &SettingsPage::preferencesChanged);
  auto* shows = named<QCheckBox>(page, "Show in the tray");
  ASSERT_NE(shows, nullptr);
  ApplicationPreferences stored;

  if (!shows->isChecked()) QTest::mouseClick(shows, Qt::LeftButton);
  ASSERT_TRUE(stored.showsTray());
  named<QComboBox>(page, "The tray shows")->setCurrentIndex(2);
  EXPECT_EQ(stored.trayDisplay(), ApplicationPreferences::TrayDisplay::balanceAndToday);
  auto* closes = named<QCheckBox>(page, "Closing keeps the tray");
  const bool closed = closes->isChecked();
  QTest::mouseClick(closes, Qt::LeftButton);
  EXPECT_EQ(stored.closesToTray(), !closed);
  named<QComboBox>(page, "Appearance")->setCurrentIndex(2);
  EXPECT_EQ(stored.appearance(), ApplicationPreferences::Appearance::dark);
  EXPECT_GE(changed.count(), 3);

  // Hiding the tray leaves nothing to choose about it, and a new page reads it all back.
  QTest::mouseClick(shows, Qt::LeftButton);
  EXPECT_FALSE(stored.showsTray());
  EXPECT_FALSE(named<QComboBox>(page, "The tray shows")->isEnabled());
  SettingsPage again;
  EXPECT_FALSE(named<QCheckBox>(again, "Show in the tray")->isChecked());
  EXPECT_EQ(named<QComboBox>(again, "The tray shows")->currentIndex(), 2);
  EXPECT_EQ(named<QComboBox>(again, "Appearance")->currentIndex(), 2);
}

TEST_F(SettingsPageTest, AnImportShowsItsCountsBeforeChangingAnything) {
  run({"setup", "--start", day(-5)});
  run({"book", "-1h", "--category", "appointment"});
  run({"book", "+30m"});
  SettingsPage page;
  page.refresh();
  QTemporaryDir folder;
  const QString archive = folder.filePath("archive.json");
  ASSERT_TRUE(page.exportArchive(archive)) << page.message("Archive").toStdString();
  EXPECT_THAT(page.message("Archive").toStdString(), HasSubstr("3 bookings"));  // with the starting balance
  run({"erase", "--yes"});

  ASSERT_TRUE(page.previewImport(archive)) << page.message("Archive").toStdString();
  const auto* counts = named<QLabel>(page, "What importing would do");
  EXPECT_THAT(counts->text().toStdString(), HasSubstr("Nothing has changed yet"));
  EXPECT_THAT(counts->text().toStdString(), ::testing::ContainsRegex("add [1-9][0-9]* records"));
  EXPECT_THAT(run({"bookings", "list", "--all"}), ::testing::Not(HasSubstr("Appointment")));

  QTest::mouseClick(named<QPushButton>(page, "Import the archive"), Qt::LeftButton);
  EXPECT_THAT(page.message("Archive").toStdString(), StartsWith("Imported"));
  EXPECT_THAT(run({"bookings", "list", "--all"}), HasSubstr("Appointment"));
  EXPECT_FALSE(page.confirmImport());  // once only

  EXPECT_FALSE(page.previewImport(folder.filePath("missing.json")));
  EXPECT_FALSE(page.message("Archive").isEmpty());
}

TEST_F(SettingsPageTest, AHolidayCalendarIsPreviewedAndThenFreesItsPlannedTime) {
  run({"setup", "--start", day(-5), "--week", "8h,8h,8h,8h,8h,8h,8h"});
  const QString yesterday = QDate::currentDate().addDays(-1).toString("yyyyMMdd");
  const QString next = QDate::currentDate().toString("yyyyMMdd");
  QTemporaryDir folder;
  const QString path = folder.filePath("holidays.ics");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Quillmont tests//EN\r\nBEGIN:VEVENT\r\n"
              "UID:founding@holidays.test\r\nDTSTAMP:20250101T000000Z\r\nDTSTART;VALUE=DATE:" + yesterday +
              "\r\nDTEND;VALUE=DATE:" + next + "\r\nSUMMARY:Founding Day\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n")
                 .toUtf8());
  file.close();

  SettingsPage page;
  page.refresh();
  ReportsPage reports;
  reports.showRange(QDate::currentDate().addDays(-1), QDate::currentDate().addDays(-1));
  ASSERT_TRUE(page.previewHolidays(path)) << page.message("Public holidays").toStdString();
  const std::string preview = named<QLabel>(page, "What importing the holidays would do")->text().toStdString();
  EXPECT_THAT(preview, HasSubstr("add 1 holiday and free 8:00"));
  EXPECT_THAT(preview, HasSubstr("Founding Day"));
  reports.refresh();
  EXPECT_EQ(reports.days().index(0, DayTableModel::planned).data().toString(), "8:00");  // not yet

  QTest::mouseClick(named<QPushButton>(page, "Add the holidays"), Qt::LeftButton);
  EXPECT_EQ(page.message("Public holidays"), "Added 1 holiday.");
  reports.refresh();
  EXPECT_EQ(reports.days().index(0, DayTableModel::planned).data().toString(), "0:00");
  EXPECT_THAT(reports.days().index(0, DayTableModel::date).data().toString().toStdString(), HasSubstr("Founding Day"));
}

TEST_F(SettingsPageTest, SyncIsSetUpWithAFolderAndAName) {
  run({"setup", "--start", day(-5)});
  SettingsPage page;
  page.refresh();
  QTemporaryDir home;
  QFile plain(home.filePath("plain"));
  ASSERT_TRUE(plain.open(QIODevice::WriteOnly));
  plain.close();
  EXPECT_FALSE(page.setUpSync(home.filePath("plain/shared"), "desk"));  // under a file: refused
  EXPECT_FALSE(page.message("Sync").isEmpty());
  EXPECT_THAT(named<QLabel>(page, "Sync status")->text().toStdString(), HasSubstr("not set up"));
  const QString folder = home.filePath("shared");
  ASSERT_TRUE(page.setUpSync(folder, "desk")) << page.message("Sync").toStdString();
  const std::string status = named<QLabel>(page, "Sync status")->text().toStdString();
  EXPECT_THAT(status, HasSubstr("Last exchange: 20"));  // the first exchange ran
  EXPECT_EQ(named<QLineEdit>(page, "Sync folder")->text(), folder);
  EXPECT_THAT(run({"sync", "status"}), HasSubstr("desk"));
}

}  // namespace
}  // namespace quillmont
