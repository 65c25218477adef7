// Black-box tests of the program's surface: version, help, usage errors,
// data homes and the overview.
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing::CommandRunner;
using testing::StoreProbe;

TEST(CommandLine, VersionAndHelpSucceedOnStandardOutput) {
  CommandRunner quillmont;
  const auto version = quillmont.run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_THAT(version.out, HasSubstr("quillmont "));
  // Alone it skips the parser; among other options the parser answers: the same line.
  const auto parsed = quillmont.run({"--data-home", "unused", "--version"});
  EXPECT_EQ(parsed.exitCode, 0);
  EXPECT_EQ(parsed.out, version.out);

  const auto help = quillmont.run({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_THAT(help.out, HasSubstr("Usage"));
  EXPECT_THAT(help.err, IsEmpty());
}

TEST(CommandLine, EveryCommandHasHelp) {
  CommandRunner quillmont;
  const std::vector<std::vector<std::string>> commands{
      {"overview"}, {"book"}, {"bookings"}, {"bookings", "list"}, {"bookings", "delete"}, {"timer"},
      {"timer", "start"}, {"timer", "stop"}, {"timer", "toggle"}, {"timer", "status"}, {"timer", "cancel"},
      {"timer", "continue"}, {"report", "year"}, {"work"}, {"work", "add"},
      {"work", "edit"}, {"work", "delete"}, {"work", "list"}, {"report"}, {"report", "week"}, {"report", "month"},
      {"csv"}, {"csv", "days"}, {"csv", "ledger"}, {"setup"}, {"settings"}, {"schedule"}, {"schedule", "add"},
      {"schedule", "list"}, {"schedule", "remove"}, {"kinds"}, {"category"}, {"category", "add"},
      {"category", "rename"}, {"category", "remove"}, {"category", "list"}, {"export"}, {"import"},
      {"import-legacy"}, {"import-holidays"}, {"settle"}, {"open"}, {"erase"}, {"undo"}, {"doctor"}, {"widget"},
      {"widget", "show"}, {"widget", "press"}, {"widget", "info"}, {"--data-home", "elsewhere", "book"}, {"generate"},
      {"complete"}, {"complete", "categories"}};
  for (auto arguments : commands) {
    arguments.push_back("--help");
    const auto result = quillmont.run(arguments);
    EXPECT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.err;
    EXPECT_THAT(result.out, HasSubstr("Usage")) << arguments.front();
  }
  // Help lists every command, though a run builds only the one it is given.
  for (const char* command : {"overview", "book", "timer", "report", "settings", "export", "open", "widget", "doctor"}) {
    EXPECT_THAT(quillmont.run({"--help"}).out, HasSubstr(command));
  }
  // Asking for help never creates the store.
  EXPECT_FALSE(std::filesystem::exists(quillmont.home() / "data"));
}

// A run builds only the subcommand it names; a word between the command and
// the subcommand (here the data home) makes it build all of them. Both
// must read the line the same way.
TEST(CommandLine, ASubcommandBuiltAloneReadsTheLineAsAmongAllOthers) {
  CommandRunner quillmont;
  const std::string home = (quillmont.home() / "data").string();
  const std::vector<std::vector<std::string>> lines{
      {"timer", "start", "--help"},   {"timer", "stop", "--help"},      {"timer", "cancel", "--help"},
      {"timer", "continue", "--help"}, {"timer", "toggle", "--help"},   {"timer", "status", "--help"},
      {"work", "add", "--help"},      {"work", "edit", "--help"},       {"work", "delete", "--help"},
      {"work", "list", "--help"},     {"bookings", "list", "--help"},   {"bookings", "delete", "--help"},
      {"report", "week", "--help"},   {"report", "month", "--help"},    {"report", "year", "--help"},
      {"csv", "days", "--help"},      {"csv", "ledger", "--help"},      {"widget", "show", "--help"},
      {"widget", "press", "--help"},  {"widget", "info", "--help"},     {"timer", "toggle", "extra"},
      {"bookings", "list", "--all", "--from", "2026-01-01"},            {"widget", "press", "sideways"},
      {"report", "week", "--date", "someday"}};
  for (const auto& line : lines) {
    std::vector<std::string> spread = line;
    spread.insert(spread.begin() + 1, {"--data-home", home});
    const auto alone = quillmont.run(line);
    const auto amongAll = quillmont.run(spread);
    EXPECT_EQ(alone.exitCode, amongAll.exitCode) << line[0] << " " << line[1];
    EXPECT_EQ(alone.out, amongAll.out) << line[0] << " " << line[1];
    EXPECT_EQ(alone.err, amongAll.err) << line[0] << " " << line[1];
  }
}

TEST(CommandLine, UsageErrorsExitWithTwoAndChangeNothing) {
  CommandRunner quillmont;
  const std::vector<std::vector<std::string>> mistakes{
      {"--no-such-option"}, {"no-such-command"}, {"--data-home"}, {"book"}, {"book", "1.5"}, {"book", "abc"},
      {"book", "30", "--day", "2026-02-30"}, {"book", "30", "--category", "no such category"},
      {"book", "30", "--note", "caf\xe9"}, {"category", "add", "\xff"},
      {"bookings"}, {"bookings", "delete"}, {"bookings", "delete", "not-hex"}, {"timer"}, {"timer", "pause"},
      {"work", "add", "--start", "09:00"}, {"work", "add", "--start", "25:00", "--end", "26:00"},
      {"work", "add", "--start", "2026-03-02 17:00", "--end", "2026-03-02 09:00"},
      {"work", "add", "--start", "09:00", "--end", "10:00", "--break", "300"}, {"report", "--from", "2026-03-01"},
      {"report", "--from", "2026-03-10", "--to", "2026-03-01"}, {"csv", "days", "--period", "quarter"}, {"csv", "ledger", "--from", "2026-03-10", "--to", "2026-03-01"},
      {"setup", "--week", "8h,8h"}, {"setup", "--week", "8h,8h,8h,8h,8h,0,25h"}, {"setup", "--balance", "2000h"},
      {"schedule", "add", "2026-03-01"}, {"kinds", "holiday"}, {"category", "add", "  "},
      {"open", "https://example.com"}, {"open", "quillmont://nowhere"}};
  for (const auto& arguments : mistakes) {
    const auto result = quillmont.run(arguments);
    std::string line;
    for (const auto& argument : arguments) line += argument + " ";
    EXPECT_EQ(result.exitCode, 2) << line << "\n" << result.out << result.err;
    EXPECT_THAT(result.err, StartsWith("quillmont: ")) << line;  // every message speaks the same way
  }
  // None of them booked anything or changed the settings.
  const auto bookings = quillmont.run({"bookings", "list", "--all"});
  EXPECT_EQ(bookings.exitCode, 0);
  EXPECT_THAT(bookings.out, IsEmpty());
  EXPECT_THAT(quillmont.run({"settings"}).out, HasSubstr("not complete"));
}

TEST(CommandLine, AMistypedCommandGetsASuggestion) {
  CommandRunner quillmont;
  const auto typo = quillmont.run({"reprot", "week"});
  EXPECT_EQ(typo.exitCode, 2);
  EXPECT_THAT(typo.err, StartsWith("quillmont: "));
  EXPECT_THAT(typo.err, HasSubstr("Did you mean `quillmont report`?"));
  EXPECT_THAT(quillmont.run({"frobnicate"}).err, Not(HasSubstr("Did you mean")));
}

TEST(CommandLine, DataHomeOptionAndVariableChooseTheStore) {
  CommandRunner quillmont;
  const auto elsewhere = quillmont.home() / "elsewhere";
  ASSERT_EQ(quillmont.run({"--data-home", elsewhere.string(), "book", "30"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "45", "--data-home", elsewhere.string()}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(elsewhere / "group.io.quillmont.ledger" / "Quillmont.store"));
  EXPECT_THAT(quillmont.run({"--data-home", elsewhere.string(), "overview", "--json"}).out,
              HasSubstr("\"todayCreditSeconds\" : 4500"));
  // The home of QUILLMONT_HOME saw none of it.
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"todayCreditSeconds\" : 0"));

  // A program truly without the application group keeps a store of its own.
  quillmont.setEnvironment("QUILLMONT_ENTITLEMENTS", testing::writeTemporaryFile(quillmont.home(), "none.json", "{}"));
  ASSERT_EQ(quillmont.run({"book", "15"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(quillmont.home() / "data" / "quillmont" / "Quillmont.store"));
}

TEST(CommandLine, AnEntitlementsOverrideThatCannotBeReadIsAnErrorNeverAnotherStore) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"book", "30"}).exitCode, 0);
  const auto home = quillmont.home();
  std::filesystem::create_directory(home / "folder.json");
  for (const auto& overridePath :
       {home / "missing.json", testing::writeTemporaryFile(home, "empty.json", ""),
        testing::writeTemporaryFile(home, "broken.json", "{ this is not json"),
        testing::writeTemporaryFile(home, "binary.json", std::string("\x00\xff\x13", 3)),
        testing::writeTemporaryFile(home, "list.json", "[\"group.io.quillmont.ledger\"]"), home / "folder.json"}) {
    quillmont.setEnvironment("QUILLMONT_ENTITLEMENTS", overridePath.string());
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"book", "30"}, {}, {"widget", "show"}, {"doctor"}}) {
      const auto refused = quillmont.run(command);
      EXPECT_EQ(refused.exitCode, 1) << overridePath;
      EXPECT_THAT(refused.err, HasSubstr("QUILLMONT_ENTITLEMENTS")) << overridePath;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(home / "data" / "quillmont")) << "no second store was made";
  quillmont.setEnvironment("QUILLMONT_ENTITLEMENTS", "");
  // Without an override the program's own entitlements grant the group.
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"todayCreditSeconds\" : 1800"));
  EXPECT_THAT(quillmont.run({"doctor"}).out, HasSubstr("built into quillmont"));
}

