// Black-box tests of the widget from the command line: what it draws comes
// from the snapshot every change leaves behind, never from the store, and its
// button books without losing anything to concurrent writers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Date.h"

namespace quillmont {
namespace {

using testing::CommandRunner;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::StoreProbe;

void setUp(CommandRunner& quillmont) {
  const auto setup =
      quillmont.run({"setup", "--start", "2026-01-05", "--balance", "10:00", "--week", "8h,8h,8h,8h,8h,0,0"});
  ASSERT_EQ(setup.exitCode, 0) << setup.err;
}

// The "balanceSeconds" of the snapshot `widget show --format json` printed.
double shownBalance(const CommandRunner& quillmont) {
  const auto shown = quillmont.run({"widget", "show", "--format", "json"});
  EXPECT_EQ(shown.exitCode, 0) << shown.err;
  const std::string key = "\"balanceSeconds\" : ";
  const auto at = shown.out.find(key);
  EXPECT_NE(at, std::string::npos) << shown.out;
  const double balance = at == std::string::npos ? 0 : std::strtod(shown.out.c_str() + at + key.size(), nullptr);
  return balance;
}

std::filesystem::path snapshotFile(const CommandRunner& quillmont) {
  return quillmont.home() / "data" / "group.io.quillmont.ledger" / "Preferences" / "widgetSnapshot";
}

TEST(WidgetCommands, ShowsTheSetUpMessageUntilTheBankIsSetUpThenTheBalanceBookingsLeave) {
  CommandRunner quillmont;
  const auto before = quillmont.run({"widget", "show", "--size", "small"});
  ASSERT_EQ(before.exitCode, 0) << before.err;
  EXPECT_THAT(before.out, HasSubstr("Set up your time bank"));
  EXPECT_THAT(before.out, HasSubstr("Open Quillmont to begin."));
  EXPECT_THAT(quillmont.run({"widget", "show", "--format", "waybar"}).out, HasSubstr("\"class\":\"not-set-up\""));

  setUp(quillmont);
  EXPECT_EQ(shownBalance(quillmont), 36000);
  ASSERT_EQ(quillmont.run({"book", "-45m"}).exitCode, 0);
  EXPECT_EQ(shownBalance(quillmont), 36000 - 2700);

  const auto json = quillmont.run({"widget", "show", "--format", "json", "--size", "medium"});
  EXPECT_THAT(json.out, HasSubstr("\"text\" : \"+9:15\""));
  EXPECT_THAT(json.out, HasSubstr("\"text\" : \"\u22120:45 today\""));
  EXPECT_THAT(json.out, HasSubstr("\"parameterSummary\" : \"Adjust time bank by 60 minutes\""));
  EXPECT_THAT(json.out, HasSubstr("\"url\" : \"quillmont://overview\""));
  const auto waybar = quillmont.run({"widget", "show", "--format", "waybar"});
  EXPECT_EQ(waybar.out,
            "{\"text\":\"+9:15\",\"tooltip\":\"Time bank +9:15\\n\u22120:45 today (+0:00 added, "
            "\u22120:45 subtracted)\",\"class\":\"positive\"}\n");
  const auto text = quillmont.run({"widget", "show", "--size", "medium"});
  EXPECT_THAT(text.out, HasSubstr("\u22120:45 today"));
  EXPECT_THAT(text.out, HasSubstr("[ \u2212 ] [ + ]"));
}

TEST(WidgetCommands, ShowReadsOnlyTheSnapshotSoItAnswersWithTheStoreUnreadable) {
  CommandRunner quillmont;
  setUp(quillmont);
  ASSERT_EQ(quillmont.run({"book", "1h"}).exitCode, 0);
  const auto store = quillmont.home() / "data" / "group.io.quillmont.ledger" / "Quillmont.store";
  std::filesystem::remove(store);
  std::filesystem::create_directory(store);  // not a store any more, whoever reads it
  EXPECT_EQ(quillmont.run({"overview"}).exitCode, 1);
  const auto shown = quillmont.run({"widget", "show", "--format", "waybar"});
  EXPECT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("\"text\":\"+11:00\""));
}

TEST(WidgetCommands, ACorruptForeignOrHalfWrittenSnapshotShowsTheSetUpMessage) {
  CommandRunner quillmont;
  setUp(quillmont);
  const auto file = snapshotFile(quillmont);
  const std::string whole = testing::readFile(file);
  ASSERT_THAT(whole, HasSubstr("\"balanceSeconds\":36000"));
  for (const std::string& damaged :
       {whole.substr(0, whole.size() / 2), std::string("d{\"balance\":1}"), std::string("s") + whole.substr(1),
        std::string("\x00\xff\xfe garbage", 11), std::string()}) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << damaged;
    for (const std::string format : {"text", "json", "waybar"}) {
      const auto shown = quillmont.run({"widget", "show", "--format", format});
      EXPECT_EQ(shown.exitCode, 0) << shown.err;
      EXPECT_THAT(shown.out, HasSubstr(format == "waybar" ? "not-set-up" : "Set up your time bank"));
    }
    EXPECT_EQ(testing::readFile(file), damaged) << "a reader leaves the entry as it is";
  }
  // The next change writes a whole snapshot again.
  ASSERT_EQ(quillmont.run({"book", "30"}).exitCode, 0);
  EXPECT_EQ(shownBalance(quillmont), 37800);
}

