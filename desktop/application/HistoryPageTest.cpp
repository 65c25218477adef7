// The Activity page driven as a person would: the filter row, editing a
// work entry (with the rules the command line keeps), deleting after the
// question, undo with its refusal, and a booking made by another process
// appearing while the window is open.
#include "desktop/application/HistoryPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <cstdlib>
#include <string>

#include "app/session/StoreSession.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "core/ledger/WorkEntry.h"
#include "desktop/DesktopHost.h"
#include "desktop/application/FieldProblems.h"
#include "desktop/application/HistoryModel.h"
#include "desktop/application/QuillmontWindow.h"
#include "desktop/application/WorkEntryDialog.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::CommandRunner;

class HistoryPageTest : public testing::StoreSharingTest {
 protected:
  HistoryPage& opened() {
    window_.open(AppRoute::history);
    return window_.historyPage();
  }
  static std::string cell(const HistoryModel& model, int row, int column) {
    return model.index(row, column).data().toString().toStdString();
  }
  static void type(QLineEdit& field, const QString& text) {
    field.clear();
    QTest::keyClicks(&field, text);
  }
  static void save(WorkEntryDialog& dialog) {
    QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save), Qt::LeftButton);
  }
  static void answer(QMessageBox& question, const QString& button) {
    for (QAbstractButton* each : question.buttons()) {
      if (each->text() == button) {
        QTest::mouseClick(each, Qt::LeftButton);
        return;
      }
    }
    FAIL() << "no button " << button.toStdString();
  }

  QuillmontWindow window_;
};

TEST_F(HistoryPageTest, TheFilterNarrowsToARangeAndAKind) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"book", "+1h", "--day", "2026-02-10"});
  run({"book", "-30m", "--day", "2026-03-05"});
  run({"work", "add", "--start", "2026-03-04 08:00", "--end", "2026-03-04 12:00"});
  HistoryPage& page = opened();
  const HistoryModel& model = page.model();
  ASSERT_EQ(model.rowCount(), 3);

  page.kinds().setCurrentIndex(2);
  ASSERT_EQ(model.rowCount(), 1);
  EXPECT_EQ(cell(model, 0, HistoryModel::what), "Work");
  page.kinds().setCurrentIndex(1);
  EXPECT_EQ(model.rowCount(), 2);

  // Both edges are whole days, the last one included.
  page.range().setCurrentIndex(HistoryPage::between);
  EXPECT_TRUE(page.from().isEnabled());
  page.from().setDate({2026, 3, 1});
  page.to().setDate({2026, 3, 5});
  ASSERT_EQ(model.rowCount(), 1);
  EXPECT_EQ(cell(model, 0, HistoryModel::amount), "\u22120:30");
  // The balance after a booking is the ledger's, whatever is hidden.
  EXPECT_EQ(cell(model, 0, HistoryModel::balanceAfter), "+0:30");
  page.to().setDate({2026, 3, 4});
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_FALSE(page.view().isVisibleTo(&page));

  page.range().setCurrentIndex(HistoryPage::allTime);
  page.kinds().setCurrentIndex(0);
  EXPECT_EQ(model.rowCount(), 3);
  window_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  page.focusFilter();
  EXPECT_TRUE(page.range().hasFocus());
}

