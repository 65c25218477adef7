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
  // A second start is refused, as a stop with nothing running is.
  const auto twice = quillmont.run({"timer", "start"});
  EXPECT_EQ(twice.exitCode, 1);
  EXPECT_THAT(twice.err, HasSubstr("quillmont: The timer is running already, since "));

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
  EXPECT_THAT(added.err, ContainsRegex("^Added work [0-9A-F]{8}: 2026-03-02 08:30\u201317:00, 7:45 worked\\.\n$"));

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
  EXPECT_EQ(edited.err, "Changed work " + id + ": 2026-03-02 08:30\u201318:00, 8:45 worked.\n");
  const auto list = quillmont.run({"work", "list", "--from", "2026-03-01", "--to", "2026-03-31"});
  EXPECT_THAT(list.out, ContainsRegex(id + " +2026-03-02 08:30 +18:00 +0:45 +8:45\n"));
  EXPECT_EQ(quillmont.run({"work", "edit", id, "--start", "2026-03-02 19:00"}).exitCode, 2);

  EXPECT_EQ(quillmont.run({"work", "delete", id}).err, "Deleted work " + id + ": 2026-03-02 08:30\u201318:00, 8:45 worked.\n");
  EXPECT_THAT(store.context().fetch<WorkEntry>(), IsEmpty());
}

TEST(WorkCommands, TimerAtTimesNotesCancelAndContinue) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  const auto started = quillmont.run({"timer", "start", "--note", "  design review ", "--at", "2026-01-05 09:00"});
  ASSERT_EQ(started.exitCode, 0) << started.err;
  EXPECT_THAT(started.err, ContainsRegex("^Timer started at 09:00 for \"design review\": work [0-9A-F]{8}, "
                                         "2026-01-05 09:00\u2013running, [0-9]+:[0-9]{2} worked so far\\.\n$"));
  auto entries = store.context().fetch<WorkEntry>();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]->note(), "design review");

  // A stop before the start, or a time still to come, changes nothing.
  EXPECT_EQ(quillmont.run({"timer", "stop", "--at", "2026-01-05 08:59"}).exitCode, 2);
  EXPECT_EQ(quillmont.run({"timer", "stop", "--at", "2999-01-01 10:00"}).exitCode, 2);
  EXPECT_TRUE(store.context().fetch<WorkEntry>()[0]->isRunning());
  const auto stopped = quillmont.run({"timer", "stop", "--at", "2026-01-05 11:15"});
  ASSERT_EQ(stopped.exitCode, 0) << stopped.err;
  EXPECT_THAT(stopped.err, ContainsRegex("^Timer stopped at 11:15: work [0-9A-F]{8}, 2026-01-05 09:00\u201311:15, "
                                         "2:15 worked\\.\n$"));

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

// Where a time alone lands is the use case's rule (app/work); here, what the
// command says when an entry would run longer than a day.
TEST(WorkCommands, AnEntryOverADayNeedsForce) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "17:00"}).exitCode, 0);
  const auto tooLong = quillmont.run({"work", "edit", "@1", "--end", "2026-03-05 06:00"});
  EXPECT_EQ(tooLong.exitCode, 2);
  EXPECT_EQ(tooLong.err, "quillmont: the entry would last 69:30, from 2026-03-02 08:30 to 2026-03-05 06:00; an entry "
                         "longer than 24 hours needs --force\n");
  EXPECT_EQ(quillmont.run({"work", "add", "--start", "2026-03-10 08:00", "--end", "2026-03-11 09:00"}).exitCode, 2);
  const auto forced = quillmont.run({"work", "edit", "@1", "--end", "2026-03-05 06:00", "--force"});
  ASSERT_EQ(forced.exitCode, 0) << forced.err;
  EXPECT_THAT(forced.err, HasSubstr("2026-03-02 08:30\u20132026-03-05 06:00, 69:30 worked."));
  const auto backwards = quillmont.run({"work", "edit", "@1", "--end", "2026-03-01 06:00"});
  EXPECT_EQ(backwards.exitCode, 2);
  EXPECT_THAT(backwards.err, HasSubstr("quillmont: --end: the entry would end at 2026-03-01 06:00, before it starts"));
  EXPECT_THAT(quillmont.run({"work", "edit", "@1", "--break", "300"}).err,
              HasSubstr("--break: a break lasts from 0 to 240 minutes"));
}

