#include "widget/AdjustTimeBankIntent.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/UserDefaults.h"
#include "platform/widgets/WidgetCenter.h"

namespace quillmont {
namespace {

constexpr const char* invalidAmount = "Choose a nonzero amount up to 24 hours.";
constexpr const char* added = "Time added to your bank.";
constexpr const char* subtracted = "Time subtracted from your bank.";

TEST(AdjustTimeBankIntent, DescribesItself) {
  const AdjustTimeBankIntent intent;
  EXPECT_EQ(intent.minutes, 30);
  EXPECT_EQ(intent.title(), "Adjust time bank");
  EXPECT_EQ(intent.parameterSummary(), "Adjust time bank by 30 minutes");
  EXPECT_EQ(AdjustTimeBankIntent(90).parameterSummary(), "Adjust time bank by 90 minutes");
  EXPECT_EQ(intent.parameters(),
            (std::vector<IntentParameterMetadata>{{"Minutes", IntentParameterMetadata::Control::stepper}}));
}

// A scratch data home whose process may use the application group, so the
// store is <home>/group.io.quillmont.ledger/Quillmont.store; UTC, fixed clock.
class AdjustTimeBankIntentTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-adjust-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    scratch = pattern;
    entitle(R"({"com.apple.developer.team-identifier":"QM1",
                "com.apple.security.application-groups":["group.io.quillmont.ledger"]})");
    setenv("QUILLMONT_HOME", (scratch / "home").c_str(), 1);
    setenv("QUILLMONT_ENTITLEMENTS", (scratch / "entitlements.json").c_str(), 1);
    if (const char* zone = std::getenv("TZ")) previousZone = zone;
    setenv("TZ", "UTC", 1);
    tzset();
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    previousZone ? setenv("TZ", previousZone->c_str(), 1) : unsetenv("TZ");
    tzset();
    std::filesystem::remove_all(scratch);
  }
  void entitle(const char* json) const { std::ofstream(scratch / "entitlements.json") << json; }

  // A bank set up as the application does it: settings saved, ledger begun.
  void setUpBank(std::int64_t startingMinutes, bool useAppGroup = true) const {
    ModelContext context(QuillmontPersistence::makeContainer(false, false, useAppGroup));
    context.insert(std::make_shared<TimeBankSettings>(UUID::random(), today, startingMinutes, defaultWeekdayMinutes,
                                                      std::vector<std::int64_t>{}, "", "[]", true, today));
    ManualLedgerMigration::beginLedger(context, today, false);
    context.save();
  }
  std::vector<std::shared_ptr<BalanceAdjustment>> bookings() const {
    ModelContext context(QuillmontPersistence::makeContainer(false, false, true));
    return context.fetch<BalanceAdjustment>({[](const BalanceAdjustment& adjustment) {
      return !ManualLedgerMigration::isCarryover(adjustment);
    }, {}});
  }
  WidgetSnapshot sharedSnapshot() const { return WidgetSnapshotStore::load(UserDefaults(group() / "Preferences")); }
  std::filesystem::path group() const { return scratch / "home" / "group.io.quillmont.ledger"; }
  // Every file below the group folder with its bytes.
  std::map<std::string, std::string> groupFiles() const {
    std::map<std::string, std::string> files;
    for (const auto& item : std::filesystem::recursive_directory_iterator(group())) {
      std::ostringstream bytes;
      if (item.is_regular_file()) bytes << std::ifstream(item.path(), std::ios::binary).rdbuf();
      files[item.path().string()] = bytes.str();
    }
    return files;
  }

  std::filesystem::path scratch;
  std::optional<std::string> previousZone;
  const Date today = *Calendar::make("UTC")->date(2026, 5, 12);
  const Date now = today + 14 * 3600.0;
  const Date::ScopedClock clock{now};
};

