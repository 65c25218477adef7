#include "app/settings/Schedules.h"

#include <gtest/gtest.h>

#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "app/testing/ScratchHome.h"

namespace quillmont {
namespace {

using testing::utc;

TEST(Schedules, ListedByFirstDayAndNamedByPlaceAmongTheNewest) {
  testing::ScratchHome home(utc(2026, 3, 20, 9));
  StoreSession session;
  const auto april = Schedules::add(session, {{2026, 4, 1}, {360, 360, 360, 360, 360, 0, 0}, "2026-04-01"});
  EXPECT_EQ(april->effectiveFrom(), utc(2026, 4, 1));
  const auto february = Schedules::add(session, {{2026, 2, 1}, {420, 420, 420, 420, 420, 0, 0}, ""});
  const auto listed = Schedules::list(session);
  ASSERT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed[0]->id(), february->id());
  // Made at the same instant: the later first day is the newer.
  EXPECT_EQ(Schedules::remove(session, "@2")->id(), february->id());
  EXPECT_THROW(Schedules::remove(session, "@2"), Refusal);
  ASSERT_EQ(Schedules::list(session).size(), 1u);
  EXPECT_EQ(Schedules::list(session)[0]->weekdayMinutes()[0], 360);
}

}  // namespace
}  // namespace quillmont
