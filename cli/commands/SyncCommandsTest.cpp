// Black-box tests of sync through a shared folder: two or three data homes
// (machines) and one folder, as a sync service would keep it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <ctime>
#include <fstream>
#include <regex>

#include "app/text/Display.h"
#include "app/sync/SyncFolder.h"
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

// The files one machine wrote: its ledger and its device file.
SyncFolder::DeviceFiles filesOf(const std::filesystem::path& folder, const std::string& name) {
  for (const auto& [id, files] : SyncFolder::list(folder).devices) {
    if (files.device && testing::readFile(*files.device).find("\"name\":\"" + name + "\"") != std::string::npos) {
      return files;
    }
  }
  ADD_FAILURE() << "no files of " << name;
  return {};
}

constexpr const char* emptyLedger =
    R"({"balanceAdjustments":[],"exportedAt":0,"schedules":[],"schemaVersion":1,"settings":[],"workEntries":[]})";

// Files of a machine that never was, written straight into the folder.
void writeForeignDevice(const std::filesystem::path& folder, const std::string& id, const std::string& name,
                        const std::string& deletions, const std::string& ledger = emptyLedger) {
  std::ofstream(folder / (id + ".device.json"))
      << R"({"deletions":[)" << deletions << R"(],"device":")" << id << R"(","name":")" << name
      << R"(","writtenAt":0})";
  std::ofstream(folder / (id + ".ledger.json")) << ledger;
}

// --- Joining ------------------------------------------------------------

TEST(SyncJoining, TwoSetUpLedgersWithOtherSettingsWaitForThePersonsChoice) {
  CommandRunner office, laptop;
  const auto folder = office.home() / "shared";
  ASSERT_EQ(office.run({"setup", "--start", "2026-11-02", "--balance", "6h", "--week", "8h,8h,8h,8h,8h,0,0"}).exitCode, 0);
  ASSERT_EQ(laptop.run({"setup", "--start", "2026-10-01", "--balance", "-1:30", "--week", "7h,7h,7h,7h,7h,0,0"})
                .exitCode,
            0);
  laptop.run({"book", "30", "--note", "laptop's booking"});
  ASSERT_EQ(office.run({"sync", "setup", folder.string(), "--name", "office"}).exitCode, 0);

  // Nothing changes until the person chooses: both sides and both commands are shown.
  const std::string officeBefore = office.run({}).out;
  const std::string laptopBefore = laptop.run({}).out;
  const auto refused = laptop.run({"sync", "setup", folder.string(), "--name", "laptop"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.out, HasSubstr("office"));
  EXPECT_THAT(refused.out, HasSubstr("2026-10-01"));
  EXPECT_THAT(refused.out, HasSubstr("2026-11-02"));
  EXPECT_THAT(refused.out, HasSubstr("+6:00"));
  EXPECT_THAT(refused.out, HasSubstr("−1:00"));  // −1:30 and the booking of +0:30
  EXPECT_THAT(refused.out, HasSubstr("8:00,8:00"));
  EXPECT_THAT(refused.err, HasSubstr("sync setup " + folder.string() + " --name laptop --adopt"));
  EXPECT_THAT(refused.err, HasSubstr("sync setup " + folder.string() + " --name laptop --keep"));
  EXPECT_EQ(laptop.run({}).out, laptopBefore);
  EXPECT_EQ(laptop.run({"sync"}).exitCode, 1) << "not set up: the refused join kept nothing";
  EXPECT_EQ(office.run({"sync"}).exitCode, 0);
  EXPECT_EQ(office.run({}).out, officeBefore);

  // Adopting the folder's settings: the office keeps its settings, and both
  // machines hold both bookings on them.
  const auto adopted = laptop.run({"sync", "setup", folder.string(), "--name", "laptop", "--adopt"});
  ASSERT_EQ(adopted.exitCode, 0) << adopted.err;
  for (int round = 0; round < 2; ++round) {
    office.run({"sync"});
    laptop.run({"sync"});
  }
  for (const CommandRunner* machine : {&office, &laptop}) {
    EXPECT_THAT(machine->run({}).out, HasSubstr("+6:30"));
    EXPECT_THAT(machine->run({"settings"}).out, HasSubstr("2026-11-02"));
  }
}

TEST(SyncJoining, KeepingThisMachinesSettingsMakesThemWinEverywhere) {
  CommandRunner office, laptop;
  const auto folder = office.home() / "shared";
  ASSERT_EQ(office.run({"setup", "--start", "2026-11-02", "--balance", "6h"}).exitCode, 0);
  ASSERT_EQ(laptop.run({"setup", "--start", "2026-10-01", "--balance", "-1:30"}).exitCode, 0);
  ASSERT_EQ(office.run({"sync", "setup", folder.string(), "--name", "office"}).exitCode, 0);
  EXPECT_EQ(laptop.run({"sync", "setup", folder.string(), "--keep", "--adopt"}).exitCode, 2) << "one choice";
  ASSERT_EQ(laptop.run({"sync", "setup", folder.string(), "--name", "laptop", "--keep"}).exitCode, 0);
  for (int round = 0; round < 2; ++round) {
    office.run({"sync"});
    laptop.run({"sync"});
  }
  for (const CommandRunner* machine : {&office, &laptop}) {
    EXPECT_THAT(machine->run({}).out, HasSubstr("−1:30"));
  }
  // Once met, setting up again asks nothing.
  EXPECT_EQ(office.run({"sync", "setup", folder.string()}).exitCode, 0);
}

TEST_F(SyncCommandsTest, ATimerEndedByTheExchangeIsSaidAndItsNoteKept) {
  const Display display(StoreProbe::calendar());
  const std::string earlier = display.dateTime(Date::now() - 7200);
  const std::string later = display.dateTime(Date::now() - 3600);
  ASSERT_EQ(office.run({"timer", "start", "--at", earlier}).exitCode, 0);
  ASSERT_EQ(laptop.run({"timer", "start", "--at", later, "--note", "call the client"}).exitCode, 0);
  sync(office);
  const auto exchanged = sync(laptop);
  EXPECT_THAT(exchanged.out, HasSubstr("Ended the timer started " + later + " on this machine"));
  EXPECT_THAT(exchanged.out, HasSubstr("the timer started " + earlier + " on office runs on"));
  EXPECT_THAT(exchanged.out, HasSubstr("call the client"));
  EXPECT_THAT(laptop.run({"sync", "status"}).out, HasSubstr("Ended the timer started " + later));
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    const auto entries = records<WorkEntry>(*machine);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_TRUE(entries[0]->isRunning());
    EXPECT_EQ(entries[0]->note(), "call the client") << "the note went to the running timer";
  }
}

