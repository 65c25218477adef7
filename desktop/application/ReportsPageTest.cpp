// The calendar page over a store the real `quillmont` fills: moving between
// periods, a range of days, the chart's bars, and both CSV documents
// written for exactly the period shown.
#include "desktop/application/ReportsPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "desktop/application/DayChart.h"
#include "desktop/application/DayTableModel.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::CommandRunner;

class ReportsPageTest : public testing::StoreSharingTest {
 protected:
  static std::string day(int offset) {
    return QDate::currentDate().addDays(offset).toString(Qt::ISODate).toStdString();
  }
  static std::vector<std::string> lines(const QString& path) {
    std::ifstream file(path.toStdString());
    std::vector<std::string> read;
    for (std::string line; std::getline(file, line);) read.push_back(line);
    return read;
  }

};

TEST_F(ReportsPageTest, ARangeShowsItsDaysAndChartsThemAndExportsBothDocuments) {
  run({"setup", "--start", day(-10), "--balance", "0", "--week", "8h,8h,8h,8h,8h,8h,8h"});
  run({"work", "add", "--start", day(-3) + " 08:00", "--end", day(-3) + " 18:00"});
  run({"book", "-1h", "--day", day(-2), "--category", "appointment"});

  ReportsPage page;
  page.showRange(QDate::currentDate().addDays(-2), QDate::currentDate().addDays(-4));  // either order
  EXPECT_THAT(page.title().toStdString(), StartsWith("Days " + day(-4) + " to " + day(-2)));
  ASSERT_EQ(page.days().rowCount(), 4);  // three days and the sums
  EXPECT_EQ(page.days().index(1, DayTableModel::difference).data().toString().toStdString(), "+2:00");
  EXPECT_EQ(page.days().index(2, DayTableModel::adjustments).data().toString(), QString::fromUtf8("\u22121:00"));

  const auto& bars = page.chart().bars();
  ASSERT_EQ(bars.size(), 3u);
  EXPECT_DOUBLE_EQ(bars[0].hours, -8.0);
  EXPECT_DOUBLE_EQ(bars[1].hours, 2.0);
  EXPECT_DOUBLE_EQ(bars[2].hours, -9.0);
  EXPECT_LE(page.chart().lowerHours(), -9.0);
  EXPECT_GE(page.chart().upperHours(), 2.0);
  EXPECT_THAT(page.chart().accessibleDescription().toStdString(), HasSubstr("Largest debit"));

  QTemporaryDir folder;
  const QString daysFile = folder.filePath("days.csv");
  const QString ledgerFile = folder.filePath("ledger.csv");
  EXPECT_EQ(page.exportTo(ReportsPage::Document::days, daysFile), "");
  EXPECT_EQ(page.exportTo(ReportsPage::Document::ledger, ledgerFile), "");
  const auto daysLines = lines(daysFile);
  ASSERT_EQ(daysLines.size(), 4u);
  EXPECT_EQ(daysLines[0], "date,worked_hours,adjustment_hours,planned_hours,difference_hours");
  EXPECT_THAT(daysLines[1], StartsWith(day(-4) + ","));
  EXPECT_THAT(daysLines[3], StartsWith(day(-2) + ","));
  const auto ledgerLines = lines(ledgerFile);
  ASSERT_EQ(ledgerLines.size(), 2u);  // the one day with a booking
  EXPECT_THAT(ledgerLines[1], StartsWith(day(-2) + ","));
  EXPECT_THAT(page.exportMessage().toStdString(), HasSubstr("ledger.csv"));
}

TEST_F(ReportsPageTest, AnExportThatCannotBeWrittenSaysWhyAndWritesNothing) {
  run({"setup", "--start", day(-3)});
  ReportsPage page;
  page.refresh();
  QTemporaryDir folder;
  const QString path = folder.filePath("missing/days.csv");
  const QString problem = page.exportTo(ReportsPage::Document::days, path);
  EXPECT_FALSE(problem.isEmpty());
  EXPECT_EQ(page.exportMessage(), problem);
  EXPECT_FALSE(QFile::exists(path));
}

TEST_F(ReportsPageTest, ThePeriodMovesBackAndForthByItsOwnLength) {
  run({"setup", "--start", day(-800)});
  ReportsPage page;
  const QDate today = QDate::currentDate();
  const auto button = [&](const QString& name) {
    for (QToolButton* found : page.findChildren<QToolButton*>()) {
      if (found->accessibleName() == name) return found;
    }
    ADD_FAILURE() << name.toStdString();
    return static_cast<QToolButton*>(nullptr);
  };
  const auto starts = [&](const QDate& first) { return HasSubstr(first.toString(Qt::ISODate).toStdString() + " to"); };

  page.period().setCurrentIndex(ReportsPage::month);
  const QDate month(today.year(), today.month(), 1);
  EXPECT_THAT(page.title().toStdString(), starts(month));
  EXPECT_THAT(page.title().toStdString(), HasSubstr("through today"));
  QTest::mouseClick(button("Previous period"), Qt::LeftButton);
  EXPECT_THAT(page.title().toStdString(), starts(month.addMonths(-1)));
  EXPECT_THAT(page.title().toStdString(), ::testing::Not(HasSubstr("through today")));
  EXPECT_EQ(page.days().rowCount(), month.addMonths(-1).daysInMonth() + 1);

  page.period().setCurrentIndex(ReportsPage::year);  // keeps the day moved to
  EXPECT_THAT(page.title().toStdString(), starts(QDate(month.addMonths(-1).year(), 1, 1)));
  QTest::mouseClick(button("Previous period"), Qt::LeftButton);
  EXPECT_THAT(page.title().toStdString(), starts(QDate(month.addMonths(-1).year() - 1, 1, 1)));
  QTest::mouseClick(button("Period around today"), Qt::LeftButton);
  EXPECT_THAT(page.title().toStdString(), starts(QDate(today.year(), 1, 1)));

  // A range moves by its own number of days.
  page.showRange(today.addDays(-9), today.addDays(-5));
  QTest::mouseClick(button("Next period"), Qt::LeftButton);
  EXPECT_THAT(page.title().toStdString(), starts(today.addDays(-4)));
  EXPECT_EQ(page.days().rowCount(), 5 + 1);
}

}  // namespace
}  // namespace quillmont