TEST_F(HistoryPageTest, AWorkEntryIsEditedWithTheCommandLinesRules) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"work", "add", "--start", "2026-03-04 08:00", "--end", "2026-03-04 12:00", "--note", "morning"});
  run({"work", "add", "--start", "2026-03-04 13:00", "--end", "2026-03-04 17:00", "--note", "afternoon"});
  run({"book", "+1h", "--day", "2026-03-04"});
  HistoryPage& page = opened();
  ASSERT_EQ(page.model().rowCount(), 3);
  // Newest first: the afternoon, the booking (at noon), the morning.
  const int morning = 2;
  ASSERT_EQ(cell(page.model(), morning, HistoryModel::note), "morning");

  page.view().selectRow(1);
  EXPECT_FALSE(page.editAction().isEnabled()) << "a booking has no edit";
  page.view().selectRow(morning);
  ASSERT_TRUE(page.editAction().isEnabled());
  page.editAction().trigger();
  WorkEntryDialog* dialog = page.editDialog();
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->start().text(), "2026-03-04 08:00");

  // Ending before the start is refused beside the end.
  type(dialog->end(), "2026-03-04 07:00");
  save(*dialog);
  ASSERT_EQ(page.editDialog(), dialog) << "a refused change keeps the dialog open";
  EXPECT_THAT(dialog->problems().text("end").toStdString(), HasSubstr("before it starts"));

  // Overlapping the afternoon is refused, naming it, until it is meant.
  type(dialog->end(), "14:00");
  save(*dialog);
  ASSERT_EQ(page.editDialog(), dialog);
  EXPECT_THAT(dialog->problems().text("").toStdString(), HasSubstr("13:00"));
  EXPECT_TRUE(dialog->problems().text("end").isEmpty());
  if (const char* folder = std::getenv("QUILLMONT_SCREENSHOTS")) {
    EXPECT_TRUE(dialog->grab().save(QString(folder) + "/Edit work.png", "PNG"));
  }

  // A time alone is on the entry's own day.
  type(dialog->end(), "12:30");
  type(dialog->breakTime(), "15");
  type(dialog->note(), "early");
  save(*dialog);
  QTest::qWait(0);
  EXPECT_EQ(page.editDialog(), nullptr);
  EXPECT_EQ(page.message(), "The work entry was changed.");
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::amount), "4:15");
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::note), "early");
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::when), "2026-03-04 08:00\u201312:30");

  // Meant: an overlap is kept when asked.
  page.view().selectRow(morning);
  page.editSelected();
  dialog = page.editDialog();
  ASSERT_NE(dialog, nullptr);
  type(dialog->end(), "14:00");
  dialog->anyway().setChecked(true);
  save(*dialog);
  QTest::qWait(0);
  EXPECT_EQ(page.editDialog(), nullptr);
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::when), "2026-03-04 08:00\u201314:00");

  // Another program changes the entry without journaling it: undo refuses and says why.
  {
    StoreSession elsewhere;
    for (const auto& entry : elsewhere.context().fetch<WorkEntry>()) {
      if (entry->note() == "early") entry->setNote("changed elsewhere");
    }
    elsewhere.context().save();
  }
  page.refresh();
  page.undo();
  EXPECT_THAT(page.message().toStdString(), HasSubstr("changed since"));
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::note), "changed elsewhere");
  EXPECT_EQ(cell(page.model(), morning, HistoryModel::when), "2026-03-04 08:00\u201314:00");
}

TEST_F(HistoryPageTest, DeleteAsksFirstAndUndoBringsItBack) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"book", "+1h", "--day", "2026-02-10", "--note", "keep"});
  run({"book", "-30m", "--day", "2026-03-05", "--note", "gone"});
  HistoryPage& page = opened();
  ASSERT_EQ(page.model().rowCount(), 2);

  // The Delete key in the list asks too.
  window_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  page.view().setFocus();
  page.view().selectRow(0);
  QTest::keyClick(&page.view(), Qt::Key_Delete);
  ASSERT_NE(page.deleteQuestion(), nullptr);
  EXPECT_THAT(page.deleteQuestion()->text().toStdString(), HasSubstr("\u22120:30"));
  answer(*page.deleteQuestion(), "Cancel");
  QTest::qWait(0);
  EXPECT_EQ(page.model().rowCount(), 2);

  page.view().selectRow(0);
  page.deleteAction().trigger();
  ASSERT_NE(page.deleteQuestion(), nullptr);
  answer(*page.deleteQuestion(), "Delete");
  QTest::qWait(0);
  ASSERT_EQ(page.model().rowCount(), 1);
  EXPECT_EQ(cell(page.model(), 0, HistoryModel::note), "keep");

  page.undoAction().trigger();
  ASSERT_EQ(page.model().rowCount(), 2);
  EXPECT_EQ(cell(page.model(), 0, HistoryModel::note), "gone");
  EXPECT_THAT(page.message().toStdString(), StartsWith("Took back "));
}

TEST_F(HistoryPageTest, UndoWithNothingToTakeBackSaysSo) {
  HistoryPage& page = opened();
  page.undo();
  EXPECT_EQ(page.message(), "Nothing to undo.");
}

TEST_F(HistoryPageTest, ABookingFromAnotherProcessAppearsWithinASecond) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  DesktopHost host({WidgetFamily::systemSmall, "activity", false, false});
  ASSERT_TRUE(host.openLink("quillmont://history"));
  QuillmontWindow& window = *host.mainWindow();
  const HistoryModel& model = window.historyPage().model();
  ASSERT_EQ(model.rowCount(), 0);
  run({"book", "+30m", "--note", "from the terminal"});
  EXPECT_TRUE(QTest::qWaitFor([&] { return model.rowCount() == 1; }, 1000));
  EXPECT_EQ(cell(model, 0, HistoryModel::note), "from the terminal");

  // Reading again keeps the record a person selected.
  window.historyPage().view().selectRow(0);
  run({"book", "-15m", "--note", "later"});
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.rowCount() == 2; }, 1000));
  const QModelIndex current = window.historyPage().view().currentIndex();
  ASSERT_TRUE(current.isValid());
  EXPECT_EQ(cell(model, current.row(), HistoryModel::note), "from the terminal");
}

}  // namespace
}  // namespace quillmont
