#include "widget/TimeBankProvider.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "core/persistence/AppConstants.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont {
namespace {

using Minutes = std::array<std::int64_t, 4>;

// A scratch data home whose process may use the application group, in UTC.
class TimeBankProviderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-provider-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    scratch = pattern;
    std::ofstream(scratch / "entitlements.json") << R"({"com.apple.developer.team-identifier":"QM1",
        "com.apple.security.application-groups":["group.io.quillmont.ledger"]})";
    setenv("QUILLMONT_HOME", (scratch / "home").c_str(), 1);
    setenv("QUILLMONT_ENTITLEMENTS", (scratch / "entitlements.json").c_str(), 1);
    if (const char* zone = std::getenv("TZ")) previousZone = zone;
    useZone("UTC");
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    previousZone ? setenv("TZ", previousZone->c_str(), 1) : unsetenv("TZ");
    tzset();
    std::filesystem::remove_all(scratch);
  }
  static void useZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  // Where the application leaves the snapshot for the widget.
  void store(const WidgetSnapshot& snapshot) const {
    const UserDefaults shared(scratch / "home" / "group.io.quillmont.ledger" / "Preferences");
    ASSERT_TRUE(shared.setData(snapshot.encodedJSON(), AppConstants::widgetSnapshotKey));
  }
  Timeline<TimeBankTimelineEntry> timeline() const {
    std::vector<Timeline<TimeBankTimelineEntry>> answers;
    provider.getTimeline({}, [&](Timeline<TimeBankTimelineEntry> answer) { answers.push_back(std::move(answer)); });
    EXPECT_EQ(answers.size(), 1u);
    return answers.empty() ? Timeline<TimeBankTimelineEntry>{} : answers.front();
  }
  std::vector<TimeBankTimelineEntry> snapshotEntries(TimelineProviderContext context) const {
    std::vector<TimeBankTimelineEntry> answers;
    provider.getSnapshot(context, [&](TimeBankTimelineEntry answer) { answers.push_back(std::move(answer)); });
    return answers;
  }

  std::filesystem::path scratch;
  std::optional<std::string> previousZone;
  const TimeBankProvider provider{};
  const Calendar berlin = *Calendar::make("Europe/Berlin");
  const Date today = *Calendar::make("UTC")->date(2026, 5, 12);
  const Date now = today + 14 * 3600.0;
};

TEST_F(TimeBankProviderTest, NothingStoredShowsABankNotSetUpUntilMidnight) {
  const Date::ScopedClock clock(now);
  const auto answer = timeline();
  ASSERT_EQ(answer.entries.size(), 1u);
  EXPECT_EQ(answer.entries[0], (TimeBankTimelineEntry{now, WidgetSnapshot::empty()}));
  EXPECT_EQ(answer.policy, TimelineReloadPolicy::after(today + 86400));
}

TEST_F(TimeBankProviderTest, ASnapshotFromYesterdayKeepsOnlyItsBalance) {
  const WidgetSnapshot yesterday(16200, 5400, 1800, std::nullopt, Minutes{5, 10, 20, 30}, today - 3600, true);
  store(yesterday);
  const Date::ScopedClock clock(now);
  WidgetSnapshot shown = yesterday;
  shown.todayWorkedSeconds = 0;
  shown.todayExpectedSeconds = 0;
  EXPECT_EQ(timeline().entries.at(0), (TimeBankTimelineEntry{now, shown}));

  const WidgetSnapshot fromToday(-600, 600, 1200, std::nullopt, Minutes{5, 10, 20, 30}, today + 60, true);
  store(fromToday);
  EXPECT_EQ(timeline().entries.at(0).snapshot, fromToday);  // read afresh on every request
}

