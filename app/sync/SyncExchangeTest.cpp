// Sync between two or three data homes (machines) in one process and one
// shared folder, as a sync service would keep it: set-up, exchanges, the
// files a folder may hold, status and watching.
#include "app/sync/SyncExchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <optional>

#include "app/session/StoreSession.h"
#include "app/sync/SyncFolder.h"
#include "app/sync/SyncSetup.h"
#include "app/sync/SyncState.h"
#include "app/sync/SyncStatus.h"
#include "app/sync/SyncWatch.h"
#include "app/testing/TemporaryHome.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/JsonReader.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryHome;

const Date now = Date::fromTimeIntervalSince1970(1'780'272'000);

class SyncExchangeTest : public ::testing::Test {
 protected:
  Date::ScopedClock clock{now};
  TemporaryHome office, laptop;
  std::filesystem::path folder = office.folder() / "shared";

  static SyncSettings::Configuration setUp(const TemporaryHome& machine, const std::filesystem::path& folder,
                                           const std::string& name,
                                           SyncSetup::SettingsChoice choice = SyncSetup::SettingsChoice::undecided) {
    machine.use();
    return SyncSetup::setup(SyncSettings::preferences(), {folder.string(), name, choice}).configuration;
  }
  static SyncExchange::Result exchange(const TemporaryHome& machine) {
    machine.use();
    const UserDefaults defaults = SyncSettings::preferences();
    return SyncExchange::exchange(defaults, SyncSettings::requiredConfiguration(defaults));
  }
  static std::size_t bookings(const TemporaryHome& machine) {
    machine.use();
    StoreSession session;
    return session.context().fetch<BalanceAdjustment>().size();
  }
  static void book(const TemporaryHome& machine, std::int64_t minutes) {
    machine.use();
    StoreSession session;
    session.context().insert(std::make_shared<BalanceAdjustment>(UUID::random(), now, minutes, "",
                                                                 BalanceAdjustmentKind::manual, now, now));
    session.context().save();
  }
  // Files of a machine that never was, written straight into the folder.
  void writeStranger(const std::string& ledger) const {
    std::ofstream(folder / SyncFolder::ledgerFileName(*UUID::parse("0E1D0B5A-0000-4000-8000-000000000001"))) << ledger;
  }
};

TEST_F(SyncExchangeTest, ABookingTravelsOnceAndAQuietExchangeSaysSo) {
  const auto officeSetup = setUp(office, folder, "office");
  setUp(laptop, folder, "laptop");
  book(office, 30);
  const auto sent = exchange(office);
  EXPECT_TRUE(sent.wroteOwn);
  EXPECT_EQ(sent.ownLedgerFile, SyncFolder::ledgerFileName(officeSetup.device));

  const auto received = exchange(laptop);
  ASSERT_EQ(received.merged.size(), 1u);
  EXPECT_EQ(received.merged[0].device, officeSetup.device);
  EXPECT_THAT(received.merged[0].label, HasSubstr("office ("));
  EXPECT_GE(received.merged[0].counts.inserted, 1);
  EXPECT_THAT(received.report.front(), HasSubstr("Merged office ("));
  EXPECT_EQ(bookings(laptop), 1u);

  // Nothing changed anywhere since: nothing is read or written.
  exchange(office);
  const auto quiet = exchange(laptop);
  exchange(office);
  const auto quieter = exchange(laptop);
  EXPECT_FALSE(quieter.readAny);
  EXPECT_FALSE(quieter.wroteOwn);
  EXPECT_EQ(quieter.report, (std::vector<std::string>{"Nothing new from other devices.", "Nothing new to write."}));
  (void)quiet;
}

TEST_F(SyncExchangeTest, ADamagedLedgerIsSkippedWithItsReasonAndChangesNothing) {
  setUp(office, folder, "office");
  writeStranger("{\"this is\": \"no ledger\"");
  const auto result = exchange(office);
  EXPECT_TRUE(result.merged.empty());
  ASSERT_EQ(result.skipped.size(), 1u);
  EXPECT_THAT(result.skipped[0].reason, HasSubstr("is not a readable ledger"));
  EXPECT_THAT(result.report.front(), HasSubstr("nothing was changed from it."));
  EXPECT_EQ(bookings(office), 0u);

  const auto status = SyncStatus::status(SyncSettings::preferences());
  ASSERT_EQ(status.devices.size(), 1u);
  EXPECT_TRUE(status.devices[0].read);
  EXPECT_FALSE(status.devices[0].changedSince);
  EXPECT_EQ(status.devices[0].problem, result.skipped[0].reason);
  EXPECT_EQ(status.lastReport, result.report);
  const auto overview = SyncStatus::overview(SyncSettings::preferences());
  ASSERT_TRUE(overview.has_value());
  EXPECT_EQ(overview->leftAside, 1u);
  EXPECT_EQ(overview->lastExchangeAt, now);

  // A file that changes is read again; one that does not is not.
  EXPECT_TRUE(exchange(office).skipped.empty());
  writeStranger("[]");
  EXPECT_EQ(exchange(office).skipped.size(), 1u);
}

TEST_F(SyncExchangeTest, WithoutSetUpNothingIsKnownAndAMissingFolderIsRefused) {
  // Each refusal says what to do: set sync up, or choose another folder.
  const auto refused = [](const std::function<void()>& action) -> std::optional<Refusal> {
    try {
      action();
    } catch (const Refusal& refusal) {
      return refusal;
    }
    return std::nullopt;
  };
  EXPECT_FALSE(SyncStatus::overview(SyncSettings::preferences()).has_value());
  const auto notSetUp = refused([] { SyncStatus::status(SyncSettings::preferences()); });
  ASSERT_TRUE(notSetUp);
  EXPECT_STREQ(notSetUp->what(), "sync is not set up on this machine");
  EXPECT_EQ(notSetUp->remedy().kind, Remedy::Kind::setUpSync);

  setUp(office, folder, "office");
  std::filesystem::remove_all(folder);
  EXPECT_FALSE(SyncStatus::status(SyncSettings::preferences()).folderPresent);
  const auto missing = refused([&] { exchange(office); });
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->what(), "the sync folder " + folder.string() + " is missing (is the drive mounted?)");
  EXPECT_EQ(missing->remedy().kind, Remedy::Kind::chooseSyncFolder);
}