// A time bank is personal: nothing the program writes into the data home is
// readable by others, whatever the umask.
TEST(CommandLine, EveryFileInTheDataHomeIsPrivate) {
  CommandRunner quillmont;
  const mode_t previous = ::umask(0);
  const auto data = quillmont.home() / "data";
  ASSERT_EQ(quillmont.run({"book", "30"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"widget", "press", "add"}).exitCode, 1);  // not set up; stores a snapshot anyway
  ASSERT_EQ(quillmont.run({"export", (data / "backup.json").string()}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"csv", "ledger", "--output", (data / "ledger.csv").string()}).exitCode, 0);
  ::umask(previous);
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(data)) {
    const auto permissions = entry.status().permissions();
    EXPECT_EQ(permissions & (std::filesystem::perms::group_all | std::filesystem::perms::others_all),
              std::filesystem::perms::none)
        << entry.path();
    files += entry.is_regular_file() ? 1 : 0;
  }
  EXPECT_GE(files, 5u);  // store, its log, snapshot, reload signal, export, CSV
}

TEST(CommandLine, DoctorReportsAndCreatesNothing) {
  CommandRunner quillmont;
  const auto doctor = quillmont.run({"doctor"});
  EXPECT_EQ(doctor.exitCode, 0) << doctor.err;
  EXPECT_THAT(doctor.out, HasSubstr("none yet"));
  EXPECT_FALSE(std::filesystem::exists(quillmont.home() / "data")) << "a diagnosis created the data home";
  ASSERT_EQ(quillmont.run({"book", "15"}).exitCode, 0);
  const auto afterwards = quillmont.run({"doctor"});
  EXPECT_EQ(afterwards.exitCode, 0) << afterwards.err;
  EXPECT_THAT(afterwards.out, HasSubstr("Integrity           ok"));
}

