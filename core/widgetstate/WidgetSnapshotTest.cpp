#include "core/widgetstate/WidgetSnapshot.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <vector>

#include "core/persistence/AppConstants.h"
#include "core/widgetstate/WidgetRefreshThrottle.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont {
namespace {

using Minutes = std::array<std::int64_t, 4>;
constexpr Minutes defaultActions{15, 30, 60, 120};
constexpr double infinity = std::numeric_limits<double>::infinity();

constexpr std::string_view example =
    R"({"balanceSeconds":16200,"todayWorkedSeconds":5400,"todayExpectedSeconds":1800,)"
    R"("quickActionMinutes":[15,30,60,120],"updatedAt":816523200,"isConfigured":true})";

// The four required keys, then whatever a case adds.
WidgetSnapshot decoded(std::string_view extra = "") {
  std::string text = R"({"balanceSeconds":-90.5,"todayWorkedSeconds":5400,"todayExpectedSeconds":1800,"updatedAt":816523200)";
  if (!extra.empty()) text += "," + std::string(extra);
  return WidgetSnapshot::decoded(text + "}");
}

WidgetSnapshot snapshot(double balance, double worked, double expected, Date updatedAt, bool configured = true) {
  return WidgetSnapshot(balance, worked, expected, std::nullopt, defaultActions, updatedAt, configured);
}

TEST(WidgetSnapshot, OptionalKeysTakeTheirDefaults) {
  const auto plain = decoded();
  EXPECT_EQ(plain, WidgetSnapshot(-90.5, 5400, 1800, std::nullopt, defaultActions, Date(816523200), true));
  EXPECT_FALSE(decoded(R"("isConfigured":false)").isConfigured);
  EXPECT_TRUE(decoded(R"("isConfigured":null)").isConfigured);
  EXPECT_EQ(decoded(R"("runningSince":null)"), plain);
  EXPECT_EQ(decoded(R"("runningSince":816520000.25)").runningSince, Date(816520000.25));
  EXPECT_EQ(decoded(R"("quickActionMinutes":null)").quickActionMinutes, defaultActions);
  EXPECT_EQ(decoded(R"("quickActionMinutes":[])").quickActionMinutes, defaultActions);
  // Normalised: 25 lies halfway and goes to 20; missing places keep their default, a fifth is dropped.
  EXPECT_EQ(decoded(R"("quickActionMinutes":[25])").quickActionMinutes, (Minutes{20, 30, 60, 120}));
  EXPECT_EQ(decoded(R"("quickActionMinutes":[1,9999,44,2e1,45])").quickActionMinutes, (Minutes{5, 480, 45, 20}));
  EXPECT_EQ(decoded(R"("comment":{"nested":[1,2]})"), plain);  // unknown keys are skipped
}

TEST(WidgetSnapshot, IncompleteOrMistypedDocumentsFailWhole) {
  const std::string full(example);
  for (const char* key : {"balanceSeconds", "todayWorkedSeconds", "todayExpectedSeconds", "updatedAt"}) {
    std::string without = full;
    const auto begin = without.find(std::string("\"") + key + "\"");
    without.erase(begin, without.find(',', begin) - begin + 1);
    EXPECT_THROW(WidgetSnapshot::decoded(without), JsonDecodingError) << without;
  }
  for (const char* mistyped : {R"("balanceSeconds":"1")", R"("todayWorkedSeconds":null)", R"("updatedAt":"0")",
                               R"("isConfigured":1)", R"("runningSince":"x")", R"("quickActionMinutes":15)",
                               R"("quickActionMinutes":[1.5])", R"("quickActionMinutes":["15"])"}) {
    EXPECT_THROW(decoded(mistyped), JsonDecodingError) << mistyped;  // a later key overrides a good one
  }
  for (const std::string& other : {std::string(), std::string("not json"), std::string("[]"), "[" + full + "]",
                                   std::string("null"), full + "{}", full + "x", std::string("\x89PNG\r\n\x1a\n", 8)}) {
    EXPECT_THROW(WidgetSnapshot::decoded(other), JsonDecodingError) << other;
  }
  for (std::size_t length = 0; length < full.size(); ++length) {
    EXPECT_THROW(WidgetSnapshot::decoded(full.substr(0, length)), JsonDecodingError) << full.substr(0, length);
  }
}

TEST(WidgetSnapshot, EncodesCompactlyAndReadsBackEqual) {
  const WidgetSnapshot sample = snapshot(16200, 5400, 1800, Date(816523200));
  EXPECT_EQ(sample.encodedJSON(), example);
  EXPECT_EQ(WidgetSnapshot::decoded(example), sample);

  const WidgetSnapshot running(-1234.5, 0.25, 86400, Date(816520000.125), Minutes{480, 5, 45, 90}, Date(-1e9), false);
  const std::string text = running.encodedJSON();
  EXPECT_NE(text.find(R"("runningSince":816520000.125,)"), std::string::npos) << text;
  EXPECT_EQ(WidgetSnapshot::decoded(text), running);
  EXPECT_THROW(snapshot(0, 0, 0, Date(infinity)).encodedJSON(), JsonEncodingError);
}

TEST(WidgetSnapshot, PlaceholderAndEmptyFigures) {
  const auto& placeholder = WidgetSnapshot::placeholder();
  EXPECT_EQ(placeholder, snapshot(16200, 5400, 1800, placeholder.updatedAt, true));
  const auto& empty = WidgetSnapshot::empty();
  EXPECT_EQ(empty, snapshot(0, 0, 0, empty.updatedAt, false));
}

TEST(WidgetSnapshot, TodaysFiguresLastUntilLocalMidnight) {
  const Calendar berlin = *Calendar::make("Europe/Berlin");
  const auto at = [&](int month, int day, double hours) { return *berlin.date(2026, month, day) + hours * 3600; };
  const auto kept = [&](Date updatedAt, Date shownAt) {
    const WidgetSnapshot stored(16200, 5400, 1800, Date(7), Minutes{5, 10, 20, 30}, updatedAt, true);
    const WidgetSnapshot shown = stored.displayed(shownAt, berlin);
    EXPECT_EQ(shown.balanceSeconds, 16200);
    EXPECT_EQ(shown.quickActionMinutes, stored.quickActionMinutes);
    EXPECT_EQ(shown.runningSince, stored.runningSince);
    EXPECT_EQ(shown.updatedAt, updatedAt);
    return shown.todayWorkedSeconds == 5400 && shown.todayExpectedSeconds == 1800 ? "kept"
           : shown.todayWorkedSeconds == 0 && shown.todayExpectedSeconds == 0    ? "zeroed"
                                                                                  : "mixed";
  };
  const Date lastSecond = at(5, 11, 0) - 1;
  EXPECT_STREQ(kept(at(5, 10, 0), lastSecond), "kept");
  EXPECT_STREQ(kept(lastSecond, at(5, 11, 0)), "zeroed");
  EXPECT_STREQ(kept(at(5, 11, 0), at(5, 11, 24) - 1), "kept");
  EXPECT_STREQ(kept(at(5, 10, 23.5), at(5, 11, 0.5)), "zeroed");  // the same day in UTC: Berlin decides
  EXPECT_STREQ(kept(at(5, 11, 0), lastSecond), "zeroed");          // a clock set back to the day before
  // 2026-03-29 has 23 hours.
  const Date end = *berlin.date(2026, 3, 30);
  ASSERT_EQ(end - at(3, 29, 0), 23 * 3600.0);
  EXPECT_STREQ(kept(at(3, 29, 0) - 1, at(3, 29, 0)), "zeroed");
  EXPECT_STREQ(kept(at(3, 29, 0), end - 1), "kept");
  EXPECT_STREQ(kept(end - 1, end), "zeroed");
}

TEST(WidgetRefreshThrottle, ClaimsOncePerIntervalAndAgainWhenTheClockGoesBack) {
  const Date t(1000);
  WidgetRefreshThrottle throttle;
  EXPECT_TRUE(throttle.claim(t, 300));
  EXPECT_FALSE(throttle.claim(t + 100, 300));
  EXPECT_TRUE(throttle.claim(t + 300, 300));   // a refused claim did not move the window
  EXPECT_TRUE(throttle.claim(t + 200, 300));   // the clock went back
  EXPECT_FALSE(throttle.claim(t + 250, 300));  // counted from t + 200 now
  WidgetRefreshThrottle unlimited;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(unlimited.claim(t, -60));
}

class WidgetSnapshotStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-snapshot-store-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    scratch = pattern;
    own = UserDefaults(scratch / "own");
    group = UserDefaults(scratch / "home" / "group.io.quillmont.ledger" / "Preferences");
    setenv("QUILLMONT_HOME", (scratch / "home").c_str(), 1);
    setenv("QUILLMONT_ENTITLEMENTS", (scratch / "entitlements.json").c_str(), 1);
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    std::filesystem::remove_all(scratch);
  }
  void entitle(std::string_view json) const { std::ofstream(scratch / "entitlements.json") << json; }
  std::string bytes(const UserDefaults& preferences) const {
    std::ostringstream text;
    text << std::ifstream(preferences.fileFor(AppConstants::widgetSnapshotKey), std::ios::binary).rdbuf();
    return text.str();
  }
  std::filesystem::path scratch;
  UserDefaults own{""};
  UserDefaults group{""};
  static constexpr const char* groupEntitlement = R"({"com.apple.developer.team-identifier":"QM1",
      "com.apple.security.application-groups":["group.io.quillmont.ledger"]})";
};