TEST_F(SyncExchangeTest, OtherSettingsInTheFolderWaitForAChoiceAndAdoptingTakesThem) {
  // The starting balance as the ledger keeps it once set up.
  const auto setUpLedger = [](const TemporaryHome& machine, std::int64_t balance) {
    machine.use();
    {
      StoreSession session;
      session.settings().setHasCompletedOnboarding(true);
      session.settings().setCalculationStartDate(now);
      session.settings().setStartingBalanceMinutes(balance);
      session.saveSettings();
    }
    StoreSession session;
    return session.settings().startingBalanceMinutes();
  };
  const std::int64_t officeBalance = setUpLedger(office, 120);
  setUp(office, folder, "office");
  exchange(office);
  const std::int64_t laptopBalance = setUpLedger(laptop, -60);
  try {
    setUp(laptop, folder / ".", "laptop");
    ADD_FAILURE() << "joined without a choice";
  } catch (const SyncSetup::SettingsConflict& conflict) {
    EXPECT_EQ(conflict.folder(), std::filesystem::canonical(folder));
    EXPECT_EQ(conflict.conflict().here.startingBalanceMinutes, laptopBalance);
    EXPECT_EQ(conflict.conflict().folder.startingBalanceMinutes, officeBalance);
    EXPECT_THAT(conflict.conflict().folderDeviceName, HasSubstr("office ("));
  }
  EXPECT_FALSE(SyncSettings::configuration(SyncSettings::preferences()).has_value());

  laptop.use();
  const auto adopted =
      SyncSetup::setup(SyncSettings::preferences(), {folder.string(), "laptop", SyncSetup::SettingsChoice::adopt});
  EXPECT_EQ(adopted.settled, SyncSetup::SettingsChoice::adopt);
  StoreSession session;
  EXPECT_EQ(session.settings().startingBalanceMinutes(), officeBalance);
  // Setting up again with the same folder is no first meeting.
  EXPECT_FALSE(SyncSetup::setup(SyncSettings::preferences(), {folder.string(), "", {}}).settled.has_value());
  EXPECT_EQ(SyncSettings::requiredConfiguration(SyncSettings::preferences()).name, "laptop");
}