TEST_F(SyncCommandsTest, DoctorSpeaksOfTheFolderSync) {
  syncAll();
  const auto diagnosis = office.run({"doctor"});
  EXPECT_THAT(diagnosis.out, HasSubstr("Folder sync"));
  EXPECT_THAT(diagnosis.out, HasSubstr(std::filesystem::canonical(folder).string()));
  EXPECT_THAT(diagnosis.out, HasSubstr("laptop"));
  EXPECT_THAT(diagnosis.out, HasSubstr("tablet"));
  EXPECT_THAT(diagnosis.out, HasSubstr("last exchange"));
  CommandRunner alone;
  EXPECT_THAT(alone.run({"doctor"}).out, HasSubstr("not set up"));
}

// --- Faults and hostile files -------------------------------------------

TEST_F(SyncCommandsTest, AHugeOrDamagedFileOfOneMachineIsLeftAsideAndTheOthersExchange) {
  office.run({"book", "30"});
  tablet.run({"book", "15"});
  syncAll();
  // The office's ledger becomes a terabyte of holes; the tablet books on.
  const auto officeFiles = filesOf(folder, "office");
  ASSERT_TRUE(officeFiles.ledger);
  std::filesystem::resize_file(*officeFiles.ledger, std::uintmax_t{1} << 40);
  tablet.run({"book", "45"});
  sync(tablet);
  const auto exchanged = laptop.run({"sync"});
  EXPECT_EQ(exchanged.exitCode, 0) << exchanged.err;
  EXPECT_THAT(exchanged.out, HasSubstr("Skipped office"));
  EXPECT_THAT(exchanged.out, HasSubstr("larger than"));
  EXPECT_THAT(exchanged.out, HasSubstr("Merged tablet"));
  EXPECT_EQ(records<BalanceAdjustment>(laptop).size(), 3u);
  EXPECT_THAT(laptop.run({"sync", "status"}).out, HasSubstr("larger than"));

  // A device file of garbage is left aside the same way.
  const auto tabletFiles = filesOf(folder, "tablet");
  std::ofstream(*tabletFiles.device, std::ios::trunc) << "\x01\x02 not json";
  EXPECT_THAT(sync(laptop).out, HasSubstr("Skipped tablet"));

  if (::geteuid() != 0) {  // the superuser reads any file
    tablet.run({"book", "5"});
    sync(tablet);
    std::filesystem::permissions(*filesOf(folder, "tablet").ledger, std::filesystem::perms::none);
    const auto unreadable = laptop.run({"sync"});
    EXPECT_EQ(unreadable.exitCode, 0) << unreadable.err;
    EXPECT_THAT(unreadable.out, HasSubstr("Skipped tablet"));
  }
}

TEST_F(SyncCommandsTest, DeletionsFromTheFutureCountAsMadeNow) {
  office.run({"book", "30", "--note", "kept"});
  syncAll();
  const std::string booking = records<BalanceAdjustment>(office)[0]->id().uuidString();
  const double tenYearsAhead = static_cast<double>(std::time(nullptr)) + 10 * 365 * 86400.0;
  writeForeignDevice(folder, "0B5C0000-0000-4000-8000-000000000001", "intruder",
                     R"({"deletedAt":)" + std::to_string(tenYearsAhead) + R"(,"id":")" + booking +
                         R"(","type":"BalanceAdjustment"})");
  sync(laptop);
  // What the laptop passes on is dated now, not ten years ahead.
  const std::string device = testing::readFile(*filesOf(folder, "laptop").device);
  std::smatch match;
  ASSERT_TRUE(std::regex_search(device, match, std::regex("\"deletedAt\":([0-9.e+]+)"))) << device;
  EXPECT_LT(std::stod(match[1].str()), static_cast<double>(std::time(nullptr)) + 400);
}