TEST(WidgetCommands, ASaveRewritesTheSnapshotAndWakesTheWidgetsOnlyWhenTheyWouldDrawSomethingElse) {
  CommandRunner quillmont;
  setUp(quillmont);
  const auto file = snapshotFile(quillmont);
  const auto reload = quillmont.home() / "data" / "widget-center" / "reload";
  const std::string set = testing::readFile(file);
  const std::string signal = testing::readFile(reload);
  ASSERT_THAT(set, HasSubstr("\"balanceSeconds\":36000"));
  ASSERT_FALSE(signal.empty());

  // A timer's start and stop are saved but change no figure the widget shows.
  ASSERT_EQ(quillmont.run({"timer", "start"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"timer", "stop"}).exitCode, 0);
  EXPECT_EQ(testing::readFile(file), set);
  EXPECT_EQ(testing::readFile(reload), signal);

  ASSERT_EQ(quillmont.run({"book", "1h"}).exitCode, 0);
  EXPECT_EQ(shownBalance(quillmont), 39600);
  EXPECT_NE(testing::readFile(reload), signal);

  // The same figures computed on another day show other "today" figures
  // there, and a damaged document shows none: both are written again.
  const std::string booked = testing::readFile(file);
  const auto at = booked.find("\"updatedAt\":");
  ASSERT_NE(at, std::string::npos) << booked;
  const auto value = at + std::string("\"updatedAt\":").size();
  const auto end = booked.find_first_of(",}", value);
  const double updatedAt = std::strtod(booked.substr(value, end - value).c_str(), nullptr);
  const std::string daysBefore = booked.substr(0, value) + std::to_string(updatedAt - 2 * 86400) + booked.substr(end);
  for (const std::string& stored : {daysBefore, booked.substr(0, booked.size() / 2)}) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << stored;
    const std::string before = testing::readFile(reload);
    ASSERT_EQ(quillmont.run({"timer", "toggle"}).exitCode, 0);
    const std::string rewritten = testing::readFile(file);
    EXPECT_EQ(rewritten.substr(0, value), booked.substr(0, value)) << "the same figures";
    EXPECT_NE(rewritten, stored);
    EXPECT_NE(testing::readFile(reload), before);
  }
}

