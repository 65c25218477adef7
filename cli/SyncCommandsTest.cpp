// Black-box tests of sync through a shared folder: two or three data homes
// (machines) and one folder, as a sync service would keep it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <regex>

#include "cli/Display.h"
#include "cli/SyncFolder.h"
#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing::CommandResult;
using testing::CommandRunner;
using testing::StoreProbe;

// The short identifier a command prints: "(id 57432635)" or "work 96DF88C8".
std::string printedIdentifier(const CommandResult& result) {
  std::smatch match;
  const std::string text = result.out + result.err;
  EXPECT_TRUE(std::regex_search(text, match, std::regex("([0-9A-F]{8})"))) << text;
  return match.size() > 1 ? match[1].str() : std::string();
}

class SyncCommandsTest : public ::testing::Test {
 protected:
  CommandRunner office, laptop, tablet;
  std::filesystem::path folder = office.home() / "shared";

  void SetUp() override {
    ASSERT_EQ(office.run({"sync", "setup", folder.string(), "--name", "office"}).exitCode, 0);
    ASSERT_EQ(laptop.run({"sync", "setup", folder.string(), "--name", "laptop"}).exitCode, 0);
    ASSERT_EQ(tablet.run({"sync", "setup", folder.string(), "--name", "tablet"}).exitCode, 0);
  }

  CommandResult sync(const CommandRunner& machine) {
    auto result = machine.run({"sync"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return result;
  }
  // Everyone exchanges until a whole round writes nothing new: copies of
  // the ledger settle within a few rounds (the set-up records of three
  // machines become one).
  void syncAll() {
    for (int round = 0; round < 4; ++round) {
      bool quiet = true;
      for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
        quiet = sync(*machine).out.find("Nothing new to write.") != std::string::npos && quiet;
      }
      if (quiet) return;
    }
    ADD_FAILURE() << "the machines did not settle within four rounds";
  }

  template <class Model>
  static std::vector<std::shared_ptr<Model>> records(const CommandRunner& machine) {
    StoreProbe store(machine);
    return store.context().fetch<Model>();
  }
  static std::string overview(const CommandRunner& machine) { return machine.run({}).out; }

  void expectOneLedger() {
    const std::string balance = overview(office);
    EXPECT_EQ(overview(laptop), balance);
    EXPECT_EQ(overview(tablet), balance);
  }
};

TEST_F(SyncCommandsTest, ABookingAnEditADeletionAndAScheduleArriveEverywhere) {
  const std::string booking = printedIdentifier(office.run({"book", "90", "--note", "dentist"}));
  const std::string work = printedIdentifier(
      office.run({"work", "add", "--start", "2026-11-20 08:00", "--end", "2026-11-20 12:00", "--note", "draft"}));
  ASSERT_EQ(office.run({"schedule", "add", "2026-11-02", "6h,6h,6h,6h,6h,0,0"}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&laptop, &tablet}) {
    ASSERT_EQ(records<BalanceAdjustment>(*machine).size(), 1u);
    EXPECT_EQ(records<BalanceAdjustment>(*machine)[0]->note(), "dentist");
    EXPECT_EQ(records<WorkSchedule>(*machine).size(), 1u);
  }

  ASSERT_EQ(laptop.run({"work", "edit", work, "--note", "final"}).exitCode, 0);
  ASSERT_EQ(tablet.run({"bookings", "delete", booking}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    EXPECT_TRUE(records<BalanceAdjustment>(*machine).empty()) << "the deletion travels";
    const auto entries = records<WorkEntry>(*machine);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]->note(), "final");
  }
  expectOneLedger();
}

