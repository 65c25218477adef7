// Links reach the running program: `quillmont-widget --open URL` in another
// process opens the page in this one's Quillmont window, whose pages show
// what the command line shows.
#include "desktop/DesktopHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QProcess>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

#include "cli/testing/CommandRunner.h"
#include "desktop/application/HistoryModel.h"
#include "desktop/application/HistoryPage.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/QuillmontWindow.h"
#include "app/preferences/ApplicationPreferences.h"
#include "desktop/TrayIcon.h"
#include "desktop/application/PreferenceChanges.h"
#include "desktop/WidgetWindow.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::CommandRunner;

bool waitFor(const std::function<bool()>& condition, int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  while (!condition()) {
    if (timer.elapsed() > milliseconds) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }
  return true;
}

TEST(DesktopHost, ALinkOpenedElsewhereRaisesThisProgramsWindowAtItsPage) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "today", "--balance", "2:00", "--week", "0,0,0,0,0,0,0"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-45m", "--category", "appointment", "--note", "dentist"}).exitCode, 0);
  quillmont.shareStoreWithThisProcess();
  // The pages are drawn in this process: in the program's zone, one day for both.
  const std::string zone = std::getenv("TZ") != nullptr ? std::getenv("TZ") : "";
  ::setenv("TZ", std::string(CommandRunner::defaultTimeZone).c_str(), 1);
  ::tzset();

  DesktopHost host({WidgetFamily::systemSmall, "links", false, false});
  ASSERT_TRUE(host.instance().listen());
  EXPECT_EQ(host.mainWindow(), nullptr);

  QProcess other;
  other.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
  other.start(QUILLMONT_WIDGET_BINARY, {"--open", "quillmont://history"});
  ASSERT_TRUE(other.waitForStarted());
  ASSERT_TRUE(waitFor([&] { return other.state() == QProcess::NotRunning; }, 10000));
  EXPECT_EQ(other.exitCode(), 0) << other.readAllStandardError().toStdString();
  ASSERT_TRUE(waitFor([&] { return host.mainWindow() != nullptr && host.mainWindow()->isVisible(); }, 2000));
  QuillmontWindow& window = *host.mainWindow();
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::history));
  const HistoryModel& history = window.historyPage().model();
  ASSERT_EQ(history.rowCount(), 1);
  EXPECT_EQ(history.index(0, HistoryModel::note).data().toString(), "dentist");

  // Each page shows what the command line shows for the link.
  EXPECT_TRUE(host.openLink("quillmont://overview"));
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::overview));
  EXPECT_EQ(window.overviewPage().balanceText(), QString::fromUtf8("+1:15"));
  EXPECT_THAT(quillmont.run({"open", "quillmont://overview"}).out, HasSubstr("+1:15"));
  EXPECT_FALSE(host.openLink("https://example.org"));
  EXPECT_EQ(window.currentRoute(), AppRoute(AppRoute::overview));
  zone.empty() ? ::unsetenv("TZ") : ::setenv("TZ", zone.c_str(), 1);
  ::tzset();
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

