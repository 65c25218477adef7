// Black-box tests of export, import and the legacy import.
#include <signal.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/archive/LegacyPrototypeImport.h"
#include "core/archive/TimeBankArchiveError.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using testing::CommandRunner;
using testing::StoreProbe;

void fill(const CommandRunner& quillmont) {
  const std::vector<std::vector<std::string>> commands{
      {"setup", "--start", "2025-03-03", "--balance", "3h"},
      {"schedule", "add", "2025-03-10", "7h,7h,7h,7h,7h,0,0"},
      {"work", "add", "--start", "2025-03-03 08:00", "--end", "2025-03-03 17:00", "--break", "1h",
       "--note", "a/b \"quoted\""},
      {"work", "add", "--start", "2025-03-11 08:00", "--end", "2025-03-11 12:00"},
      {"book", "-45", "--category", "longLunch", "--day", "2025-03-12"},
      {"category", "add", "Gym"},
      {"book", "-1h", "--category", "Gym", "--day", "2025-03-13"}};
  for (const auto& arguments : commands) ASSERT_EQ(quillmont.run(arguments).exitCode, 0) << arguments.front();
}

// Everything a user sees of the records, to compare stores.
std::string contents(const CommandRunner& quillmont) {
  std::string text;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"csv", "days", "--date", "2025-03-15"}, {"csv", "ledger", "--from", "2025-01-01"},
        {"bookings", "list", "--all"}, {"work", "list", "--all"}, {"schedule", "list"}, {"settings"}}) {
    const auto result = quillmont.run(arguments);
    EXPECT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.err;
    text += result.out;
  }
  return text;
}

