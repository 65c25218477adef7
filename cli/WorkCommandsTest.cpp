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

}  // namespace
}  // namespace quillmont