TEST_F(TimeBankProviderTest, TheDayRuleAndTheReloadFollowTheProcessZone) {
  const Date lateEvening = today - 1.5 * 3600;  // 22:30 UTC, 00:30 of the 12th in Berlin
  store(WidgetSnapshot(3600, 5400, 0, std::nullopt, Minutes{15, 30, 60, 120}, lateEvening - 3600, true));
  useZone("Europe/Berlin");
  const Date::ScopedClock clock(lateEvening);
  const auto answer = timeline();
  EXPECT_EQ(answer.entries.at(0).snapshot.todayWorkedSeconds, 0);
  EXPECT_EQ(answer.entries.at(0).snapshot.balanceSeconds, 3600);
  EXPECT_EQ(answer.policy, TimelineReloadPolicy::after(*berlin.date(2026, 5, 13)));
}

TEST_F(TimeBankProviderTest, NextReloadIsTheNextLocalMidnight) {
  const Date midnight = *berlin.date(2026, 5, 11);
  EXPECT_EQ(TimeBankProvider::nextReload(midnight - 1, berlin), midnight);
  EXPECT_EQ(TimeBankProvider::nextReload(midnight, berlin), *berlin.date(2026, 5, 12));
  const Date spring = *berlin.date(2026, 3, 29);  // 23 hours
  EXPECT_EQ(TimeBankProvider::nextReload(spring + 10 * 3600.0, berlin), *berlin.date(2026, 3, 30));
  EXPECT_EQ(TimeBankProvider::nextReload(spring, berlin) - spring, 23 * 3600.0);
  const Date autumn = *berlin.date(2026, 10, 25);  // 25 hours
  EXPECT_EQ(TimeBankProvider::nextReload(autumn + 24.5 * 3600.0, berlin) - autumn, 25 * 3600.0);
  // An instant the calendar cannot place reloads six hours on.
  const Date farAway = Date::fromTimeIntervalSince1970(2e14);
  EXPECT_EQ(TimeBankProvider::nextReload(farAway, berlin), farAway + 6 * 3600.0);
}

// On 2018-11-04 São Paulo's clocks jumped from 00:00 to 01:00, so that day
// started at 01:00; the day after it starts at midnight again.
TEST_F(TimeBankProviderTest, AfterADayWithoutMidnightTheReloadIsStillAtMidnight) {
  const Calendar saoPaulo = *Calendar::make("America/Sao_Paulo");
  const Date skipped = *saoPaulo.date(2018, 11, 4);
  const Date nextMidnight = *saoPaulo.date(2018, 11, 5);
  const auto seconds1970 = [](Date date) { return static_cast<std::int64_t>(date.timeIntervalSince1970()); };
  ASSERT_EQ(seconds1970(skipped), 1541300400);       // 01:00 local, 03:00 UTC
  ASSERT_EQ(seconds1970(nextMidnight), 1541383200);  // 00:00 local, 02:00 UTC
  EXPECT_EQ(seconds1970(TimeBankProvider::nextReload(skipped - 12 * 3600.0, saoPaulo)), seconds1970(skipped));
  EXPECT_EQ(seconds1970(TimeBankProvider::nextReload(skipped + 12 * 3600.0, saoPaulo)), seconds1970(nextMidnight));
}

TEST_F(TimeBankProviderTest, PlaceholderShowsTheSampleWhateverIsStored) {
  store(WidgetSnapshot(-60, 0, 60, std::nullopt, Minutes{5, 5, 5, 5}, today, false));
  const Date::ScopedClock clock(now);
  const auto entry = provider.placeholder({WidgetFamily::systemMedium, false});
  EXPECT_EQ(entry.date, now);
  EXPECT_EQ(entry.snapshot, WidgetSnapshot::placeholder());
  EXPECT_EQ(entry.snapshot.balanceSeconds, 16200);
}

TEST_F(TimeBankProviderTest, SnapshotIsTheStoredOneAlsoForAPreview) {
  const WidgetSnapshot stored(-5400, 1800, 3600, Date(today + 60), Minutes{15, 30, 60, 120}, today + 120, true);
  store(stored);
  const Date::ScopedClock clock(now);
  const std::vector<TimeBankTimelineEntry> expected{{now, stored}};
  EXPECT_EQ(snapshotEntries({WidgetFamily::systemSmall, false}), expected);
  EXPECT_EQ(snapshotEntries({WidgetFamily::systemMedium, true}), expected);
}

}  // namespace
}  // namespace quillmont
