// The Time bank page driven as a person would: the booking form (with what
// it refuses shown where it belongs), the quick actions, the timer and
// settling, each over a store the real `quillmont` set up.
#include "desktop/application/OverviewPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <cstdlib>
#include <string>

#include "cli/testing/CommandRunner.h"
#include "desktop/testing/StoreSharingTest.h"
#include "desktop/application/BookingForm.h"
#include "desktop/application/HistoryModel.h"
#include "desktop/application/HistoryPage.h"
#include "desktop/application/QuillmontWindow.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::CommandRunner;

class OverviewPageTest : public testing::StoreSharingTest {
 protected:
  OverviewPage& opened() {
    window_.open(AppRoute::overview);
    return window_.overviewPage();
  }
  static void type(QLineEdit& field, const QString& text) {
    field.clear();
    QTest::keyClicks(&field, text);
  }
  static void choose(QComboBox& box, const QString& starting) {
    for (int index = 0; index < box.count(); ++index) {
      if (box.itemText(index).startsWith(starting)) {
        box.setCurrentIndex(index);
        return;
      }
    }
    FAIL() << "no choice " << starting.toStdString();
  }

  QuillmontWindow window_;
};

TEST_F(OverviewPageTest, TheFormBooksAndShowsWhatItRefusesWhereItBelongs) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  OverviewPage& page = opened();
  BookingForm& form = page.bookingForm();
  // The categories say which way they move the balance.
  EXPECT_THAT(form.category().itemText(0).toStdString(), StartsWith("Manual adjustment (adds or takes time)"));
  choose(form.category(), "Appointment (takes time)");

  // A wrong sign is the category's to refuse: nothing is booked.
  type(form.amount(), "45m");
  QTest::mouseClick(&form.bookButton(), Qt::LeftButton);
  EXPECT_EQ(form.problems().text("amount"),
            QString::fromUtf8("\"Appointment\" takes time: give a negative amount, e.g. -30."));
  EXPECT_TRUE(form.problems().text("").isEmpty());
  EXPECT_EQ(page.balanceText(), "+0:00");
  EXPECT_EQ(form.amount().text(), "45m");
  if (const char* folder = std::getenv("QUILLMONT_SCREENSHOTS")) {
    window_.resize(900, 680);
    EXPECT_TRUE(window_.grab().save(QString(folder) + "/Time bank refused.png", "PNG"));
  }

  // An amount that is no duration is refused under the amount itself.
  type(form.amount(), "soon");
  QTest::keyClick(&form.amount(), Qt::Key_Return);
  EXPECT_FALSE(form.problems().text("amount").isEmpty());
  EXPECT_TRUE(form.problems().text("").isEmpty());

  type(form.amount(), "-45m");
  type(form.note(), "dentist");
  QTest::mouseClick(&form.bookButton(), Qt::LeftButton);
  EXPECT_TRUE(form.problems().text("amount").isEmpty());
  EXPECT_EQ(page.balanceText(), QString::fromUtf8("\u22120:45"));
  EXPECT_EQ(page.todayText(), QString::fromUtf8("\u22120:45 debited"));
  EXPECT_THAT(page.message().toStdString(), HasSubstr("Appointment"));
  EXPECT_TRUE(form.amount().text().isEmpty());
  EXPECT_TRUE(form.note().text().isEmpty());
  // The chosen category stays for the next booking.
  EXPECT_THAT(form.category().currentText().toStdString(), StartsWith("Appointment"));

  // Another day: booked on that day, not today.
  choose(form.category(), "Manual");
  form.day().setDate(QDate::currentDate().addDays(-2));
  type(form.amount(), "1:30");
  QTest::mouseClick(&form.bookButton(), Qt::LeftButton);
  EXPECT_EQ(page.balanceText(), QString::fromUtf8("+0:45"));
  EXPECT_EQ(page.todayText(), QString::fromUtf8("\u22120:45 debited"));
  EXPECT_THAT(quillmont_.run({"bookings", "list", "--all"}).out,
              HasSubstr(QDate::currentDate().addDays(-2).toString("yyyy-MM-dd").toStdString()));
}

TEST_F(OverviewPageTest, OwnCategoriesAreOfferedAndTheKeyboardReachesTheForm) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"category", "add", "Training"});
  OverviewPage& page = opened();
  const QComboBox& categories = page.bookingForm().category();
  EXPECT_GE(categories.findText("Training (takes time)"), 0);
  window_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  page.focusBookingForm();
  EXPECT_TRUE(page.bookingForm().amount().hasFocus());
  QTest::keyClick(&page.bookingForm().amount(), Qt::Key_Tab);
  EXPECT_TRUE(page.bookingForm().category().hasFocus());
  // Tab goes the way the page reads: from the timer to the quick actions.
  page.timerNote().setFocus();
  QTest::keyClick(&page.timerNote(), Qt::Key_Tab);
  EXPECT_TRUE(page.startButton().hasFocus());
  QTest::keyClick(&page.startButton(), Qt::Key_Tab);
  QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
  EXPECT_TRUE(page.quickButton(0).hasFocus());
}