TEST_F(WidgetSnapshotStoreTest, GivenPreferencesAreTheOnlyOnesUsed) {
  entitle(groupEntitlement);
  EXPECT_EQ(WidgetSnapshotStore::load(own), WidgetSnapshot::empty());
  const auto stored = snapshot(-3600, 120, 60, Date(816523200.5), false);
  WidgetSnapshotStore::save(stored, own);
  EXPECT_EQ(WidgetSnapshotStore::load(own), stored);
  EXPECT_EQ(WidgetSnapshotStore::load(), WidgetSnapshot::empty());  // nothing in the shared suite
  WidgetSnapshotStore::save(snapshot(60, 0, 0, Date(1)));
  EXPECT_EQ(WidgetSnapshotStore::load(own), stored);
}

TEST_F(WidgetSnapshotStoreTest, UnusableEntriesLoadEmptyAndStayAsTheyAre) {
  const std::string full(example);
  for (const std::string& contents : {std::string("\x00\xff\x13\x37garbage\x80", 12), full.substr(0, full.size() / 2),
                                      full + full, std::string(R"({"balanceSeconds":"16200"})")}) {
    ASSERT_TRUE(own.setData(contents, AppConstants::widgetSnapshotKey));
    const std::string before = bytes(own);
    EXPECT_EQ(WidgetSnapshotStore::load(own), WidgetSnapshot::empty()) << contents;
    EXPECT_EQ(bytes(own), before);
  }
  ASSERT_TRUE(own.setString(full, AppConstants::widgetSnapshotKey));  // a whole document, but stored as text
  EXPECT_EQ(WidgetSnapshotStore::load(own), WidgetSnapshot::empty());
  EXPECT_EQ(own.string(AppConstants::widgetSnapshotKey), full);
}

