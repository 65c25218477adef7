#include "app/settings/ScheduleEdits.h"

#include <gtest/gtest.h>

#include "app/Refusal.h"
#include "app/housekeeping/Housekeeping.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

using testing::utc;

TEST(ScheduleEdits, ChangesTheFirstDayAndWeekInPlaceAndUndoTakesItBack) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  StoreSession session;
  const auto made = Schedules::add(session, {{2026, 4, 1}, {360, 360, 360, 360, 360, 0, 0}, "2026-04-01"});
  const auto other = Schedules::add(session, {{2026, 5, 1}, {480, 480, 480, 480, 480, 0, 0}, "2026-05-01"});

  ScheduleEdits::change(session, made->id().uuidString().substr(0, 8), {{2026, 3, 2}, {240, 240, 240, 240, 240, 60, 0}, ""});
  const auto listed = Schedules::list(session);
  ASSERT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed[0]->id(), made->id());
  EXPECT_EQ(listed[0]->effectiveFrom(), utc(2026, 3, 2));
  EXPECT_EQ(listed[0]->weekdayMinutes()[5], 60);
  EXPECT_EQ(listed[1]->id(), other->id());
  EXPECT_EQ(listed[1]->weekdayMinutes()[0], 480);  // the other stays

  EXPECT_EQ(Housekeeping::undo(session).name.rfind("schedule edit", 0), 0u);
  EXPECT_EQ(Schedules::list(session)[0]->effectiveFrom(), utc(2026, 4, 1));
  EXPECT_EQ(Schedules::list(session)[0]->weekdayMinutes()[0], 360);
  EXPECT_THROW(ScheduleEdits::change(session, "0000", {{2026, 3, 2}, {}, ""}), Refusal);
}

}  // namespace
}  // namespace quillmont