TEST_F(OverviewPageTest, QuickActionsAddAndTakeTheirAmounts) {
  run({"setup", "--start", "2026-01-01", "--balance", "1:00", "--quick", "15,30,1h,2h"});
  OverviewPage& page = opened();
  EXPECT_EQ(page.quickButton(0).text(), "+15 min");
  EXPECT_EQ(page.quickButton(7).text(), QString::fromUtf8("\u22122 hrs"));
  QTest::mouseClick(&page.quickButton(1), Qt::LeftButton);
  EXPECT_EQ(page.balanceText(), "+1:30");
  QTest::mouseClick(&page.quickButton(6), Qt::LeftButton);
  EXPECT_EQ(page.balanceText(), "+0:30");
  EXPECT_EQ(page.todayText(), QString::fromUtf8("+0:30 credited, \u22121:00 debited (net \u22120:30)"));

  // New amounts from elsewhere show on the buttons at the next reading.
  run({"settings", "--quick", "5,10,20,45"});
  window_.refresh();
  EXPECT_EQ(page.quickButton(3).text(), "+45 min");
}

TEST_F(OverviewPageTest, TheTimerStartsWithANoteTicksAndStops) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  OverviewPage& page = opened();
  EXPECT_EQ(page.timerText(), "not running");
  EXPECT_FALSE(page.ticking());
  EXPECT_TRUE(page.stopButton().isHidden());

  type(page.timerNote(), "report");
  QTest::mouseClick(&page.startButton(), Qt::LeftButton);
  EXPECT_THAT(page.timerText().toStdString(), StartsWith("running since "));
  EXPECT_TRUE(page.ticking());
  EXPECT_TRUE(page.startButton().isHidden());
  EXPECT_FALSE(page.stopButton().isHidden());
  EXPECT_TRUE(page.timerNote().text().isEmpty());
  // Only while it is seen.
  window_.open(AppRoute::history);
  EXPECT_FALSE(page.ticking());
  window_.open(AppRoute::overview);
  EXPECT_TRUE(page.ticking());

  QTest::mouseClick(&page.stopButton(), Qt::LeftButton);
  EXPECT_EQ(page.timerText(), "not running");
  EXPECT_FALSE(page.ticking());
  EXPECT_THAT(page.message().toStdString(), StartsWith("Stopped: "));
  EXPECT_THAT(quillmont_.run({"work", "list", "--all"}).out, HasSubstr("report"));

  // Continue takes the last note; cancel leaves nothing behind.
  QTest::mouseClick(&page.continueButton(), Qt::LeftButton);
  window_.open(AppRoute::history);
  ASSERT_EQ(window_.historyPage().model().rowCount(), 2);
  EXPECT_EQ(window_.historyPage().model().index(0, HistoryModel::note).data().toString(), "report");
  window_.open(AppRoute::overview);
  QTest::mouseClick(&page.cancelButton(), Qt::LeftButton);
  EXPECT_EQ(page.timerText(), "not running");
  window_.open(AppRoute::history);
  EXPECT_EQ(window_.historyPage().model().rowCount(), 1);
}

TEST_F(OverviewPageTest, AStartRefusedBecauseTheTimerRunsElsewhereSaysSo) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  OverviewPage& page = opened();
  run({"timer", "start"});
  QTest::mouseClick(&page.startButton(), Qt::LeftButton);
  EXPECT_FALSE(page.message().isEmpty());
  // The page now shows the timer that runs.
  EXPECT_THAT(page.timerText().toStdString(), StartsWith("running since "));
}

TEST_F(OverviewPageTest, SettleBooksTheUnsettledDays) {
  run({"setup", "--start", "yesterday", "--balance", "0", "--week", "8h,8h,8h,8h,8h,8h,8h"});
  run({"work", "add", "--start", "yesterday 08:00", "--end", "yesterday 18:00", "--break", "15"});
  OverviewPage& page = opened();
  ASSERT_FALSE(page.settleButton().isHidden());
  QTest::mouseClick(&page.settleButton(), Qt::LeftButton);
  EXPECT_EQ(page.message(), "Settled 1 day: +1:45.");
  EXPECT_EQ(page.balanceText(), "+1:45");
  EXPECT_TRUE(page.settleButton().isHidden());
}

}  // namespace
}  // namespace quillmont