TEST_F(WidgetSnapshotStoreTest, ANonFiniteSnapshotIsNotWritten) {
  const auto good = snapshot(16200, 5400, 1800, Date(100));
  WidgetSnapshotStore::save(good, own);
  WidgetSnapshotStore::save(snapshot(std::numeric_limits<double>::quiet_NaN(), 0, 0, Date(200)), own);
  WidgetSnapshotStore::save(snapshot(0, infinity, 0, Date(300)), own);
  EXPECT_EQ(WidgetSnapshotStore::load(own), good);
  WidgetSnapshotStore::save(snapshot(-infinity, 0, 0, Date(200)), group);
  EXPECT_FALSE(std::filesystem::exists(group.folder()));
}

TEST_F(WidgetSnapshotStoreTest, TheGroupSuiteWhenEntitledElseTheProcessOwnPreferences) {
  const auto stored = snapshot(7200, 3600, 0, Date(816523200));
  entitle(groupEntitlement);
  WidgetSnapshotStore::save(stored);
  EXPECT_EQ(WidgetSnapshot::decoded(group.data(AppConstants::widgetSnapshotKey).value_or("")), stored);
  EXPECT_EQ(WidgetSnapshotStore::load(), stored);
  EXPECT_EQ(UserDefaults::standard().data(AppConstants::widgetSnapshotKey), std::nullopt);
  ASSERT_TRUE(group.removeObject(AppConstants::widgetSnapshotKey));

  for (const char* entitlements :
       {"", R"({"com.apple.security.application-groups":["group.io.quillmont.ledger"]})",  // no team
        R"({"com.apple.developer.team-identifier":"QM1","com.apple.security.application-groups":["group.other"]})"}) {
    entitle(entitlements);
    WidgetSnapshotStore::save(stored);
    EXPECT_EQ(UserDefaults::standard().data(AppConstants::widgetSnapshotKey), stored.encodedJSON()) << entitlements;
    EXPECT_EQ(WidgetSnapshotStore::load(), stored);
    EXPECT_EQ(group.data(AppConstants::widgetSnapshotKey), std::nullopt);
    ASSERT_TRUE(UserDefaults::standard().removeObject(AppConstants::widgetSnapshotKey));
  }
}

}  // namespace
}  // namespace quillmont