TEST(WorkCommands, OverlappingWorkIsRefusedUnlessForced) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 09:00", "--end", "12:00"}).exitCode, 0);
  const std::string morning = store.context().fetch<WorkEntry>()[0]->id().uuidString().substr(0, 8);

  const auto overlapping = quillmont.run({"work", "add", "--start", "2026-03-02 11:00", "--end", "13:00"});
  EXPECT_EQ(overlapping.exitCode, 1);
  EXPECT_THAT(overlapping.err, HasSubstr("would overlap work " + morning + " (2026-03-02 09:00\u201312:00)"));
  EXPECT_THAT(overlapping.err, HasSubstr("--force"));
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 1u);

  // Work that begins as other work ends does not overlap it.
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 12:00", "--end", "13:00"}).exitCode, 0);
  const auto moved = quillmont.run({"work", "edit", "@1", "--start", "11:30"});
  EXPECT_EQ(moved.exitCode, 1);
  EXPECT_THAT(moved.err, HasSubstr("work " + morning));
  // An entry never overlaps itself: moving it within its own time is fine.
  EXPECT_EQ(quillmont.run({"work", "edit", "@1", "--start", "12:15"}).exitCode, 0);
  EXPECT_EQ(quillmont.run({"work", "edit", "@1", "--start", "11:30", "--force"}).exitCode, 0);

  // A timer started inside typed work, or whose time so far covers it.
  const auto timer = quillmont.run({"timer", "start", "--at", "2026-03-02 10:00"});
  EXPECT_EQ(timer.exitCode, 1);
  EXPECT_THAT(timer.err, HasSubstr("The timer from 2026-03-02 10:00 would overlap work " + morning));
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 2u);
  ASSERT_EQ(quillmont.run({"timer", "start", "--at", "2026-03-02 13:00"}).exitCode, 0);
  const auto intoTheTimer = quillmont.run({"work", "add", "--start", "2026-03-03 09:00", "--end", "10:00"});
  EXPECT_EQ(intoTheTimer.exitCode, 1);
  EXPECT_THAT(intoTheTimer.err, HasSubstr("2026-03-02 13:00\u2013running"));
  ASSERT_EQ(quillmont.run({"timer", "cancel"}).exitCode, 0);

  // The list's total counts time covered twice once (09:00 to 13:00), as reports do.
  const auto list = quillmont.run({"work", "list", "--from", "2026-03-02", "--to", "2026-03-02"});
  EXPECT_THAT(list.out, ContainsRegex("2 entries +4:00\n"));
  EXPECT_THAT(quillmont.run({"work", "list", "--from", "2026-03-02", "--to", "2026-03-02", "--json"}).out,
              HasSubstr("\"workedSeconds\" : 14400"));
}