TEST(DesktopHost, SeveralWidgetsShareOneTrayIconAndOpenApartTheFirstTime) {
  CommandRunner scratch;
  scratch.shareStoreWithThisProcess();
  const auto options = [](WidgetFamily family, const QString& instance) {
    DesktopHost::Options withTray{family, instance, true, true};
    withTray.trayAvailable = [] { return true; };
    return withTray;
  };
  auto first = std::make_unique<DesktopHost>(options(WidgetFamily::systemMedium, "first"));
  DesktopHost second(options(WidgetFamily::systemSmall, "second"));
  EXPECT_TRUE(first->listen());
  EXPECT_FALSE(second.listen());
  EXPECT_NE(first->trayIcon(), nullptr);
  EXPECT_EQ(second.trayIcon(), nullptr);
  ASSERT_NE(first->widgetWindow(), nullptr);
  ASSERT_NE(second.widgetWindow(), nullptr);
  EXPECT_FALSE(first->widgetWindow()->frameGeometry().intersects(second.widgetWindow()->frameGeometry()));
  // A third instance started later finds both places taken.
  DesktopHost third(options(WidgetFamily::systemSmall, "third"));
  EXPECT_FALSE(third.widgetWindow()->frameGeometry().intersects(first->widgetWindow()->frameGeometry()));
  EXPECT_FALSE(third.widgetWindow()->frameGeometry().intersects(second.widgetWindow()->frameGeometry()));

  // When the instance with the icon quits, one of the others takes it over.
  first.reset();
  EXPECT_TRUE(waitFor([&] { return second.trayIcon() != nullptr || third.trayIcon() != nullptr; },
                      3 * DesktopHost::takeOverMilliseconds));
  EXPECT_FALSE(second.trayIcon() != nullptr && third.trayIcon() != nullptr);
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

// A picture drawn for a bug report is the user's alone, like every file the
// programs make, whatever the umask; a folder it needs is made private too.
TEST(DesktopHost, RenderedPicturesArePrivateWhateverTheUmask) {
  CommandRunner quillmont;
  const auto picture = quillmont.home() / "pictures" / "widget.png";
  const mode_t umask = ::umask(0);  // the child inherits it
  const auto result = quillmont.runProgram(QUILLMONT_WIDGET_BINARY, {"--render", picture.string()});
  ::umask(umask);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  struct stat status {};
  ASSERT_EQ(::stat(picture.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_GT(status.st_size, 100);
  ASSERT_EQ(::stat(picture.parent_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
}

// The tray follows the preferences as soon as they are written: shown or
// not, and what its tooltip tells; closing the window keeps the program only
// while the tray is kept by preference or a widget window shows.
TEST(DesktopHost, TrayPreferencesTakeEffectAtOnce) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "today", "--balance", "2:00", "--week", "0,0,0,0,0,0,0"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "+30m"}).exitCode, 0);
  quillmont.shareStoreWithThisProcess();
  const ApplicationPreferences preferences;
  using Display = ApplicationPreferences::TrayDisplay;
  ASSERT_TRUE(preferences.setTrayDisplay(Display::balanceAndToday));
  DesktopHost::Options options{WidgetFamily::systemSmall, "tray", false, true};
  options.trayAvailable = [] { return true; };
  DesktopHost host(options);
  ASSERT_TRUE(host.listen());
  ASSERT_NE(host.trayIcon(), nullptr);
  TrayIcon& tray = *host.trayIcon();
  EXPECT_EQ(tray.toolTip().toStdString(), "Time bank +2:30\n+0:30 today");

  ASSERT_TRUE(preferences.setTrayDisplay(Display::balance));
  PreferenceChanges::notify();
  EXPECT_EQ(tray.toolTip().toStdString(), "Time bank +2:30");
  ASSERT_TRUE(preferences.setTrayDisplay(Display::icon));
  PreferenceChanges::notify();
  EXPECT_EQ(tray.toolTip().toStdString(), "Quillmont");

  // Closing the window with the tray kept leaves the program running.
  ASSERT_TRUE(preferences.setClosesToTray(true));
  ASSERT_TRUE(host.openLink("quillmont://overview"));
  host.mainWindow()->close();
  QCoreApplication::processEvents();
  EXPECT_TRUE(tray.isVisible());

  ASSERT_TRUE(preferences.setShowsTray(false));
  PreferenceChanges::notify();
  EXPECT_FALSE(tray.isVisible());
  ASSERT_TRUE(preferences.setShowsTray(true));
  PreferenceChanges::notify();
  EXPECT_TRUE(tray.isVisible());
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

// The launcher and the link handler (`--app [LINK]`) hand a running program
// the page to show instead of starting a second one, and a link from this
// program's own widget opens without leaving the process.
TEST(DesktopHost, TheLauncherRaisesTheRunningWindowAtTheLinksPage) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "today", "--balance", "0"}).exitCode, 0);
  quillmont.shareStoreWithThisProcess();
  DesktopHost host({WidgetFamily::systemSmall, "launcher", false, false});
  ASSERT_TRUE(host.instance().listen());
  const auto launch = [](const QStringList& arguments) {
    QProcess other;
    other.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    other.start(QUILLMONT_WIDGET_BINARY, arguments);
    EXPECT_TRUE(other.waitForStarted());
    EXPECT_TRUE(waitFor([&] { return other.state() == QProcess::NotRunning; }, 10000));
    return other.exitCode();
  };
  EXPECT_EQ(launch({"--app", "quillmont://reports"}), 0);
  ASSERT_TRUE(waitFor([&] { return host.mainWindow() != nullptr && host.mainWindow()->isVisible(); }, 2000));
  EXPECT_EQ(host.mainWindow()->currentRoute(), AppRoute(AppRoute::reports));
  host.mainWindow()->open(AppRoute::history);
  // Without a link the launcher raises the window as it is.
  host.mainWindow()->hide();
  EXPECT_EQ(launch({"--app"}), 0);
  ASSERT_TRUE(waitFor([&] { return host.mainWindow()->isVisible(); }, 2000));
  EXPECT_EQ(host.mainWindow()->currentRoute(), AppRoute(AppRoute::history));
  EXPECT_EQ(launch({"--app", "https://example.org"}), 2);
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

