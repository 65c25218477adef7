// The Activity page driven as a person would: the filter row, editing a
// work entry and a booking (with the rules the command line keeps), deleting after the
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
#include "desktop/application/BookingDialog.h"
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
  template <class Dialog>
  static void save(Dialog& dialog) {
    QTest::mouseClick(dialog.template findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save), Qt::LeftButton);
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

TEST_F(HistoryPageTest, ABookingIsEditedWithTheBookingRulesAndUndoTakesItBack) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"book", "-1h", "--category", "appointment", "--day", "2026-03-04", "--note", "dentist"});
  run({"work", "add", "--start", "2026-03-05 08:00", "--end", "2026-03-05 12:00"});
  HistoryPage& page = opened();
  ASSERT_EQ(page.model().rowCount(), 2);
  const int booking = 1;  // the work is newer
  ASSERT_EQ(cell(page.model(), booking, HistoryModel::note), "dentist");

  // Enter in the list opens the booking's own dialog, window-modal.
  window_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  page.view().setFocus();
  page.view().selectRow(booking);
  ASSERT_TRUE(page.editAction().isEnabled());
  QTest::keyClick(&page.view(), Qt::Key_Return);
  BookingDialog* dialog = page.bookingDialog();
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(page.editDialog(), nullptr);
  EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
  EXPECT_EQ(dialog->amount().text(), "-1:00");
  EXPECT_EQ(dialog->category().currentData().toString(), "appointment");
  EXPECT_EQ(dialog->day().date(), QDate(2026, 3, 4));
  EXPECT_EQ(dialog->note().text(), "dentist");

  // The wrong side of the category is refused beside the amount, in the rules' words.
  type(dialog->amount(), "45m");
  save(*dialog);
  ASSERT_EQ(page.bookingDialog(), dialog) << "a refused change keeps the dialog open";
  EXPECT_EQ(dialog->problems().text("amount").toStdString(),
            "\"Appointment\" takes time: give a negative amount, e.g. -30.");
  EXPECT_TRUE(dialog->problems().text("").isEmpty());
  if (const char* folder = std::getenv("QUILLMONT_SCREENSHOTS")) {
    EXPECT_TRUE(dialog->grab().save(QString(folder) + "/Edit booking.png", "PNG"));
  }
  type(dialog->amount(), "-1:30");
  type(dialog->note(), "dentist and pharmacy");
  save(*dialog);
  QTest::qWait(0);
  EXPECT_EQ(page.bookingDialog(), nullptr);
  EXPECT_EQ(page.message(), "The booking was changed.");
  ASSERT_EQ(page.model().rowCount(), 2);
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::amount), "\u22121:30");
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::note), "dentist and pharmacy");
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::balanceAfter), "\u22121:30");

  // Another day and category; Cancel changes nothing.
  page.view().selectRow(booking);
  page.editSelected();
  dialog = page.bookingDialog();
  ASSERT_NE(dialog, nullptr);
  type(dialog->amount(), "2h");
  dialog->category().setCurrentIndex(dialog->category().findData("holiday"));
  dialog->day().setDate({2026, 3, 6});
  QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel), Qt::LeftButton);
  QTest::qWait(0);
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::amount), "\u22121:30");
  page.view().selectRow(booking);
  page.editSelected();
  dialog = page.bookingDialog();
  ASSERT_NE(dialog, nullptr);
  type(dialog->amount(), "2h");
  ASSERT_GE(dialog->category().findData("holiday"), 0);
  dialog->category().setCurrentIndex(dialog->category().findData("holiday"));
  dialog->day().setDate({2026, 3, 6});
  save(*dialog);
  QTest::qWait(0);
  ASSERT_EQ(page.bookingDialog(), nullptr) << dialog->problems().text("").toStdString();
  EXPECT_EQ(cell(page.model(), 0, HistoryModel::when), "2026-03-06 12:00");  // now the newest
  EXPECT_EQ(cell(page.model(), 0, HistoryModel::amount), "+2:00");

  // Undo takes the last edit back whole, then the one before.
  page.undoAction().trigger();
  EXPECT_THAT(page.message().toStdString(), StartsWith("Took back "));
  ASSERT_EQ(page.model().rowCount(), 2);
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::amount), "\u22121:30");
  page.undoAction().trigger();
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::amount), "\u22121:00");
  EXPECT_EQ(cell(page.model(), booking, HistoryModel::note), "dentist");
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