TEST(WorkCommands, TimesWithoutADayMustNotReachPastNowOrOverALongNight) {
  const auto clock = testing::zoneWhereItIsNow(4);  // 04:00 to 04:59 there
  CommandRunner quillmont;
  quillmont.setEnvironment("TZ", clock.zone);
  StoreProbe store(quillmont);

  // 23:30 alone has not come yet today; yesterday's is typed with its day.
  for (const std::string command : {"start", "continue"}) {
    const auto later = quillmont.run({"timer", command, "--at", "23:30"});
    EXPECT_EQ(later.exitCode, 2) << command;
    EXPECT_THAT(later.err, HasSubstr("type --at \"" + clock.yesterday + " 23:30\"")) << command;
  }
  EXPECT_THAT(store.context().fetch<WorkEntry>(), IsEmpty());
  ASSERT_EQ(quillmont.run({"timer", "start", "--at", clock.yesterday + " 23:30"}).exitCode, 0);
  const auto stop = quillmont.run({"timer", "stop", "--at", "23:45"});
  EXPECT_EQ(stop.exitCode, 2);
  EXPECT_THAT(stop.err, HasSubstr("type --at \"" + clock.yesterday + " 23:45\""));
  ASSERT_EQ(quillmont.run({"timer", "stop", "--at", "01:00"}).exitCode, 0);
  EXPECT_EQ(store.context().fetch<WorkEntry>()[0]->workedSeconds(Date::now()), 5400);

  // An end alone that lies ahead of now.
  const auto ahead = quillmont.run({"work", "add", "--start", "02:00", "--end", "23:00"});
  EXPECT_EQ(ahead.exitCode, 2);
  EXPECT_THAT(ahead.err, HasSubstr("still to come"));
  EXPECT_THAT(ahead.err, HasSubstr("--end \"" + clock.today + " 23:00\""));
  // ... and one that carries the work over midnight into a long night.
  const auto night = quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "07:00"});
  EXPECT_EQ(night.exitCode, 2);
  EXPECT_THAT(night.err, HasSubstr("after 22:30"));
  EXPECT_THAT(night.err, HasSubstr("--end \"2026-03-03 07:00\""));
  EXPECT_EQ(store.context().fetch<WorkEntry>().size(), 1u);
  // Written with their days, both stand.
  EXPECT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 08:30", "--end", "2026-03-03 07:00"}).exitCode, 0);
  EXPECT_EQ(quillmont.run({"work", "add", "--start", "02:00", "--end", clock.today + " 23:00"}).exitCode, 0);
  const auto edit = quillmont.run({"work", "edit", "@1", "--end", "22:00"});
  EXPECT_EQ(edit.exitCode, 2);
  EXPECT_THAT(edit.err, HasSubstr("still to come"));
  EXPECT_EQ(quillmont.run({"work", "edit", "@1", "--end", "03:00"}).exitCode, 0);
}

TEST(WorkCommands, TheNewestEntryIsNamedByPlace) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  // Made first, though it starts later.
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-03 09:00", "--end", "10:00", "-n", "first"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"work", "add", "--start", "2026-03-02 09:00", "--end", "10:00", "-n", "second"}).exitCode, 0);
  const auto note = [&](const std::string& text) {
    for (const auto& entry : store.context().fetch<WorkEntry>()) {
      if (entry->note() == text) return entry;
    }
    return std::shared_ptr<WorkEntry>();
  };

  const auto changed = quillmont.run({"work", "edit", "@1", "--end", "11:00"});
  ASSERT_EQ(changed.exitCode, 0) << changed.err;
  EXPECT_EQ(*note("second")->endedAt() - note("second")->startedAt(), 7200);
  ASSERT_EQ(quillmont.run({"work", "edit", "last", "--note", "latest"}).exitCode, 0);
  ASSERT_NE(note("latest"), nullptr);
  const std::string first = note("first")->id().uuidString().substr(0, 8);
  EXPECT_EQ(quillmont.run({"work", "delete", "@2"}).err, "Deleted work " + first + ": 2026-03-03 09:00\u201310:00, 1:00 worked.\n");
  EXPECT_EQ(note("first"), nullptr);
  const auto beyond = quillmont.run({"work", "delete", "@2"});
  EXPECT_EQ(beyond.exitCode, 1);
  EXPECT_THAT(beyond.err, HasSubstr("there is no work entry @2"));
  EXPECT_EQ(quillmont.run({"work", "delete", "@0"}).exitCode, 2);
  // Undo names the entry itself, not its place, which moves on.
  ASSERT_EQ(quillmont.run({"work", "delete", "@1"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"undo"}).err, ContainsRegex("work delete [0-9A-F]{8}"));
  EXPECT_THAT(quillmont.run({"work", "edit", "--help"}).out, HasSubstr("@1"));
}

TEST(WorkCommands, TheTimersNoteMayBeItsArgument) {
  CommandRunner quillmont;
  StoreProbe store(quillmont);
  EXPECT_EQ(quillmont.run({"timer", "start", "release notes", "--note", "other"}).exitCode, 2);
  EXPECT_THAT(store.context().fetch<WorkEntry>(), IsEmpty());
  const auto started = quillmont.run({"timer", "start", "release notes"});
  ASSERT_EQ(started.exitCode, 0) << started.err;
  EXPECT_THAT(started.err, HasSubstr("for \"release notes\""));
  EXPECT_EQ(store.context().fetch<WorkEntry>()[0]->note(), "release notes");
}

}  // namespace
}  // namespace quillmont