TEST_F(AdjustTimeBankIntentTest, AnAmountOutOfRangeTouchesNothing) {
  for (const std::int64_t minutes : {0, 1441, -1441}) {
    EXPECT_EQ(AdjustTimeBankIntent(minutes).perform().dialog, invalidAmount) << minutes;
  }
  EXPECT_FALSE(std::filesystem::exists(scratch / "home"));  // not even a store was made

  setUpBank(0);
  ASSERT_TRUE(UserDefaults(group() / "Preferences").setData("previous", "widgetSnapshot"));
  const auto before = groupFiles();
  ASSERT_TRUE(before.count((group() / "Quillmont.store").string()));
  for (const std::int64_t minutes : {0, 1441, -1441}) AdjustTimeBankIntent(minutes).perform();
  EXPECT_EQ(groupFiles(), before);
  EXPECT_EQ(WidgetCenter::generation(), 0u);
}

TEST_F(AdjustTimeBankIntentTest, TwentyFourHoursEitherWayAreBooked) {
  setUpBank(0);
  EXPECT_EQ(AdjustTimeBankIntent(1440).perform().dialog, added);
  EXPECT_EQ(AdjustTimeBankIntent(-1440).perform().dialog, subtracted);
  std::vector<std::int64_t> booked;
  for (const auto& adjustment : bookings()) booked.push_back(adjustment->minutes());
  std::sort(booked.begin(), booked.end());
  EXPECT_EQ(booked, (std::vector<std::int64_t>{-1440, 1440}));
}

TEST_F(AdjustTimeBankIntentTest, ABankNotSetUpBooksNothingButRefreshesTheWidget) {
  EXPECT_EQ(AdjustTimeBankIntent(60).perform().dialog, "Open Quillmont and finish setup before changing your time bank.");
  EXPECT_TRUE(std::filesystem::exists(group() / "Quillmont.store"));
  EXPECT_TRUE(bookings().empty());
  const auto stored = UserDefaults(group() / "Preferences").data("widgetSnapshot");
  ASSERT_TRUE(stored);
  EXPECT_EQ(WidgetSnapshot::decoded(*stored),
            WidgetSnapshot(0, 0, 0, std::nullopt, std::array<std::int64_t, 4>{15, 30, 60, 120}, now, false));
  EXPECT_EQ(WidgetCenter::generation(), 1u);
}

TEST_F(AdjustTimeBankIntentTest, APressBooksManualMinutesAndRefreshesTheSnapshot) {
  setUpBank(90);
  EXPECT_EQ(AdjustTimeBankIntent(60).perform().dialog, added);
  const auto booked = bookings();
  ASSERT_EQ(booked.size(), 1u);
  EXPECT_EQ(booked[0]->minutes(), 60);
  EXPECT_EQ(booked[0]->kindRawValue(), "manual");
  EXPECT_EQ(booked[0]->note(), "");
  EXPECT_EQ(booked[0]->date(), now);
  auto snapshot = sharedSnapshot();
  EXPECT_TRUE(snapshot.isConfigured);
  EXPECT_EQ(snapshot.balanceSeconds, 90 * 60 + 3600);
  EXPECT_EQ(snapshot.todayWorkedSeconds, 3600);  // "+1:00 today"
  EXPECT_EQ(snapshot.todayExpectedSeconds, 0);
  EXPECT_EQ(snapshot.updatedAt, now);
  EXPECT_EQ(WidgetCenter::generation(), 1u);

  EXPECT_EQ(AdjustTimeBankIntent(-60).perform().dialog, subtracted);
  EXPECT_EQ(bookings().size(), 2u);
  snapshot = sharedSnapshot();
  EXPECT_EQ(snapshot.balanceSeconds, 90 * 60);
  EXPECT_EQ(snapshot.todayExpectedSeconds, 3600);
  EXPECT_EQ(WidgetCenter::generation(), 2u);
}

TEST_F(AdjustTimeBankIntentTest, WithoutTheGroupTheProcessOwnStoreAndPreferencesAreUsed) {
  entitle(R"({"com.apple.developer.team-identifier":"QM1"})");
  setUpBank(0, false);
  EXPECT_EQ(AdjustTimeBankIntent(-30).perform().dialog, subtracted);
  EXPECT_FALSE(std::filesystem::exists(group()));
  EXPECT_EQ(WidgetSnapshotStore::load(UserDefaults::standard()).balanceSeconds, -1800);
}

}  // namespace
}  // namespace quillmont