TEST(ArchiveCommands, ExportReimportedIntoASecondHomeGivesTheSameCsv) {
  CommandRunner first;
  fill(first);
  const auto file = first.home() / "ledger.json";
  const auto exported = first.run({"export", file.string()});
  ASSERT_EQ(exported.exitCode, 0) << exported.err;
  EXPECT_THAT(exported.err, HasSubstr("Exported 2 work entries, 3 bookings, 1 schedule and 1 settings record"));
  EXPECT_THAT(testing::readFile(file), StartsWith("{\n"));
  EXPECT_THAT(first.run({"export"}).out, HasSubstr("\"note\" : \"a/b \\\"quoted\\\"\""));  // standard output

  // An existing file is replaced only when asked to.
  const std::string before = testing::readFile(file);
  const auto refused = first.run({"export", file.string()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("exists already; run `quillmont export " + file.string() + " --force`"));
  EXPECT_EQ(testing::readFile(file), before);
  ASSERT_EQ(first.run({"export", file.string(), "--force"}).exitCode, 0);
  EXPECT_NE(testing::readFile(file), before);  // a later "exportedAt"

  CommandRunner second;
  const auto dryRun = second.run({"import", "--dry-run", file.string()});
  ASSERT_EQ(dryRun.exitCode, 0) << dryRun.err;
  EXPECT_THAT(dryRun.out, HasSubstr("would insert 7"));
  EXPECT_THAT(second.run({"bookings", "list", "--all"}).out, IsEmpty());  // the dry run saved nothing

  const auto imported = second.run({"import", file.string()});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  EXPECT_THAT(imported.out, HasSubstr("Inserted 7, updated 0"));
  EXPECT_EQ(contents(second), contents(first));
  EXPECT_EQ(second.run({"csv", "days", "--date", "2025-03-15"}).out,
            first.run({"csv", "days", "--date", "2025-03-15"}).out);

  // A store that takes its own export back finds nothing new.
  const auto again = first.run({"import", file.string()});
  EXPECT_THAT(again.out, HasSubstr("Inserted 0, updated 0, unchanged 7 (7 records)"));
}

TEST(ArchiveCommands, MalformedArchivesAreRefusedWithNothingChanged) {
  CommandRunner quillmont;
  fill(quillmont);
  const std::string before = contents(quillmont);
  const auto good = quillmont.home() / "good.json";
  ASSERT_EQ(quillmont.run({"export", good.string()}).exitCode, 0);
  std::string document = testing::readFile(good);

  for (const std::string& text : {std::string("{\"schemaVersion\" : 1"), std::string("[]"), std::string(""),
                                  document.substr(0, document.size() / 2)}) {
    const auto file = testing::writeTemporaryFile(quillmont.home(), "bad.json", text);
    const auto result = quillmont.run({"import", file.string()});
    EXPECT_EQ(result.exitCode, 1) << text;
    EXPECT_THAT(result.err, HasSubstr("cannot import"));
  }
  document.replace(document.find("\"schemaVersion\" : 1"), 19, "\"schemaVersion\" : 2");
  const auto newer = testing::writeTemporaryFile(quillmont.home(), "newer.json", document);
  const auto refused = quillmont.run({"import", newer.string()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr(TimeBankArchiveError::unsupportedSchema(2).what()));
  EXPECT_EQ(quillmont.run({"import", (quillmont.home() / "missing.json").string()}).exitCode, 1);
  EXPECT_EQ(contents(quillmont), before);
}

TEST(ArchiveCommands, LegacyFileImportedTwiceAddsItsEntriesOnce) {
  CommandRunner quillmont;
  const UUID repeated = *UUID::parse("6B0F6A52-7C1E-4B8E-9A43-0D4D3A5E2F10");
  const std::vector<LegacyBalanceEntry> entries{
      {repeated, 90, Date(762000000), "first"},
      {*UUID::parse("0E9D7F0C-2D5B-4F44-8B8A-6E2C5A1B3C4D"), -30, Date(762086400), "second"},
      {repeated, 500, Date(762172800), "copy of the first"}};
  const auto file = testing::writeTemporaryFile(quillmont.home(), "legacy.json", LegacyPrototypeImport::encode(entries));

  const auto first = quillmont.run({"import-legacy", file.string()});
  ASSERT_EQ(first.exitCode, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr("Inserted 2, updated 0, unchanged 0"));
  const auto second = quillmont.run({"import-legacy", file.string()});
  ASSERT_EQ(second.exitCode, 0) << second.err;
  EXPECT_THAT(second.out, HasSubstr("Inserted 0"));

  StoreProbe store(quillmont);
  const auto adjustments = store.context().fetch<BalanceAdjustment>();
  ASSERT_EQ(adjustments.size(), 2u);
  EXPECT_EQ(adjustments[0]->id(), repeated);
  EXPECT_EQ(adjustments[0]->minutes(), 90);
  EXPECT_EQ(adjustments[0]->kindRawValue(), "manual");
  EXPECT_EQ(adjustments[0]->createdAt(), Date(762000000));

  const auto broken = testing::writeTemporaryFile(quillmont.home(), "broken.json", "[{\"id\": 1}]");
  EXPECT_EQ(quillmont.run({"import-legacy", broken.string()}).exitCode, 1);
  EXPECT_EQ(store.context().fetch<BalanceAdjustment>().size(), 2u);
}

// Imports and bookings killed at any moment leave a sound store that holds
// each of them wholly or not at all.
TEST(ArchiveCommands, KilledImportsAndBookingsLeaveEachWhollyOrNotAtAll) {
  CommandRunner source;
  std::vector<LegacyBalanceEntry> entries;
  for (int i = 0; i < 3000; ++i) entries.push_back({UUID::random(), 1, Date(760000000.0 + i * 600.0), "imported"});
  const auto legacy = testing::writeTemporaryFile(source.home(), "legacy.json", LegacyPrototypeImport::encode(entries));
  ASSERT_EQ(source.run({"import-legacy", legacy.string()}).exitCode, 0);
  const auto archive = source.home() / "archive.json";
  ASSERT_EQ(source.run({"export", archive.string()}).exitCode, 0);

  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"book", "5"}).exitCode, 0);
  std::mt19937 random(20261123);
  int bookingsKept = 0;
  for (int round = 0; round < 16; ++round) {
    const bool importing = round % 2 == 0;
    auto running = importing ? quillmont.start({"import", archive.string()}) : quillmont.start({"book", "-2"});
    ::usleep(static_cast<useconds_t>(random() % (importing ? 90'000 : 25'000)));
    const int status = running->stop(SIGKILL);
    if (!importing && status == 0) ++bookingsKept;

    StoreProbe store(quillmont);
    std::size_t imported = 0;
    int bookings = 0;
    for (const auto& adjustment : store.context().fetch<BalanceAdjustment>()) {
      imported += adjustment->note() == "imported" ? 1 : 0;
      bookings += adjustment->minutes() == -2 ? 1 : 0;
    }
    EXPECT_TRUE(imported == 0 || imported == entries.size()) << "round " << round << ": " << imported;
    EXPECT_GE(bookings, bookingsKept) << "round " << round;  // a booking that finished is there
    EXPECT_LE(bookings, round / 2 + 1) << "round " << round;
    EXPECT_EQ(store.context().container()->integrityCheck(), "ok") << "round " << round;
  }
  // The store still works: a whole import after all that.
  ASSERT_EQ(quillmont.run({"import", archive.string()}).exitCode, 0);
  StoreProbe store(quillmont);
  std::size_t imported = 0;
  for (const auto& adjustment : store.context().fetch<BalanceAdjustment>()) imported += adjustment->note() == "imported";
  EXPECT_EQ(imported, entries.size());
}

// Some editors save JSON with a UTF-8 byte-order mark in front.
TEST(ArchiveCommands, FilesStartingWithAByteOrderMarkAreRead) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"book", "45"}).exitCode, 0);
  const auto exported = quillmont.run({"export", "-"});
  ASSERT_EQ(exported.exitCode, 0);
  const auto archive = testing::writeTemporaryFile(quillmont.home(), "marked.json", "\xEF\xBB\xBF" + exported.out);
  const auto imported = quillmont.run({"import", archive.string()});
  EXPECT_EQ(imported.exitCode, 0) << imported.err;
  EXPECT_THAT(imported.out, HasSubstr("Inserted 0, updated 0"));
  const auto legacy = testing::writeTemporaryFile(
      quillmont.home(), "legacy.json",
      "\xEF\xBB\xBF[{\"id\":\"6B1B5B0E-6A53-4A8E-9C61-3F0B9E1D2A11\",\"minutes\":90,\"date\":784111777,\"note\":\"\"}]");
  const auto legacyImport = quillmont.run({"import-legacy", legacy.string()});
  EXPECT_EQ(legacyImport.exitCode, 0) << legacyImport.err;
  EXPECT_THAT(legacyImport.out, HasSubstr("Inserted 1"));
}

}  // namespace
}  // namespace quillmont