// A booking made by the command line in another process shows in the open
// Activity page within a second, through the store's reload signal.
TEST(DesktopHost, TheOpenWindowFollowsABookingFromAnotherProcessWithinASecond) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "today", "--balance", "0", "--week", "0,0,0,0,0,0,0"}).exitCode, 0);
  quillmont.shareStoreWithThisProcess();
  const std::string zone = std::getenv("TZ") != nullptr ? std::getenv("TZ") : "";
  ::setenv("TZ", std::string(CommandRunner::defaultTimeZone).c_str(), 1);
  ::tzset();
  DesktopHost host({WidgetFamily::systemSmall, "live", false, false});
  ASSERT_TRUE(host.openLink("quillmont://history"));
  const HistoryModel& history = host.mainWindow()->historyPage().model();
  ASSERT_EQ(history.rowCount(), 0);
  ASSERT_EQ(quillmont.run({"book", "+45m", "--note", "from a terminal"}).exitCode, 0);
  EXPECT_TRUE(waitFor([&] { return history.rowCount() == 1; }, 1000));
  EXPECT_EQ(history.index(0, HistoryModel::note).data().toString(), "from a terminal");
  zone.empty() ? ::unsetenv("TZ") : ::setenv("TZ", zone.c_str(), 1);
  ::tzset();
  ::unsetenv("QUILLMONT_HOME");
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
}

TEST(DesktopHost, APageIsDrawnOffscreenAtTheSizeAndScaleAsked) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "today", "--balance", "1:00"}).exitCode, 0);
  const auto picture = quillmont.home() / "history.png";
  const auto drawn = quillmont.runProgram(
      QUILLMONT_WIDGET_BINARY, {"--render-page", "history", picture.string(), "--size", "800x600", "--scale", "2", "--dark"});
  ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
  EXPECT_THAT(drawn.out, HasSubstr("Activity page (1600 × 1200)"));
  const QImage image(QString::fromStdString(picture.string()));
  ASSERT_FALSE(image.isNull());
  EXPECT_EQ(image.size(), QSize(1600, 1200));
  EXPECT_LT(image.pixelColor(5, image.height() / 2).lightness(), 100) << "drawn dark";
  EXPECT_EQ(quillmont.runProgram(QUILLMONT_WIDGET_BINARY, {"--render-page", "calendar", picture.string()}).exitCode, 2);
  EXPECT_EQ(quillmont.runProgram(QUILLMONT_WIDGET_BINARY, {"--render-page", "history", picture.string(), "--size", "large"})
                .exitCode,
            2);
}

}  // namespace
}  // namespace quillmont
