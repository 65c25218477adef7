#include "app/work/WorkEntries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "app/text/Display.h"
#include "app/work/Timer.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::utc;

class WorkEntriesTest : public ::testing::Test {
 protected:
  testing::ScratchHome home{utc(2026, 3, 5, 12)};

  WorkEntries::Changed add(const std::string& start, const std::string& end, bool force = false) {
    StoreSession session;
    return WorkEntries::add(session, {start, end, "", std::nullopt, force});
  }
  std::vector<std::shared_ptr<WorkEntry>> stored() {
    StoreSession session;
    return session.context().fetch<WorkEntry>();
  }
  std::string refusalOf(const std::function<void(StoreSession&)>& action) {
    StoreSession session;
    try {
      action(session);
    } catch (const std::exception& error) {
      return error.what();
    }
    return "(done)";
  }
};

TEST_F(WorkEntriesTest, AddStoresTheTypedIntervalAndSaysWhatItIsWorth) {
  StoreSession session;
  const auto added =
      WorkEntries::add(session, {"2026-03-02 08:30", "17:00", "0:45", std::string("  release day "), false});
  EXPECT_EQ(added.entry->startedAt(), utc(2026, 3, 2, 8, 30));
  EXPECT_EQ(added.entry->endedAt(), utc(2026, 3, 2, 17));
  EXPECT_EQ(added.workedSeconds, 7 * 3600 + 45 * 60);
  ASSERT_EQ(stored().size(), 1u);
  EXPECT_EQ(stored()[0]->note(), "release day");
  EXPECT_EQ(stored()[0]->breakMinutes(), 45);
}

TEST_F(WorkEntriesTest, BreaksAndLongOrBackwardEntriesAreRefusedBeforeAnythingIsSaved) {
  const auto field = [&](WorkEntries::Request request) {
    StoreSession session;
    try {
      WorkEntries::add(session, request);
    } catch (const InvalidInput& error) {
      return error.field();
    }
    return std::string("(added)");
  };
  EXPECT_EQ(field({"2026-03-02 08:00", "12:00", "241", {}, false}), "break");
  EXPECT_EQ(field({"2026-03-02 08:00", "12:00", "-5", {}, false}), "break");
  EXPECT_EQ(field({"2026-03-02 08:00", "12:00", "lunch", {}, false}), "break");
  EXPECT_EQ(field({"2026-03-02 08:00", "2026-03-01 12:00", "", {}, false}), "end");
  EXPECT_EQ(field({"2026-03-02 08:00", "2026-03-03 08:01", "", {}, false}), "");  // over 24 hours
  EXPECT_EQ(field({"2026-03-02 08:00", "12:00", "", std::string("\xff"), false}), "note");
  EXPECT_TRUE(stored().empty());
  EXPECT_EQ(field({"2026-03-02 08:00", "2026-03-03 08:01", "240", {}, true}), "(added)");
  EXPECT_EQ(field({"2026-03-04 08:00", "2026-03-05 08:00", "", {}, false}), "(added)");  // exactly a day
}

TEST_F(WorkEntriesTest, OverlapsAreRefusedNamingTheWorkUnlessForced) {
  const auto morning = add("2026-03-02 09:00", "12:00").entry;
  const std::string name = "work " + Display::shortIdentifier(morning->id()) + " (2026-03-02 09:00\u201312:00)";
  EXPECT_EQ(refusalOf([](StoreSession& s) { WorkEntries::add(s, {"2026-03-02 11:00", "13:00", "", {}, false}); }),
            "The entry would overlap " + name);
  EXPECT_EQ(stored().size(), 1u);
  // Touching is no overlap, and an entry never overlaps itself.
  const auto noon = add("2026-03-02 12:00", "13:00").entry;
  EXPECT_EQ(refusalOf([](StoreSession& s) { WorkEntries::edit(s, "@1", {"12:15", "", "", {}, false}); }), "(done)");
  EXPECT_THAT(refusalOf([](StoreSession& s) { WorkEntries::edit(s, "@1", {"11:30", "", "", {}, false}); }),
              HasSubstr(name));
  EXPECT_EQ(refusalOf([](StoreSession& s) { WorkEntries::edit(s, "last", {"11:30", "", "", {}, true}); }), "(done)");

  // The total counts time covered twice once.
  StoreSession session;
  const auto listed = WorkEntries::list(session, DateInterval::between(utc(2026, 3, 2), utc(2026, 3, 3)));
  ASSERT_EQ(listed.entries.size(), 2u);
  EXPECT_EQ(listed.entries[0]->id(), morning->id());
  EXPECT_EQ(listed.workedSeconds, 4 * 3600);
  EXPECT_TRUE(WorkEntries::list(session, DateInterval::between(utc(2026, 3, 3), utc(2026, 3, 4))).entries.empty());
}

