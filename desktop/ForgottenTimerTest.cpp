// A forgotten timer is said once per run, at the person's limit and not
// before; stopping it from the notice goes through the timer's rules.
#include "desktop/ForgottenTimer.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <QTimeEdit>

#include <string>

#include "app/preferences/ApplicationPreferences.h"
#include "cli/testing/CommandRunner.h"
#include "desktop/StopAtDialog.h"

namespace quillmont {
namespace {

using testing::CommandRunner;

TEST(ForgottenTimer, ATimerIsForgottenFromItsLimitOn) {
  const Date start(800000000);
  EXPECT_DOUBLE_EQ(ForgottenTimer::secondsUntilForgotten(start, start, 10), 36000);
  EXPECT_DOUBLE_EQ(ForgottenTimer::secondsUntilForgotten(start, start.addingTimeInterval(35999), 10), 1);
  EXPECT_DOUBLE_EQ(ForgottenTimer::secondsUntilForgotten(start, start.addingTimeInterval(36000), 10), 0);
  EXPECT_DOUBLE_EQ(ForgottenTimer::secondsUntilForgotten(start, start.addingTimeInterval(90000), 1), 0);
}

class ForgottenTimerStore : public ::testing::Test {
 protected:
  void SetUp() override {
    quillmont_.shareStoreWithThisProcess();
    run({"setup", "--start", "yesterday", "--balance", "0"});
  }
  void TearDown() override {
    ::unsetenv("QUILLMONT_HOME");
    ::unsetenv("QUILLMONT_ENTITLEMENTS");
  }
  void run(const std::vector<std::string>& arguments) {
    const auto result = quillmont_.run(arguments);
    ASSERT_EQ(result.exitCode, 0) << result.err;
  }
  CommandRunner quillmont_;
};

TEST_F(ForgottenTimerStore, ARunPastTheLimitIsSaidOnceAndAYoungerOneWaitsForItsMoment) {
  ForgottenTimer watch;
  QSignalSpy said(&watch, &ForgottenTimer::forgotten);
  watch.check();
  EXPECT_EQ(said.count(), 0);
  EXPECT_FALSE(watch.dueAt().has_value());

  // Started yesterday evening: between one and twenty-five hours ago.
  run({"timer", "start", "--at", "yesterday 23:00"});
  ASSERT_TRUE(ApplicationPreferences().setForgottenTimerHours(1));
  watch.check();
  ASSERT_EQ(said.count(), 1);
  EXPECT_EQ(said.at(0).at(1).toInt(), 1);
  watch.check();
  EXPECT_EQ(said.count(), 1) << "the same run is said once";

  // With the default limit the same run is not forgotten before its moment.
  ASSERT_TRUE(ApplicationPreferences().setForgottenTimerHours(48));
  ForgottenTimer later;
  QSignalSpy laterSaid(&later, &ForgottenTimer::forgotten);
  later.check();
  EXPECT_EQ(laterSaid.count(), 0);
  ASSERT_TRUE(later.dueAt().has_value());
  EXPECT_GT(later.dueAt()->timeIntervalSince(Date::now()), 22 * 3600.0);

  // Stopping at a time still to come is refused in the timer's words; now stops it.
  StopAtDialog dialog;
  dialog.time().setTime(QTime(23, 59));
  dialog.accept();
  const bool stillToCome = QTime::currentTime() < QTime(23, 59);
  if (stillToCome) {
    EXPECT_FALSE(dialog.refusal().isEmpty());
    EXPECT_TRUE(ForgottenTimer::stopNow().isEmpty());
  }
  EXPECT_FALSE(ForgottenTimer::stopNow().isEmpty()) << "nothing runs any more";
  later.check();
  EXPECT_FALSE(later.dueAt().has_value());
}

}  // namespace
}  // namespace quillmont
