#include "core/engine/WorkOverlap.h"

#include <gtest/gtest.h>

#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

constexpr double hour = 3600.0;
const Date day(800'000'000);  // any instant: the rule knows no calendar

std::shared_ptr<WorkEntry> entry(double start, std::optional<double> end, UUID id = UUID::random()) {
  return std::make_shared<WorkEntry>(id, day + start * hour, end ? std::optional(day + *end * hour) : std::nullopt, 0,
                                     "", day, day);
}

WorkOverlap::Span hours(double start, double end) { return {day + start * hour, day + end * hour}; }

TEST(WorkOverlap, SpansOverlapWhenEachStartsBeforeTheOtherEnds) {
  using WorkOverlap::overlaps;
  EXPECT_TRUE(overlaps(hours(9, 12), hours(11, 13)));
  EXPECT_TRUE(overlaps(hours(9, 17), hours(10, 11)));   // inside
  EXPECT_TRUE(overlaps(hours(9, 17), hours(9, 17)));    // typed twice
  EXPECT_FALSE(overlaps(hours(9, 12), hours(12, 15)));  // one ends as the next begins
  EXPECT_FALSE(overlaps(hours(9, 12), hours(13, 15)));
  // A timer started just now lies inside work that goes on, not at its edges.
  EXPECT_TRUE(overlaps(hours(10, 10), hours(9, 17)));
  EXPECT_FALSE(overlaps(hours(9, 9), hours(9, 17)));
  EXPECT_FALSE(overlaps(hours(17, 17), hours(9, 17)));
}

TEST(WorkOverlap, ARunningEntrySpansUpToNow) {
  const Date now = day + 12 * hour;
  EXPECT_EQ(WorkOverlap::span(*entry(8, std::nullopt), now), hours(8, 12));
  // Started later than now (a clock set back): no length, never negative.
  EXPECT_EQ(WorkOverlap::span(*entry(13, std::nullopt), now), hours(13, 13));
  EXPECT_EQ(WorkOverlap::span(*entry(9, 8), now), hours(9, 9));
}

TEST(WorkOverlap, FindsTheStoredEntriesThatOverlapLeavingOutTheOneChanged) {
  ModelContext context(QuillmontPersistence::makeContainer(true, false, false));
  const UUID edited = UUID::random();
  const auto morning = entry(8, 12);
  const auto afternoon = entry(13, 17);
  const auto running = entry(18, std::nullopt);
  context.insert(afternoon);
  context.insert(morning);
  context.insert(running);
  context.insert(entry(11, 14, edited));
  context.insert(entry(11, 14, edited));  // a copy from another machine
  context.save();
  const Date now = day + 20 * hour;

  ModelContext reader(context.container());  // rows chosen by SQL
  for (ModelContext* where : {&context, &reader}) {
    EXPECT_EQ(WorkOverlap::overlapping(*where, hours(11, 14), now, edited).size(), 2u);
    const auto both = WorkOverlap::overlapping(*where, hours(11, 14), now, edited);
    EXPECT_EQ(both[0]->id(), morning->id());
    EXPECT_EQ(both[1]->id(), afternoon->id());
    EXPECT_EQ(WorkOverlap::overlapping(*where, hours(12, 13), now, edited).size(), 0u);
    EXPECT_EQ(WorkOverlap::overlapping(*where, hours(12, 13), now, std::nullopt).size(), 2u);  // the edited ones
    ASSERT_EQ(WorkOverlap::overlapping(*where, hours(19, 21), now, std::nullopt).size(), 1u);
    EXPECT_EQ(WorkOverlap::overlapping(*where, hours(20, 21), now, std::nullopt).size(), 0u);  // the timer is at 20:00
  }
}

}  // namespace
}  // namespace quillmont
