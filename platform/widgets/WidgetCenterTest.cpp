#include "platform/widgets/WidgetCenter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/widgets/Timeline.h"
#include "platform/widgets/WidgetReloadWatcher.h"

namespace quillmont {
namespace {

using Wake = WidgetReloadWatcher::Wake;

class WidgetCenterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-widget-center-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    home = pattern;
    setenv("QUILLMONT_HOME", home.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    std::filesystem::remove_all(home);
  }
  std::filesystem::path home;
};

TEST_F(WidgetCenterTest, EachReloadAdvancesTheGeneration) {
  EXPECT_EQ(WidgetCenter::signalFile(), home / "widget-center" / "reload");
  EXPECT_EQ(WidgetCenter::generation(), 0u);
  for (int i = 0; i < 3; ++i) WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(WidgetCenter::generation(), 3u);
  EXPECT_TRUE(std::filesystem::is_regular_file(WidgetCenter::signalFile()));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(WidgetCenter::signalFolder()), {}), 1);  // no temporaries

  // Written in place: the same file, not a new one renamed over it.
  const auto inode = [&] {
    struct stat status {};
    ::stat(WidgetCenter::signalFile().c_str(), &status);
    return status.st_ino;
  };
  const auto before = inode();
  WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(inode(), before);
  EXPECT_EQ(WidgetCenter::generation(), 4u);

  // A signal file without a number counts as none; the next reload starts
  // over, and a longer file loses its tail.
  std::ofstream(WidgetCenter::signalFile()) << "garbage\n";
  EXPECT_EQ(WidgetCenter::generation(), 0u);
  WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(WidgetCenter::generation(), 1u);
  std::ofstream(WidgetCenter::signalFile()) << "41 and a tail longer than any number\n";
  WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(WidgetCenter::generation(), 42u);
  std::ifstream file(WidgetCenter::signalFile());
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), "00000000000000000042");
}

TEST_F(WidgetCenterTest, RequestsSinceTheWatcherStartedWakeItAtOnce) {
  WidgetReloadWatcher watcher;
  EXPECT_TRUE(std::filesystem::is_directory(WidgetCenter::signalFolder()));
  EXPECT_FALSE(watcher.takeRequests());
  WidgetCenter::shared().reloadAllTimelines();
  WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(watcher.wait(std::nullopt), Wake::reloadRequested);
  // One wake consumed both requests.
  EXPECT_FALSE(watcher.takeRequests());
  EXPECT_EQ(watcher.wait(Date::now() - 60), Wake::reloadDue);

  // A request outranks an instant that has passed; other files are no request.
  WidgetCenter::shared().reloadAllTimelines();
  EXPECT_EQ(watcher.wait(Date::now() - 60), Wake::reloadRequested);
  std::ofstream(WidgetCenter::signalFolder() / "notes") << "not a request";
  std::filesystem::rename(WidgetCenter::signalFolder() / "notes", WidgetCenter::signalFolder() / "reload.old");
  EXPECT_FALSE(watcher.takeRequests());
}

TEST_F(WidgetCenterTest, ARequestFromAnotherThreadWakesAWaitWithoutInstant) {
  WidgetReloadWatcher watcher;
  std::thread requester([] { WidgetCenter::shared().reloadAllTimelines(); });
  const Wake wake = watcher.wait(std::nullopt);
  requester.join();
  EXPECT_EQ(wake, Wake::reloadRequested);
}

TEST_F(WidgetCenterTest, ARequestFromAnotherProcessWakesTheWatcher) {
  WidgetReloadWatcher watcher;
  const pid_t child = ::fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    WidgetCenter::shared().reloadAllTimelines();
    ::_exit(0);
  }
  const Wake wake = watcher.wait(Date::now() + 30);  // the instant only guards against waiting for ever
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(wake, Wake::reloadRequested);
  EXPECT_EQ(WidgetCenter::generation(), 1u);
}

TEST_F(WidgetCenterTest, WithoutRequestsTheWaitEndsAtTheInstant) {
  WidgetReloadWatcher watcher;
  EXPECT_EQ(watcher.wait(Date::now() - 3600), Wake::reloadDue);
  const Date until = Date::now() + 0.05;
  EXPECT_EQ(watcher.wait(until), Wake::reloadDue);
  EXPECT_GE(Date::now(), until);  // not before it
}

struct Entry {
  Date date;
};

TEST(Timeline, NextReloadFollowsThePolicy) {
  Timeline<Entry> timeline{{{Date(100)}, {Date(400)}, {Date(250)}}};
  EXPECT_EQ(timeline.nextReload(), Date(250));  // atEnd: the last entry, not the latest date
  timeline.policy = TimelineReloadPolicy::after(Date(9000));
  EXPECT_EQ(timeline.nextReload(), Date(9000));
  timeline.policy = TimelineReloadPolicy::never();
  EXPECT_EQ(timeline.nextReload(), std::nullopt);
  timeline.entries.clear();
  timeline.policy = TimelineReloadPolicy::atEnd();
  EXPECT_EQ(timeline.nextReload(), std::nullopt);
}

}  // namespace
}  // namespace quillmont
