// Black-box tests of the timer and of worked time typed in by hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::CommandRunner;
using testing::StoreProbe;

TEST(WorkCommands, TimerSession) {
  CommandRunner quillmont;
  EXPECT_EQ(quillmont.run({"timer", "status"}).out, "not running\n");
  const auto started = quillmont.run({"timer", "start"});
  EXPECT_EQ(started.exitCode, 0);
  EXPECT_THAT(started.err, HasSubstr("Timer started at"));
  EXPECT_THAT(quillmont.run({"timer", "status"}).out, HasSubstr("running since"));
  EXPECT_THAT(quillmont.run({"timer", "start"}).err, HasSubstr("running already"));

  StoreProbe store(quillmont);
  auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(entries[0]->isRunning());

  const auto stopped = quillmont.run({"timer", "stop"});
  EXPECT_EQ(stopped.exitCode, 0);
  EXPECT_THAT(stopped.err, HasSubstr("Timer stopped at"));
  const auto again = quillmont.run({"timer", "stop"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_THAT(again.err, HasSubstr("quillmont: The timer is not running."));
  entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_FALSE(entries[0]->isRunning());

  EXPECT_THAT(quillmont.run({"timer", "toggle"}).err, HasSubstr("started"));
  EXPECT_THAT(quillmont.run({"timer", "toggle"}).err, HasSubstr("stopped"));
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 2u);
}

TEST(WorkCommands, AddEditListAndDeleteWorkedTime) {
  CommandRunner quillmont;
  const auto added = quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "2026-03-02 17:00",
                                    "--break", "0:45", "--note", "release day"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_THAT(added.err, HasSubstr("7:45 on 2026-03-02"));

  // The wall clock of the user's zone: 08:30 in Berlin in March is 07:30 UTC.
  StoreProbe store(quillmont);
  auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->startedAt(), Date::fromTimeIntervalSince1970(1772436600));
  EXPECT_EQ(entries[0]->breakMinutes(), 45);
  EXPECT_EQ(entries[0]->note(), "release day");

  const std::string id = entries[0]->id().uuidString().substr(0, 8);
  const auto edited = quillmont.run({"work", "edit", id, "--end", "2026-03-02 18:00", "--note", ""});
  ASSERT_EQ(edited.exitCode, 0) << edited.err;
  const auto list = quillmont.run({"work", "list", "--from", "2026-03-01", "--to", "2026-03-31"});
  EXPECT_THAT(list.out, ContainsRegex(id + " +2026-03-02 08:30 +18:00 +0:45 +8:45\n"));
  EXPECT_EQ(quillmont.run({"work", "edit", id, "--start", "2026-03-02 19:00"}).exitCode, 2);

  EXPECT_EQ(quillmont.run({"work", "delete", id}).exitCode, 0);
  EXPECT_THAT(store.context().fetch<WorkEntry>(), IsEmpty());
}

TEST(WorkCommands, TimerAtTimesNotesCancelAndContinue) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  const auto started = quillmont.run({"timer", "start", "--note", "  design review ", "--at", "2026-01-05 09:00"});
  ASSERT_EQ(started.exitCode, 0) << started.err;
  EXPECT_THAT(started.err, HasSubstr("Timer started at 09:00 for \"design review\"."));
  auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->note(), "design review");

  // A stop before the start, or a time still to come, changes nothing.
  EXPECT_EQ(quillmont.run({"timer", "stop", "--at", "2026-01-05 08:59"}).exitCode, 2);
  EXPECT_EQ(quillmont.run({"timer", "stop", "--at", "2999-01-01 10:00"}).exitCode, 2);
  EXPECT_TRUE(store.context().fetch<WorkEntry>()[0]->isRunning());
  const auto stopped = quillmont.run({"timer", "stop", "--at", "2026-01-05 11:15"});
  ASSERT_EQ(stopped.exitCode, 0) << stopped.err;
  EXPECT_THAT(stopped.err, HasSubstr("Timer stopped at 11:15 after 2:15."));

  // Continue takes the note of the work that started last.
  const auto continued = quillmont.run({"timer", "continue", "--at", "2026-01-05 12:00"});
  ASSERT_EQ(continued.exitCode, 0) << continued.err;
  EXPECT_THAT(continued.err, HasSubstr("for \"design review\""));
  entries = store.context().fetch<WorkEntry>({{}, {{&WorkEntry::startedAt}}});
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_TRUE(entries[1]->isRunning());
  EXPECT_EQ(entries[1]->note(), "design review");

  // Cancel leaves no trace of the running entry, and has nothing to cancel twice.
  const auto cancelled = quillmont.run({"timer", "cancel"});
  ASSERT_EQ(cancelled.exitCode, 0) << cancelled.err;
  EXPECT_THAT(cancelled.err, HasSubstr("since 12:00 was not recorded"));
  entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_FALSE(entries[0]->isRunning());
  EXPECT_EQ(quillmont.run({"timer", "cancel"}).exitCode, 1);
}

TEST(WorkCommands, ATimeAloneKeepsAnEntryOnItsDay) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "17:00"}).exitCode, 0);
  StoreProbe store(quillmont);
  const auto only = [&] {
    const auto entries = store.context().fetch<WorkEntry>();
    EXPECT_EQ(entries.size(), 1u);
    return entries.front();
  };
  const auto at = [](const char* berlinTime) {  // 2026-03-02 is in winter time: UTC+1
    return Date::fromTimeIntervalSince1970(1772406000 + (std::stoi(berlinTime) * 60 + std::stoi(berlinTime + 3)) * 60);
  };
  EXPECT_EQ(only()->endedAt(), at("17:00"));
  const std::string id = only()->id().uuidString().substr(0, 8);

  ASSERT_EQ(quillmont.run({"work", "edit", id, "--end", "17:30"}).exitCode, 0);
  EXPECT_EQ(only()->startedAt(), at("08:30"));
  EXPECT_EQ(only()->endedAt(), at("17:30"));

  // A night shift: the end alone falls on the next day.
  ASSERT_EQ(quillmont.run({"work", "edit", id, "--start", "22:00", "--end", "06:00"}).exitCode, 0);
  EXPECT_EQ(only()->startedAt(), at("22:00"));
  EXPECT_EQ(*only()->endedAt() - only()->startedAt(), 8 * 3600.0);

  // More than a day is refused unless confirmed; the entry stays as it was.
  const auto tooLong = quillmont.run({"work", "edit", id, "--end", "2026-03-05 06:00"});
  EXPECT_EQ(tooLong.exitCode, 2);
  EXPECT_THAT(tooLong.err, HasSubstr("longer than 24 hours needs --force"));
  EXPECT_EQ(*only()->endedAt() - only()->startedAt(), 8 * 3600.0);
  EXPECT_EQ(quillmont.run({"work", "add", "--start", "2026-03-10 08:00", "--end", "2026-03-11 09:00"}).exitCode, 2);
  ASSERT_EQ(quillmont.run({"work", "edit", id, "--end", "2026-03-05 06:00", "--force"}).exitCode, 0);
  EXPECT_EQ(*only()->endedAt() - only()->startedAt(), 56 * 3600.0);
}

}  // namespace
}  // namespace quillmont