// What a person may keep on purpose says so; a slip no confirmation can mend
// (an end before the start, a bad break) offers nothing.
TEST_F(WorkEntriesTest, RefusalsSayWhetherKeepingTheChangeOnPurposeLiftsThem) {
  const auto remedyOf = [](const std::function<void(StoreSession&)>& action) -> std::optional<Remedy> {
    StoreSession session;
    try {
      action(session);
    } catch (const InvalidInput& error) {
      return error.remedy();
    } catch (const Refusal& refusal) {
      return refusal.remedy();
    }
    return std::nullopt;
  };
  const Remedy length{Remedy::Kind::confirmLength}, overlap{Remedy::Kind::confirmOverlap};
  add("2026-03-02 09:00", "12:00");
  EXPECT_EQ(remedyOf([](StoreSession& s) { WorkEntries::add(s, {"2026-03-03 08:00", "2026-03-04 08:01", "", {}, false}); }),
            length);
  EXPECT_EQ(remedyOf([](StoreSession& s) { WorkEntries::add(s, {"2026-03-02 11:00", "13:00", "", {}, false}); }),
            overlap);
  EXPECT_EQ(remedyOf([](StoreSession& s) { WorkEntries::edit(s, "@1", {"", "2026-03-03 10:00", "", {}, false}); }),
            length);
  // A timer started inside typed work is kept on purpose the same way.
  EXPECT_EQ(remedyOf([](StoreSession& s) { Timer::start(s, {.at = "2026-03-02 10:00", .note = "", .force = false}); }),
            overlap);
  EXPECT_EQ(remedyOf([](StoreSession& s) { WorkEntries::add(s, {"2026-03-02 08:00", "2026-03-01 12:00", "", {}, false}); }),
            Remedy{});
  EXPECT_EQ(remedyOf([](StoreSession& s) { WorkEntries::add(s, {"2026-03-05 08:00", "09:00", "241", {}, true}); }),
            Remedy{});
  EXPECT_EQ(stored().size(), 1u);
}

TEST_F(WorkEntriesTest, EditKeepsWhatIsNotGivenAndATimeAloneOnTheEntrysDay) {
  add("2026-03-02 22:00", "2026-03-03 06:00");
  {
    StoreSession session;
    const auto edited = WorkEntries::edit(session, "@1", {"21:00", "", "", std::string(" night "), false});
    EXPECT_EQ(edited.entry->startedAt(), utc(2026, 3, 2, 21));
    EXPECT_EQ(edited.entry->endedAt(), utc(2026, 3, 3, 6));
    EXPECT_EQ(edited.workedSeconds, 9 * 3600);
  }
  EXPECT_EQ(stored()[0]->note(), "night");
  // An end alone before the new start is the next day's.
  StoreSession session;
  EXPECT_EQ(WorkEntries::edit(session, "@1", {"", "05:00", "", {}, false}).entry->endedAt(), utc(2026, 3, 3, 5));
}

TEST_F(WorkEntriesTest, ARunningEntryCannotStartLaterThanNow) {
  {
    StoreSession session;
    auto running = std::make_shared<WorkEntry>(UUID::random(), utc(2026, 3, 5, 9), std::nullopt, 0, "", utc(2026, 3, 5, 9),
                                               utc(2026, 3, 5, 9));
    session.context().insert(running);
    session.context().save();
  }
  StoreSession session;
  try {
    WorkEntries::edit(session, "@1", {"13:00", "", "", {}, false});
    FAIL();
  } catch (const InvalidInput& error) {
    EXPECT_EQ(error.field(), "start");
    EXPECT_EQ(error.reason(), "the running timer cannot start at 2026-03-05 13:00, which is still to come");
  }
  EXPECT_EQ(WorkEntries::edit(session, "@1", {"08:00", "", "", {}, false}).workedSeconds, 4 * 3600);
}

TEST_F(WorkEntriesTest, TheNewestIsTheOneMadeLastThenTheLaterStart) {
  const auto first = add("2026-03-03 09:00", "10:00").entry;
  const auto sameInstant = add("2026-03-02 09:00", "10:00").entry;
  Date::ScopedClock later(utc(2026, 3, 5, 12, 1));
  const auto madeLast = add("2026-03-01 09:00", "10:00").entry;
  StoreSession session;
  EXPECT_EQ(WorkEntries::remove(session, "@1").entry->id(), madeLast->id());  // though it starts earliest
  const auto removed = WorkEntries::remove(session, "@2");  // among those made at once, the earlier start
  EXPECT_EQ(removed.entry->id(), sameInstant->id());
  EXPECT_EQ(removed.workedSeconds, 3600);
  EXPECT_EQ(stored().size(), 1u);
  EXPECT_THROW(WorkEntries::remove(session, "@2"), Refusal);
  EXPECT_EQ(stored()[0]->id(), first->id());
  EXPECT_THROW(WorkEntries::remove(session, "@0"), InvalidInput);
}

}  // namespace
}  // namespace quillmont
