#include "core/ledger/DurationFormatting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillmont {
namespace {

using DurationFormatting::accessible;
using DurationFormatting::clock;

TEST(DurationFormatting, ClockRoundsHalfMinutesAwayFromZero) {
  EXPECT_EQ(clock(27000, true), "+7:30");
  EXPECT_EQ(clock(-27000, true), "\u22127:30");
  EXPECT_EQ(clock(0, true), "+0:00");
  EXPECT_EQ(clock(59, true), "+0:01");
  EXPECT_EQ(clock(29, true), "+0:00");
  EXPECT_EQ(clock(30, true), "+0:01");
  EXPECT_EQ(clock(90, true), "+0:02");
  EXPECT_EQ(clock(-30, true), "\u22120:01");
  EXPECT_EQ(clock(3599.9, true), "+1:00");
  EXPECT_EQ(clock(360000, true), "+100:00");
  EXPECT_EQ(clock(3600, false), "1:00");
  EXPECT_EQ(clock(-3600, false), "1:00");
}

TEST(DurationFormatting, SignComesFromTheValueBeforeRounding) {
  EXPECT_EQ(clock(-20, true), "\u22120:00");
  EXPECT_EQ(clock(-0.0, true), "+0:00");
  EXPECT_EQ(accessible(-20), "minus 0 hours, 0 minutes");
  EXPECT_EQ(accessible(-0.0), "plus 0 hours, 0 minutes");
}

TEST(DurationFormatting, UnshowableValuesGivePlaceholders) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(clock(nan, true), "+\u2014");
  EXPECT_EQ(clock(nan, false), "\u2014");
  EXPECT_EQ(clock(-infinity, true), "\u2212\u2014");
  EXPECT_EQ(clock(1e30, true), "+\u2014");
  EXPECT_EQ(accessible(nan), "duration unavailable");
  EXPECT_EQ(accessible(infinity), "duration unavailable");
  EXPECT_EQ(accessible(-1e30), "duration unavailable");
  // 2^62 whole minutes is still shown; the next representable value is not.
  const double limit = std::ldexp(1.0, 62) * 60.0;
  EXPECT_EQ(clock(limit, false), "76861433640456465:04");
  EXPECT_EQ(clock(std::nextafter(limit * 1.0000001, infinity), false), "\u2014");
}

TEST(DurationFormatting, AccessibleSpellsSignAndKeepsPlurals) {
  EXPECT_EQ(accessible(27000), "plus 7 hours, 30 minutes");
  EXPECT_EQ(accessible(-3660), "minus 1 hours, 1 minutes");
  EXPECT_EQ(accessible(0), "plus 0 hours, 0 minutes");
}

}  // namespace
}  // namespace quillmont