TEST_F(SyncCommandsTest, ConcurrentEditsAndADeletionResolveToTheLaterChangeEverywhere) {
  const std::string first = printedIdentifier(
      office.run({"work", "add", "--start", "2026-11-20 08:00", "--end", "2026-11-20 12:00", "--note", "one"}));
  const std::string second = printedIdentifier(
      office.run({"work", "add", "--start", "2026-11-21 08:00", "--end", "2026-11-21 12:00", "--note", "two"}));
  syncAll();

  // Edits on two machines before either exchanges: the later wins.
  ASSERT_EQ(office.run({"work", "edit", first, "--note", "office's"}).exitCode, 0);
  ASSERT_EQ(laptop.run({"work", "edit", first, "--note", "laptop's"}).exitCode, 0);
  // A deletion, then a later edit elsewhere: the edit wins.
  ASSERT_EQ(tablet.run({"work", "delete", second}).exitCode, 0);
  ASSERT_EQ(office.run({"work", "edit", second, "--note", "kept"}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    const auto entries = records<WorkEntry>(*machine);
    ASSERT_EQ(entries.size(), 2u);
    std::set<std::string> notes;
    for (const auto& entry : entries) notes.insert(entry->note());
    EXPECT_EQ(notes, (std::set<std::string>{"laptop's", "kept"}));
  }

  // An edit, then a later deletion elsewhere: the deletion wins.
  ASSERT_EQ(laptop.run({"work", "edit", second, "--note", "edited"}).exitCode, 0);
  sync(laptop);
  ASSERT_EQ(office.run({"work", "delete", second}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    EXPECT_EQ(records<WorkEntry>(*machine).size(), 1u);
  }
  expectOneLedger();
}

TEST_F(SyncCommandsTest, TwoRunningTimersEndAsOne) {
  const Display display(StoreProbe::calendar());
  const std::string earlier = display.dateTime(Date::now() - 7200);
  ASSERT_EQ(office.run({"timer", "start", "--at", earlier}).exitCode, 0);
  ASSERT_EQ(laptop.run({"timer", "start", "--at", display.dateTime(Date::now() - 3600)}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    const auto entries = records<WorkEntry>(*machine);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_TRUE(entries[0]->isRunning());
    EXPECT_THAT(machine->run({"timer", "status"}).out, HasSubstr(earlier.substr(11)));
  }
  ASSERT_EQ(laptop.run({"timer", "stop"}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    EXPECT_THAT(machine->run({"timer", "status"}).out, HasSubstr("not running"));
  }
}

TEST_F(SyncCommandsTest, ADamagedOrHalfCopiedFileChangesNothingAndIsReported) {
  office.run({"book", "30"});
  sync(office);
  const auto officeFiles = SyncFolder::list(folder);
  std::filesystem::path ledger;
  for (const auto& [id, files] : officeFiles.devices) {
    if (files.ledger && records<BalanceAdjustment>(office).size() == 1) {
      std::ifstream in(*files.ledger);
      const std::string text((std::istreambuf_iterator<char>(in)), {});
      if (text.find("\"minutes\" : 30") != std::string::npos) ledger = *files.ledger;
    }
  }
  ASSERT_FALSE(ledger.empty());
  {
    std::ifstream in(ledger);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    std::ofstream(ledger, std::ios::trunc) << text.substr(0, text.size() / 2);  // half copied
  }
  std::ofstream(folder / (ledger.filename().string() + ".sync-conflict-20261123-101010-ABCDEFG")) << "{}";
  std::ofstream(folder / ".syncthing.x.ledger.json.tmp") << "{";

  const std::string before = overview(laptop);
  const auto result = sync(laptop);
  EXPECT_THAT(result.out, HasSubstr("Skipped office"));
  EXPECT_THAT(result.out, HasSubstr("is not a readable ledger"));
  EXPECT_EQ(overview(laptop), before);
  const auto status = laptop.run({"sync", "status"});
  EXPECT_THAT(status.out, HasSubstr("is not a readable ledger"));
  EXPECT_THAT(status.out, HasSubstr("a conflict copy left by the sync service"));
  EXPECT_THAT(status.out, HasSubstr("being copied by the sync service"));

  // Once the whole file arrives, it is read.
  office.run({"book", "15"});
  sync(office);
  EXPECT_THAT(sync(laptop).out, HasSubstr("Merged office"));
  EXPECT_EQ(records<BalanceAdjustment>(laptop).size(), 2u);
}

TEST_F(SyncCommandsTest, AnExchangeKilledHalfWayLeavesStoreAndFolderUsable) {
  for (int i = 0; i < 40; ++i) office.run({"book", std::to_string(i + 1), "--note", std::to_string(i) + " of 40"});
  for (int delay : {0, 2, 5, 10, 20, 40}) {
    auto running = office.start({"sync"});
    ::usleep(static_cast<useconds_t>(delay) * 1000);
    running->stop(SIGKILL);
    ASSERT_EQ(office.run({"doctor"}).exitCode, 0);
  }
  sync(office);
  const auto result = sync(laptop);
  EXPECT_THAT(result.out, HasSubstr("Merged office"));
  EXPECT_THAT(result.out, Not(HasSubstr("Skipped")));
  EXPECT_EQ(records<BalanceAdjustment>(laptop).size(), 40u);
}

TEST_F(SyncCommandsTest, WatchingMergesAnotherDevicesChangeWithoutBeingAsked) {
  auto watching = laptop.start({"sync", "--watch"});
  ASSERT_TRUE(watching->readLine());  // "Watching ..."
  office.run({"book", "45", "--note", "from the office"});
  sync(office);
  // The office writes two files one after the other: an exchange may see
  // the first alone, and the next one the rest.
  bool merged = false;
  while (auto line = watching->readLine(15'000)) {
    if (line->find("Merged office") != std::string::npos && records<BalanceAdjustment>(laptop).size() == 1) {
      merged = true;
      break;
    }
  }
  ASSERT_TRUE(merged);
  // A booking made here is written out without being asked.
  laptop.run({"book", "10"});
  bool wrote = false;
  while (auto line = watching->readLine(15'000)) {
    if (line->find("Wrote this machine's ledger") != std::string::npos) {
      wrote = true;
      break;
    }
  }
  EXPECT_TRUE(wrote);

  // A folder that goes away (a share unmounted) ends the watch with a
  // failure, for the service manager to start it again later. The folder is
  // moved away in one step, as an unmount does: removing it file by file
  // races with the watch, which may still be writing its own files.
  const auto away = folder.string() + ".unmounted";
  std::filesystem::rename(folder, away);
  while (watching->readLine(15'000)) {
  }
  EXPECT_EQ(watching->stop(SIGTERM), 1);
  std::filesystem::remove_all(away);
}

TEST(SyncCommands, WithoutSetUpSaysHowToSetItUp) {
  CommandRunner machine;
  const auto result = machine.run({"sync"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("quillmont sync setup DIR"));
}

}  // namespace
}  // namespace quillmont