TEST(WidgetCommands, PressBooksAnHourOrRefusesUntilSetUp) {
  CommandRunner quillmont;
  const auto refused = quillmont.run({"widget", "press", "add"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("Open Quillmont and finish setup before changing your time bank."));

  setUp(quillmont);
  const auto added = quillmont.run({"widget", "press", "add"});
  EXPECT_EQ(added.exitCode, 0) << added.err;
  EXPECT_THAT(added.err, HasSubstr("Time added to your bank."));
  const auto subtracted = quillmont.run({"widget", "press", "subtract"});
  EXPECT_THAT(subtracted.err, HasSubstr("Time subtracted from your bank."));
  EXPECT_THAT(quillmont.run({"widget", "press", "sideways"}).exitCode, 2);
  EXPECT_EQ(quillmont.run({"widget", "show", "--format", "waybar"}).out,
            "{\"text\":\"+10:00\",\"tooltip\":\"Time bank +10:00\\n+0:00 today (+1:00 added, \u22121:00 "
            "subtracted)\",\"class\":\"positive\"}\n");

  StoreProbe store(quillmont);
  int manual = 0;
  for (const auto& adjustment : store.context().fetch<BalanceAdjustment>()) {
    if (!ManualLedgerMigration::isCarryover(*adjustment) && adjustment->kindRawValue() == "manual" &&
        adjustment->note().empty()) {
      ++manual;
    }
  }
  EXPECT_EQ(manual, 2);
}

TEST(WidgetCommands, PressesInTwoProcessesAndBookingsAtTheSameTimeLoseNothing) {
  CommandRunner quillmont;
  setUp(quillmont);
  constexpr int presses = 100;
  constexpr int bookings = 40;
  std::atomic<int> failures = 0;
  auto press = [&](const char* button) {
    for (int i = 0; i < presses; ++i) failures += quillmont.run({"widget", "press", button}).exitCode != 0;
  };
  std::thread first(press, "add");
  std::thread second(press, "add");
  std::thread booking([&] {
    for (int i = 0; i < bookings; ++i) failures += quillmont.run({"book", "-1"}).exitCode != 0;
  });
  first.join();
  second.join();
  booking.join();
  ASSERT_EQ(failures, 0);

  StoreProbe store(quillmont);
  const auto adjustments = store.context().fetch<BalanceAdjustment>();
  const auto settings = store.context().fetch<TimeBankSettings>();
  ASSERT_EQ(settings.size(), 1u);
  const double ledger =
      TimeBankCalculator::ledgerBalanceSeconds(adjustments, settings[0]->startingBalanceMinutes(), Date::now());
  EXPECT_EQ(ledger, 36000.0 + 2 * presses * 3600.0 - bookings * 60.0);
  EXPECT_EQ(shownBalance(quillmont), ledger) << "the last snapshot is the ledger";
}

TEST(WidgetCommands, FollowDrawsAgainWheneverAnyProcessChangesTheBank) {
  CommandRunner quillmont;
  setUp(quillmont);
  const auto following = quillmont.start({"widget", "show", "--format", "waybar", "--follow"});
  const auto first = following->readLine();
  ASSERT_TRUE(first);
  EXPECT_THAT(*first, HasSubstr("\"text\":\"+10:00\""));
  ASSERT_EQ(quillmont.run({"book", "2h"}).exitCode, 0);
  const auto second = following->readLine();
  ASSERT_TRUE(second) << "a booking in another process redraws the module";
  EXPECT_THAT(*second, HasSubstr("\"text\":\"+12:00\""));
  ASSERT_EQ(quillmont.run({"widget", "press", "subtract"}).exitCode, 0);
  const auto third = following->readLine();
  ASSERT_TRUE(third);
  EXPECT_THAT(*third, HasSubstr("\"text\":\"+11:00\""));
  // Commands that only read change nothing and ask for no redraw.
  ASSERT_EQ(quillmont.run({"report", "week"}).exitCode, 0);
  EXPECT_FALSE(following->readLine(300));
}

TEST(WidgetCommands, TheStatusBarAndJsonShowARunningTimerAndFollowItsStartAndStop) {
  CommandRunner quillmont;
  setUp(quillmont);
  const std::string idle = quillmont.run({"widget", "show", "--format", "waybar"}).out;
  const auto bar = quillmont.start({"widget", "show", "--format", "waybar", "--follow"});
  const auto json = quillmont.start({"widget", "show", "--format", "json", "--follow"});
  ASSERT_TRUE(bar->readLine());
  const auto firstJson = json->readLine();
  ASSERT_TRUE(firstJson);
  EXPECT_THAT(*firstJson, Not(HasSubstr("\"timer\"")));

  // Starting the timer changes no figure of the widget, yet both redraw.
  ASSERT_EQ(quillmont.run({"timer", "start", "release notes"}).exitCode, 0);
  const auto running = bar->readLine();
  ASSERT_TRUE(running) << "the timer's start redraws the status bar";
  EXPECT_THAT(*running, HasSubstr("\"text\":\"+10:00 \u25B6 0:00\""));
  EXPECT_THAT(*running, HasSubstr("\\nTimer running since "));
  EXPECT_THAT(*running, HasSubstr("0:00 so far: release notes\""));
  EXPECT_THAT(*running, HasSubstr("\"class\":[\"positive\",\"timer-running\"]"));
  const auto runningJson = json->readLine();
  ASSERT_TRUE(runningJson);
  EXPECT_THAT(*runningJson, HasSubstr("\"timer\":{\"runningSince\":\""));
  EXPECT_THAT(*runningJson, HasSubstr("\"note\":\"release notes\"}}"));
  const auto once = quillmont.run({"widget", "show", "--format", "waybar"});
  EXPECT_THAT(once.out, HasSubstr("timer-running")) << "without --follow too";

  // Reading the store wakes neither; stopping the timer takes it away again.
  ASSERT_EQ(quillmont.run({"overview"}).exitCode, 0);
  EXPECT_FALSE(bar->readLine(300));
  ASSERT_EQ(quillmont.run({"timer", "stop"}).exitCode, 0);
  const auto stopped = bar->readLine();
  ASSERT_TRUE(stopped);
  EXPECT_EQ(*stopped + "\n", idle) << "with no timer the line is as it always was";
  const auto stoppedJson = json->readLine();
  ASSERT_TRUE(stoppedJson);
  EXPECT_THAT(*stoppedJson, Not(HasSubstr("\"timer\"")));
}

// CPU seconds of this process's children that have ended.
double childrenCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) { return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST(WidgetCommands, AFollowerWaitingWithATimerRunningUsesNoCpu) {
  CommandRunner quillmont;
  setUp(quillmont);
  ASSERT_EQ(quillmont.run({"timer", "start"}).exitCode, 0);
  for (const char* format : {"waybar", "json"}) {
    const double before = childrenCpuSeconds();
    auto following = quillmont.start({"widget", "show", "--format", format, "--follow"});
    ASSERT_TRUE(following->readLine()) << format;
    std::this_thread::sleep_for(std::chrono::seconds(3));
    following->stop(SIGTERM);
    // Starting takes a fraction of a second; waiting must take nothing, and
    // reading the store for the timer must not wake the reader itself.
    EXPECT_LT(childrenCpuSeconds() - before, 1.5) << format << " follower busy while idle";
  }
}

TEST(WidgetCommands, ATimerInAStoreThatCannotBeReadIsLeftOutNotAFailure) {
  CommandRunner quillmont;
  setUp(quillmont);
  ASSERT_EQ(quillmont.run({"timer", "start"}).exitCode, 0);
  const auto store = quillmont.home() / "data" / "group.io.quillmont.ledger" / "Quillmont.store";
  std::filesystem::remove(store);
  std::filesystem::create_directory(store);
  const auto shown = quillmont.run({"widget", "show", "--format", "waybar"});
  EXPECT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("\"class\":\"positive\""));
}

TEST(WidgetCommands, InfoNamesTheWidgetAndItsSizes) {
  CommandRunner quillmont;
  const auto info = quillmont.run({"widget", "info"});
  EXPECT_EQ(info.exitCode, 0);
  EXPECT_THAT(info.out, HasSubstr("TimeBankWidget"));
  EXPECT_THAT(info.out, HasSubstr("Time bank"));
  EXPECT_THAT(info.out, HasSubstr("See your current balance and quickly add or subtract time."));
  EXPECT_THAT(info.out, HasSubstr("small, medium"));
  EXPECT_THAT(info.out, Not(HasSubstr("large")));
}

}  // namespace
}  // namespace quillmont
