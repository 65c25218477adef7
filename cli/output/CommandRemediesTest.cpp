// What the program prints for a refusal a person can mend: the whole line,
// with the option or command that mends it, and the exit status; and that
// the one wording is the one every printing path uses.
#include "cli/output/CommandRemedies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;
using testing::CommandRunner;
using testing::StoreProbe;

TEST(CommandRemedies, KeepingOnPurposeIsAskedForWithForce) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 09:00", "--end", "12:00"}).exitCode, 0);
  const std::string morning = store.context().fetch<WorkEntry>()[0]->id().uuidString().substr(0, 8);

  const auto overlapping = quillmont.run({"work", "add", "--start", "2026-03-02 11:00", "--end", "13:00"});
  EXPECT_EQ(overlapping.exitCode, 1);
  EXPECT_EQ(overlapping.err, "quillmont: The entry would overlap work " + morning +
                                 " (2026-03-02 09:00\u201312:00); add --force if that is meant (time covered twice "
                                 "counts once).\n");
  const auto timer = quillmont.run({"timer", "start", "--at", "2026-03-02 10:00"});
  EXPECT_EQ(timer.exitCode, 1);
  EXPECT_EQ(timer.err, "quillmont: The timer from 2026-03-02 10:00 would overlap work " + morning +
                           " (2026-03-02 09:00\u201312:00); add --force if that is meant (time covered twice counts "
                           "once).\n");
  const auto tooLong = quillmont.run({"work", "add", "--start", "2026-03-03 08:00", "--end", "2026-03-04 09:00"});
  EXPECT_EQ(tooLong.exitCode, 2);
  EXPECT_EQ(tooLong.err, "quillmont: the entry would last 25:00, from 2026-03-03 08:00 to 2026-03-04 09:00; an entry "
                         "longer than 24 hours needs --force\n");
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 1u);
}

TEST(CommandRemedies, ATimeAloneThatMayBeASlipShowsTheOptionWithItsDay) {
  const auto clock = testing::zoneWhereItIsNow(4);
  CommandRunner quillmont;
  quillmont.setEnvironment("TZ", clock.zone);

  const auto ahead = quillmont.run({"work", "add", "--start", "02:00", "--end", " 23:00"});
  EXPECT_EQ(ahead.exitCode, 2);
  EXPECT_EQ(ahead.err, "quillmont: --end: '23:00' would end the work at " + clock.today +
                           " 23:00, which is still to come; if that is meant, write the day: --end \"" + clock.today +
                           " 23:00\"\n");
  const auto night = quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "07:00"});
  EXPECT_EQ(night.exitCode, 2);
  EXPECT_EQ(night.err, "quillmont: --end: '07:00' would end the work on the next day, 2026-03-03 07:00, after 22:30; "
                       "if that is meant, write the day: --end \"2026-03-03 07:00\"\n");
  const auto later = quillmont.run({"timer", "start", "--at", "23:30"});
  EXPECT_EQ(later.exitCode, 2);
  EXPECT_THAT(later.err, StartsWith("quillmont: --at: '23:30' today is still to come (it is 04:"));
  EXPECT_THAT(later.err, EndsWith(" now); for yesterday, type --at \"" + clock.yesterday + " 23:30\"\n"));
}

TEST(CommandRemedies, SetUpAndSyncFolderAreNamedAsCommands) {
  CommandRunner machine;
  const auto settle = machine.run({"settle"});
  EXPECT_EQ(settle.exitCode, 1);
  EXPECT_EQ(settle.err, "quillmont: the time bank is not set up yet; finish with `quillmont setup` first\n");

  const auto unset = machine.run({"sync"});
  EXPECT_EQ(unset.exitCode, 1);
  EXPECT_EQ(unset.err,
            "quillmont: sync is not set up on this machine; run `quillmont sync setup DIR` with the folder your sync "
            "service shares between your machines\n");

  const std::filesystem::path folder = machine.home() / "shared";
  ASSERT_EQ(machine.run({"sync", "setup", folder.string(), "--name", "office"}).exitCode, 0);
  std::filesystem::remove_all(folder);
  const auto missing = machine.run({"sync"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.err, "quillmont: the sync folder " + folder.string() +
                             " is missing (is the drive mounted?); run `quillmont sync setup DIR` to choose another\n");
}

// The watching exchange reports its failures through the same wording; the
// input's name stays with whoever prints it.
TEST(CommandRemedies, AnyErrorReadsWithItsRemedyAndOthersAsTheySay) {
  EXPECT_EQ(CommandRemedies::message(Refusal("the sync folder /x is missing", Remedy{Remedy::Kind::chooseSyncFolder})),
            "the sync folder /x is missing; run `quillmont sync setup DIR` to choose another");
  EXPECT_EQ(CommandRemedies::message(InvalidInput("at", "'23:30' is late", {Remedy::Kind::writeYesterday, "at", "D 23:30"})),
            "'23:30' is late; for yesterday, type --at \"D 23:30\"");
  EXPECT_EQ(CommandRemedies::message(Refusal("no such booking")), "no such booking");
  EXPECT_EQ(CommandRemedies::message(std::runtime_error("disk full")), "disk full");
}

}  // namespace
}  // namespace quillmont
