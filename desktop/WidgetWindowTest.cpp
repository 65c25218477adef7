// The widget window on the offscreen platform, on a scratch data home that
// the real `quillmont` program shares: presses book, other processes' bookings
// and the day's change redraw it, and the rest of the widget opens its link.
#include "desktop/WidgetWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <cstdlib>
#include <chrono>
#include <ctime>
#include <functional>
#include <optional>
#include <stdexcept>

#include "cli/testing/CommandRunner.h"
#include "core/persistence/AppConstants.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "widget/QuillmontWidgets.h"
#include "widget/TimeBankProvider.h"
#include "widget/TimeBankWidget.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;

class WidgetWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* zone = std::getenv("TZ")) previousZone_ = zone;
    // The same zone as the program the runner starts, so both see one day.
    ::setenv("TZ", std::string(CommandRunner::defaultTimeZone).c_str(), 1);
    ::tzset();
    quillmont_.shareStoreWithThisProcess();
  }
  void TearDown() override {
    window_.reset();
    driver_.reset();
    ::unsetenv("QUILLMONT_HOME");
    ::unsetenv("QUILLMONT_ENTITLEMENTS");
    previousZone_ ? ::setenv("TZ", previousZone_->c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }

  void setUp(const std::string& balance) {
    const auto result = quillmont_.run({"setup", "--start", "today", "--balance", balance, "--week", "0,0,0,0,0,0,0"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
  }
  WidgetWindow& openWindow(WidgetFamily family) {
    driver_ = std::make_unique<TimelineDriver>(TimeBankWidget().body(), family);
    window_ = std::make_unique<WidgetWindow>(*driver_, "test");
    window_->show();
    return *window_;
  }
  /// Processes events until `condition` holds or `milliseconds` pass; how long it took.
  static std::optional<qint64> waitFor(const std::function<bool()>& condition, int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
      if (timer.elapsed() > milliseconds) return std::nullopt;
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return timer.elapsed();
  }
  bool shows(const QString& text) const { return window_->layout().textSaying(text) != nullptr; }
  const PlacedItem* button(const QString& title) const {
    for (const PlacedItem& item : window_->layout().items()) {
      if (item.kind == View::Kind::button && item.text == title) return &item;
    }
    return nullptr;
  }

  CommandRunner quillmont_;
  std::unique_ptr<TimelineDriver> driver_;
  std::unique_ptr<WidgetWindow> window_;
  std::optional<std::string> previousZone_;
};

TEST_F(WidgetWindowTest, AClickOnPlusBooksAnHourAndTheWindowRedrawsAtOnce) {
  setUp("1:00");
  WidgetWindow& window = openWindow(WidgetFamily::systemMedium);
  ASSERT_TRUE(shows("+1:00"));
  EXPECT_EQ(window.size(), QSize(364, 170));
  const PlacedItem* plus = button("Add 60 minutes");
  ASSERT_NE(plus, nullptr);

  QSignalSpy finished(&window, &WidgetWindow::intentFinished);
  QTest::mouseClick(&window, Qt::LeftButton, {}, plus->frame.center().toPoint());
  ASSERT_EQ(finished.count(), 1);
  EXPECT_EQ(finished.at(0).at(1).toBool(), true);
  EXPECT_TRUE(shows("+2:00"));
  EXPECT_TRUE(shows("+1:00 today"));
  EXPECT_EQ(window.message(), "Time added to your bank.");
  const auto list = quillmont_.run({"bookings", "list"});
  EXPECT_THAT(list.out, HasSubstr("+1:00  Manual adjustment"));

  QTest::mouseClick(&window, Qt::LeftButton, {}, button("Subtract 60 minutes")->frame.center().toPoint());
  EXPECT_TRUE(shows("+1:00"));
  EXPECT_EQ(window.message(), "Time subtracted from your bank.");
}

TEST_F(WidgetWindowTest, AFailingActionShowsTheErrorsOwnWords) {
  setUp("0");
  WidgetWindow& window = openWindow(WidgetFamily::systemSmall);
  struct Failing final : AppIntent {
    std::string title() const override { return "Fail"; }
    std::vector<IntentParameterMetadata> parameters() const override { return {}; }
    std::string parameterSummary() const override { return "Fail"; }
    IntentResult perform() const override { throw std::runtime_error("the store is read-only"); }
  };
  PlacedItem failing = *button("Add 60 minutes");
  failing.intent = std::make_shared<Failing>();
  QSignalSpy finished(&window, &WidgetWindow::intentFinished);
  window.press(failing);
  ASSERT_EQ(finished.count(), 1);
  EXPECT_EQ(finished.at(0).at(1).toBool(), false);
  EXPECT_EQ(window.message(), "the store is read-only");
}

TEST_F(WidgetWindowTest, ABookingByAnotherProcessRedrawsTheWindowWithinASecond) {
  setUp("1:00");
  openWindow(WidgetFamily::systemSmall);
  ASSERT_TRUE(shows("+1:00"));
  ASSERT_EQ(quillmont_.run({"book", "30"}).exitCode, 0);
  const auto took = waitFor([&] { return shows("+1:30"); }, 1000);
  ASSERT_TRUE(took) << "no redraw within a second";
  EXPECT_LT(*took, 1000);
}

TEST_F(WidgetWindowTest, TheReloadAtMidnightClearsTodaysFigures) {
  // A clock that reaches the next local midnight 400 ms from now.
  const Calendar calendar = Calendar::autoupdatingCurrent();
  const Date midnight = TimeBankProvider::nextReload(Date::now(), calendar);
  const TimeInterval shift = midnight.timeIntervalSince(Date::now()) - 0.4;
  const Date::ScopedClock shifted([shift] {
    const auto system = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromTimeIntervalSince1970(std::chrono::duration<double>(system).count()).addingTimeInterval(shift);
  });

  WidgetSnapshot snapshot = WidgetSnapshot::empty();
  snapshot.balanceSeconds = 7200;
  snapshot.todayWorkedSeconds = 2700;
  snapshot.isConfigured = true;
  snapshot.updatedAt = Date::now();
  WidgetSnapshotStore::save(snapshot, WidgetSnapshotStore::sharedDefaults());

  openWindow(WidgetFamily::systemMedium);
  ASSERT_TRUE(shows("+0:45 today"));
  ASSERT_TRUE(driver_->reloadAt());
  EXPECT_EQ(*driver_->reloadAt(), midnight);
  const auto took = waitFor([&] { return shows("+0:00 today"); }, 3000);
  ASSERT_TRUE(took) << "today's figures were not cleared at midnight";
  EXPECT_GT(*took, 250) << "cleared before midnight";
  EXPECT_TRUE(shows("+2:00"));
  EXPECT_GT(*driver_->reloadAt(), midnight);
}

TEST_F(WidgetWindowTest, AClickOutsideTheButtonsOpensTheOverviewLink) {
  setUp("0");
  WidgetWindow& window = openWindow(WidgetFamily::systemSmall);
  QSignalSpy links(&window, &WidgetWindow::linkActivated);
  QTest::mouseClick(&window, Qt::LeftButton, {}, window.layout().textSaying("+0:00")->frame.center().toPoint());
  ASSERT_EQ(links.count(), 1);
  EXPECT_EQ(links.at(0).at(0).toUrl().toString(), "quillmont://overview");

  // A drag moves the window instead.
  const QPoint start = window.pos();
  const QPoint grip(80, 20);
  QTest::mousePress(&window, Qt::LeftButton, {}, grip);
  QMouseEvent move(QEvent::MouseMove, QPointF(grip + QPoint(40, 30)), window.mapToGlobal(QPointF(grip + QPoint(40, 30))),
                   Qt::NoButton, Qt::LeftButton, {});
  QCoreApplication::sendEvent(&window, &move);
  QTest::mouseRelease(&window, Qt::LeftButton, {}, grip + QPoint(40, 30));
  EXPECT_EQ(links.count(), 1);
  EXPECT_EQ(window.pos(), start + QPoint(40, 30));
}

TEST_F(WidgetWindowTest, TheDialogStandsAboveTheButtonsUntilReadOrDismissed) {
  setUp("1:00");
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    WidgetWindow& window = openWindow(family);
    const PlacedItem plus = *button("Add 60 minutes");
    const auto hidesAButton = [&] {
      for (const PlacedItem& item : window.layout().items()) {
        if (item.kind == View::Kind::button && item.frame.intersects(window.messageFrame())) return true;
      }
      return false;
    };
    QTest::mouseClick(&window, Qt::LeftButton, {}, plus.frame.center().toPoint());
    ASSERT_EQ(window.message(), "Time added to your bank.");
    EXPECT_FALSE(window.messageFrame().isEmpty());
    EXPECT_TRUE(QRectF(window.rect()).contains(window.messageFrame()));
    EXPECT_FALSE(hidesAButton());
    EXPECT_GE(WidgetWindow::messageMilliseconds(window.message()), 4000);

    // The buttons stay usable while it shows; a click on it dismisses it
    // without opening the link.
    QSignalSpy links(&window, &WidgetWindow::linkActivated);
    QTest::mouseClick(&window, Qt::LeftButton, {}, window.messageFrame().center().toPoint());
    EXPECT_TRUE(window.message().isEmpty());
    EXPECT_FALSE(window.isMessageTimerActive());
    EXPECT_EQ(links.count(), 0);

    // A long error wraps, still above the buttons, stays longer, and Escape dismisses it.
    struct Failing final : AppIntent {
      std::string title() const override { return "Fail"; }
      std::vector<IntentParameterMetadata> parameters() const override { return {}; }
      std::string parameterSummary() const override { return "Fail"; }
      IntentResult perform() const override {
        throw std::runtime_error("cannot save the time bank: the disk is full, and nothing was booked");
      }
    };
    PlacedItem failing = plus;
    failing.intent = std::make_shared<Failing>();
    window.press(failing);
    ASSERT_FALSE(window.message().isEmpty());
    EXPECT_FALSE(hidesAButton());
    EXPECT_GT(window.messageFrame().height(), 30) << "the text does not wrap";
    EXPECT_GT(WidgetWindow::messageMilliseconds(window.message()), 4000);
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(window.message().isEmpty());
    EXPECT_TRUE(window.messageFrame().isEmpty());
  }
}

TEST_F(WidgetWindowTest, WithoutACompositorTheWindowIsShapedToItsRoundedCorners) {
  EXPECT_TRUE(WidgetWindow::shapeFor(QSize(170, 170), true).isEmpty());
  setUp("0");
  WidgetWindow& window = openWindow(WidgetFamily::systemSmall);
  window.setComposited(false);
  const auto shapedTo = [&](QSize size) {
    const QRegion mask = window.mask();
    EXPECT_EQ(mask.boundingRect(), QRect(QPoint(0, 0), size));
    for (const QPoint corner : {QPoint(0, 0), QPoint(size.width() - 1, 0), QPoint(0, size.height() - 1),
                                QPoint(size.width() - 1, size.height() - 1)}) {
      EXPECT_FALSE(mask.contains(corner)) << corner.x() << "," << corner.y();
    }
    for (const QPoint inside : {QPoint(size.width() / 2, 1), QPoint(1, size.height() / 2),
                                QPoint(size.width() / 2, size.height() / 2), QPoint(8, 8)}) {
      EXPECT_TRUE(mask.contains(inside)) << inside.x() << "," << inside.y();
    }
  };
  shapedTo(window.size());
  driver_->setFamily(WidgetFamily::systemMedium);
  ASSERT_EQ(window.size(), QSize(364, 170));
  shapedTo(window.size());
  window.setComposited(true);
  EXPECT_TRUE(window.mask().isEmpty());
}

TEST_F(WidgetWindowTest, ScreenReadersFindTheBalanceAndTheButtons) {
  setUp("4:30");
  WidgetWindow& window = openWindow(WidgetFamily::systemMedium);
  QStringList names;
  QString balanceValue;
  for (const QAbstractButton* element : window.findChildren<QAbstractButton*>()) {
    names << element->accessibleName();
    if (element->accessibleName() == "Time bank balance") balanceValue = element->accessibleDescription();
  }
  EXPECT_TRUE(names.contains("Time bank balance"));
  EXPECT_TRUE(names.contains("Add 60 minutes"));
  EXPECT_TRUE(names.contains("Subtract 60 minutes"));
  EXPECT_FALSE(balanceValue.isEmpty());
}

}  // namespace
}  // namespace quillmont
