#include "app/work/Timer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "app/work/WorkEntries.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using testing::utc;

std::vector<std::shared_ptr<WorkEntry>> stored() {
  StoreSession session;
  return session.context().fetch<WorkEntry>({{}, {{&WorkEntry::startedAt}}});
}

template <class Error>
std::string refused(const std::function<void(StoreSession&)>& action) {
  StoreSession session;
  try {
    action(session);
  } catch (const Error& error) {
    return error.what();
  }
  return "(done)";
}

TEST(Timer, StartsOnceStopsAndCancelsOnlyWhileRunning) {
  testing::ScratchHome home(utc(2026, 3, 5, 12));
  {
    StoreSession session;
    const auto started = Timer::start(session, {"09:00", " design review ", false});
    EXPECT_EQ(started->startedAt(), utc(2026, 3, 5, 9));
    EXPECT_EQ(started->note(), "design review");
    EXPECT_EQ(Timer::running(session)->id(), started->id());
  }
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::start(s, {}); }),
            "The timer is running already, since 2026-03-05 09:00.");
  // A stop before the start, or still to come, changes nothing.
  EXPECT_EQ(refused<InvalidInput>([](StoreSession& s) { Timer::stop(s, "08:59"); }),
            "the timer started at 2026-03-05 09:00, after 2026-03-05 08:59");
  EXPECT_THAT(refused<InvalidInput>([](StoreSession& s) { Timer::stop(s, "12:01"); }), HasSubstr("still to come"));
  {
    StoreSession session;
    EXPECT_EQ(Timer::stop(session, "11:15")->endedAt(), utc(2026, 3, 5, 11, 15));
    EXPECT_EQ(Timer::running(session), nullptr);
  }
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::stop(s, ""); }), "The timer is not running.");
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::cancel(s); }), "The timer is not running.");

  // Continue takes the last note; cancel leaves no trace of the running entry.
  {
    StoreSession session;
    EXPECT_EQ(Timer::resume(session, {"11:30", "ignored", false})->note(), "design review");
    EXPECT_EQ(Timer::cancel(session)->startedAt(), utc(2026, 3, 5, 11, 30));
  }
  ASSERT_EQ(stored().size(), 1u);
  EXPECT_FALSE(stored()[0]->isRunning());
}

TEST(Timer, ToggleStartsOrStopsNow) {
  testing::ScratchHome home(utc(2026, 3, 5, 12));
  StoreSession session;
  const auto first = Timer::toggle(session, false);
  EXPECT_TRUE(first.started);
  EXPECT_EQ(first.entry->startedAt(), utc(2026, 3, 5, 12));
  const auto second = Timer::toggle(session, false);
  EXPECT_FALSE(second.started);
  EXPECT_EQ(second.entry->id(), first.entry->id());
  EXPECT_EQ(second.entry->endedAt(), utc(2026, 3, 5, 12));
}

TEST(Timer, WorkOverlappingTheTimerIsRefusedEitherWayUnlessForced) {
  testing::ScratchHome home(utc(2026, 3, 5, 12));
  {
    StoreSession session;
    WorkEntries::add(session, {"2026-03-05 08:00", "10:00", "", {}, false});
  }
  EXPECT_THAT(refused<Refusal>([](StoreSession& s) { Timer::start(s, {"09:30", "", false}); }),
              HasSubstr("The timer from 2026-03-05 09:30 would overlap work "));
  // A timer's time so far covers what is typed in later.
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::start(s, {"10:00", "", false}); }), "(done)");
  EXPECT_THAT(refused<Refusal>([](StoreSession& s) {
                WorkEntries::add(s, {"2026-03-05 11:00", "11:30", "", {}, false});
              }),
              HasSubstr("2026-03-05 10:00\u2013running"));
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::cancel(s); }), "(done)");
  EXPECT_EQ(refused<Refusal>([](StoreSession& s) { Timer::start(s, {"09:30", "", true}); }), "(done)");
  EXPECT_EQ(stored().size(), 2u);
}

}  // namespace
}  // namespace quillmont