TEST_F(SyncCommandsTest, AnUndoneChangeIsUndoneOnEveryMachine) {
  const std::string work = printedIdentifier(
      office.run({"work", "add", "--start", "2026-11-20 08:00", "--end", "2026-11-20 12:00", "--note", "first"}));
  syncAll();
  ASSERT_EQ(office.run({"work", "edit", work, "--note", "second"}).exitCode, 0);
  syncAll();
  const auto undone = office.run({"undo"});
  ASSERT_EQ(undone.exitCode, 0) << undone.err;  // the edit
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    const auto entries = records<WorkEntry>(*machine);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]->note(), "first");
  }
  const auto undoneAgain = office.run({"undo"});
  ASSERT_EQ(undoneAgain.exitCode, 0) << undoneAgain.err;  // the work itself
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    EXPECT_TRUE(records<WorkEntry>(*machine).empty());
  }
  expectOneLedger();

  // A deletion undone comes back everywhere.
  const std::string booking = printedIdentifier(laptop.run({"book", "20", "--note", "again"}));
  syncAll();
  ASSERT_EQ(laptop.run({"bookings", "delete", booking}).exitCode, 0);
  syncAll();
  ASSERT_EQ(laptop.run({"undo"}).exitCode, 0);
  syncAll();
  for (const CommandRunner* machine : {&office, &laptop, &tablet}) {
    EXPECT_EQ(records<BalanceAdjustment>(*machine).size(), 1u);
  }
  expectOneLedger();
}

TEST_F(SyncCommandsTest, AnExchangeWhoseSaveFailsChangesNeitherStoreNorWidget) {
  const std::string gone = printedIdentifier(office.run({"book", "30"}));
  office.run({"book", "60"});
  syncAll();
  ASSERT_EQ(office.run({"bookings", "delete", gone}).exitCode, 0);
  office.run({"book", "90"});
  sync(office);
  // Every insert into the laptop's bookings fails from now on.
  {
    StoreProbe store(laptop);
    const auto& url = store.context().container()->url();
    ASSERT_TRUE(url);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(url->c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database,
                           "CREATE TRIGGER failing BEFORE INSERT ON \"BalanceAdjustment\" "
                           "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
  }
  const auto snapshot = laptop.home() / "data" / "group.io.quillmont.ledger" / "Preferences" / "widgetSnapshot";
  const std::string widgetBefore = testing::readFile(snapshot);
  const auto failed = laptop.run({"sync"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(records<BalanceAdjustment>(laptop).size(), 2u) << "the deletion was not kept alone";
  EXPECT_EQ(testing::readFile(snapshot), widgetBefore);
}

TEST_F(SyncCommandsTest, ForeignTextsAreShownEscaped) {
  ASSERT_EQ(office.run({"sync", "setup", folder.string(), "--name", "evil\x1b]0;owned\x07"}).exitCode, 0);
  const auto exchanged = sync(laptop);
  EXPECT_EQ(exchanged.out.find('\x1b'), std::string::npos);
  EXPECT_THAT(exchanged.out, HasSubstr("evil\\x1B]0;owned\\x07"));
  const auto status = laptop.run({"sync", "status"});
  EXPECT_EQ(status.out.find('\x1b'), std::string::npos);
  EXPECT_THAT(status.out, HasSubstr("evil\\x1B"));
  const auto link = laptop.run({"open", "quillmont://\x1b[2Joverview"});
  EXPECT_EQ(link.exitCode, 2);
  EXPECT_EQ(link.err.find('\x1b'), std::string::npos);
}

TEST_F(SyncCommandsTest, OnlyFilesNamedExactlyAreRead) {
  office.run({"book", "30"});
  sync(office);
  const auto officeFiles = filesOf(folder, "office");
  std::string lower = officeFiles.ledger->filename().string();
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  std::string twin = testing::readFile(*officeFiles.ledger);
  twin.replace(twin.find("\"minutes\" : 30"), 14, "\"minutes\" : 999");
  std::ofstream(folder / lower) << twin;
  const auto result = sync(laptop);
  const auto bookings = records<BalanceAdjustment>(laptop);
  ASSERT_EQ(bookings.size(), 1u);
  EXPECT_EQ(bookings[0]->minutes(), 30);
  EXPECT_THAT(laptop.run({"sync", "status"}).out, HasSubstr(lower + ": not named exactly"));
}

TEST(SyncCommands, WithoutSetUpSaysHowToSetItUp) {
  CommandRunner machine;
  const auto result = machine.run({"sync"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("quillmont sync setup DIR"));
}

}  // namespace
}  // namespace quillmont