TEST_F(SyncExchangeTest, WatchingExchangesAtOnceAndAgainWhenAnotherDevicesFileArrives) {
  setUp(office, folder, "office");
  std::vector<SyncExchange::Result> results;
  bool watching = false;
  SyncWatch::Callbacks callbacks;
  callbacks.watching = [&] { watching = true; };
  callbacks.exchanged = [&](const SyncExchange::Result& result) {
    EXPECT_TRUE(watching);
    results.push_back(result);
    if (results.size() == 1) writeStranger("not a ledger");
  };
  callbacks.failed = [](const std::exception& error) { ADD_FAILURE() << error.what(); };
  const auto started = std::chrono::steady_clock::now();
  SyncWatch::run(SyncSettings::preferences(), SyncSettings::requiredConfiguration(SyncSettings::preferences()),
                 callbacks, [&] {
                   return results.size() >= 2 || std::chrono::steady_clock::now() - started > std::chrono::seconds(10);
                 });
  ASSERT_EQ(results.size(), 2u);
  EXPECT_TRUE(results[0].skipped.empty());
  EXPECT_EQ(results[1].skipped.size(), 1u);
}

TEST_F(SyncExchangeTest, EverythingSetUpCreatesIsPrivateWhateverTheUmask) {
  const auto deep = office.folder() / "deep" / "shared";
  const mode_t previous = ::umask(0);
  setUp(office, deep, "here");
  exchange(office);
  ::umask(previous);
  for (const auto& created : {deep, deep.parent_path()}) {
    EXPECT_EQ(std::filesystem::status(created).permissions(), std::filesystem::perms::owner_all) << created;
  }
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(deep)) {
    ++files;
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
        << entry.path();
  }
  EXPECT_EQ(files, 2u);  // the ledger and the device file
}

// --- The folder's files and the remembered state ------------------------

TEST(SyncFolder, OnlyFilesNamedExactlyAsQuillmontNamesThemBelongToADevice) {
  const UUID device = *UUID::parse("0E1D0B5A-0000-4000-8000-000000000001");
  EXPECT_EQ(SyncFolder::deviceOfFileName(SyncFolder::ledgerFileName(device)), device);
  EXPECT_EQ(SyncFolder::deviceOfFileName(SyncFolder::deviceFileName(device)), device);
  EXPECT_FALSE(SyncFolder::deviceOfFileName("0e1d0b5a-0000-4000-8000-000000000001.ledger.json"));
  EXPECT_FALSE(SyncFolder::deviceOfFileName("0E1D0B5A-0000-4000-8000-000000000001.ledger.json.tmp"));

  EXPECT_EQ(SyncFolder::ignoredBecause("0E1D0B5A-0000-4000-8000-000000000001.sync-conflict-20260101.ledger.json"),
            "a conflict copy left by the sync service");
  EXPECT_EQ(SyncFolder::ignoredBecause(".syncthing.ledger.json.tmp"), "being copied by the sync service");
  EXPECT_EQ(SyncFolder::ignoredBecause(".0E1D0B5A-0000-4000-8000-000000000001.ledger.json.XYZ123"), "being written");
  EXPECT_EQ(SyncFolder::ignoredBecause("0e1d0b5a-0000-4000-8000-000000000001.ledger.json"),
            "not named exactly as Quillmont names its files");
  EXPECT_EQ(SyncFolder::ignoredBecause("holiday-photos.jpg"), "not a Quillmont file");
  EXPECT_FALSE(SyncFolder::ignoredBecause(".stfolder"));
}

TEST(SyncState, KeepsWhatItWroteAndAnythingElseReadsAsAnError) {
  SyncState state;
  state.ownSignature = "1.2.3.4/0@0/0|office";
  state.ownStamp = "10@1.5:384|";
  SyncState::Device& device = state.device(*UUID::parse("0E1D0B5A-0000-4000-8000-000000000001"));
  device.name = "laptop \"quoted\"";
  device.writtenAt = now;
  device.readAt = now;
  device.problem = "laptop.ledger.json was refused";
  EXPECT_EQ(&state.device(device.id), &device);  // known devices are found, not added again
  state.lastExchangeAt = now;
  state.lastReport = {"Nothing new to write."};
  EXPECT_EQ(SyncState::decodeJSON(state.encodedJSON()), state);
  EXPECT_EQ(SyncState::decodeJSON(SyncState().encodedJSON()), SyncState());
  EXPECT_THROW(SyncState::decodeJSON("{\"devices\": []}"), JsonDecodingError);
}

}  // namespace
}  // namespace quillmont