TEST(CommandLine, OverviewShowsBalanceTodayTimerAndSetUp) {
  CommandRunner quillmont;
  const auto fresh = quillmont.run({});
  EXPECT_EQ(fresh.exitCode, 0);
  EXPECT_THAT(fresh.out, HasSubstr("Balance   +0:00"));
  EXPECT_THAT(fresh.out, HasSubstr("quillmont setup"));
  EXPECT_THAT(fresh.out, Not(HasSubstr("\x1b[")));  // no colour into a pipe
  EXPECT_THAT(fresh.out, HasSubstr("Today     nothing booked\n"));  // no "−0:00 debited"
  EXPECT_THAT(fresh.out, HasSubstr("Worked    0:00 today\n"));
  EXPECT_THAT(fresh.out, HasSubstr("The balance is the ledger of bookings; worked time feeds the reports."));

  ASSERT_EQ(quillmont.run({"book", "90"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-0:30", "--category", "appointment"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "15", "--day", "yesterday"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"timer", "start"}).exitCode, 0);
  const auto text = quillmont.run({"overview"});
  EXPECT_THAT(text.out, HasSubstr("Balance   +1:15"));
  EXPECT_THAT(text.out, HasSubstr("+1:30 credited, \u22120:30 debited (net +1:00)"));
  EXPECT_THAT(text.out, HasSubstr("Timer     running since"));
  EXPECT_THAT(quillmont.run({"work", "add", "--start", "00:00", "--end", "00:01"}).exitCode, 0);
  // The minute typed in, and the running timer's time so far.
  EXPECT_THAT(quillmont.run({"overview"}).out, ContainsRegex("Worked    [0-9]+:[0-9]{2} today\n"));

  const auto json = quillmont.run({"overview", "--json"});
  EXPECT_EQ(json.exitCode, 0);
  EXPECT_THAT(json.out, HasSubstr("\"balanceSeconds\" : 4500"));
  EXPECT_THAT(json.out, HasSubstr("\"todayCreditSeconds\" : 5400"));
  EXPECT_THAT(json.out, HasSubstr("\"todayDebitSeconds\" : 1800"));
  EXPECT_THAT(json.out, HasSubstr("\"timerRunning\" : true"));
  EXPECT_THAT(json.out, HasSubstr("\"isConfigured\" : false"));
  EXPECT_THAT(json.out, HasSubstr("\"todayWorkedSeconds\" : "));
  EXPECT_EQ(json.out.back(), '\n');
}

TEST(CommandLine, TheOverviewRepairsRunningEntriesLikeTheTimer) {
  CommandRunner quillmont;
  {
    // Another program leaves two running entries, one of them starting in the future.
    StoreProbe store(quillmont);
    const Date now = Date::now();
    store.context().insert(std::make_shared<WorkEntry>(UUID::random(), now - 3600, std::nullopt, 0, "", now, now));
    store.context().insert(
        std::make_shared<WorkEntry>(UUID::random(), now + 7200, std::nullopt, 0, "", now, now));
    store.context().save();
  }
  const auto overview = quillmont.run({"overview"});
  ASSERT_EQ(overview.exitCode, 0) << overview.err;
  EXPECT_THAT(overview.out, ContainsRegex("Timer     running since .* \\(1:00\\)"));
  StoreProbe store(quillmont);
  const auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);  // the earliest start survives
  EXPECT_TRUE(entries[0]->isRunning());
  // Today's worked time counts the survivor only: at most the hour since it started.
  EXPECT_THAT(overview.out, ContainsRegex("Worked    (0:[0-5][0-9]|1:00) today"));
}

TEST(CommandLine, DeepLinksOpenTheirScreens) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"book", "30", "--note", "from the link test"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"open", "quillmont://overview"}).out, HasSubstr("Balance"));
  EXPECT_THAT(quillmont.run({"open", "QUILLMONT://History/anything?x=1"}).out, HasSubstr("from the link test"));
  EXPECT_THAT(quillmont.run({"open", "quillmont://reports"}).out, HasSubstr("Month"));
  EXPECT_THAT(quillmont.run({"open", "quillmont://settings"}).out, HasSubstr("Starting balance"));
  const auto unknown = quillmont.run({"open", "quillmont://elsewhere"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.err, HasSubstr("not a Quillmont link"));
}

}  // namespace
}  // namespace quillmont
