// Worked time of entries: observed intervals, clusters, the day grid and the
// split of worked seconds over days, in zones with daylight saving.
#include "core/engine/WorkIntervals.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "core/engine/TimeBankCalculator.h"

namespace quillmont {
namespace {

using namespace TimeBankCalculator::detail;
using Entries = std::vector<std::shared_ptr<WorkEntry>>;

constexpr double hour = 3600.0;

Calendar calendarIn(const char* zone) { return *Calendar::make(zone); }

// Midnight of the day plus `hours` of elapsed time (not wall-clock time on a daylight-saving day).
Date at(const Calendar& calendar, int year, int month, int day, double hours = 0) {
  return *calendar.date(year, month, day) + hours * hour;
}

std::shared_ptr<WorkEntry> entry(Date start, std::optional<Date> end, std::int64_t breakMinutes = 0) {
  return std::make_shared<WorkEntry>(UUID::random(), start, end, breakMinutes, "", start, start);
}

std::map<Date, TimeInterval> byDay(const Entries& entries, const Calendar& calendar, Date from, Date through,
                                   Date asOf) {
  return workedSecondsByDay(entries, from, through, asOf, calendar);
}

TEST(WorkIntervals, OverlappingTouchingAndRepeatedEntriesCountOnce) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date day = at(berlin, 2026, 3, 2);
  const Date later = day + 48 * hour;
  const auto workedOn = [&](const Entries& entries) { return byDay(entries, berlin, day, day, later)[day]; };

  EXPECT_EQ(workedOn({entry(day + 9 * hour, day + 12 * hour), entry(day + 10 * hour, day + 13 * hour)}), 14'400);
  const Entries repeated{entry(day + 9 * hour, day + 17 * hour, 30), entry(day + 9 * hour, day + 17 * hour, 45)};
  EXPECT_EQ(workedOn(repeated), 26'100);
  const Entries touching{entry(day + 12 * hour, day + 15 * hour, 15), entry(day + 9 * hour, day + 12 * hour, 15)};
  EXPECT_EQ(workedOn(touching), 19'800);

  const auto repeatedClusters = workIntervalClusters(sortedForClustering(observedIntervals(repeated, later)));
  ASSERT_EQ(repeatedClusters.size(), 1u);
  EXPECT_EQ(repeatedClusters[0].breakSecondsByInterval.size(), 1u);
  EXPECT_EQ(repeatedClusters[0].breakSeconds(), 2'700);
  const auto touchingClusters = workIntervalClusters(sortedForClustering(observedIntervals(touching, later)));
  ASSERT_EQ(touchingClusters.size(), 1u);
  EXPECT_EQ(touchingClusters[0].start, day + 9 * hour);
  EXPECT_EQ(touchingClusters[0].end, day + 15 * hour);
  EXPECT_EQ(touchingClusters[0].breakSecondsByInterval.size(), 2u);
  const Entries apart{entry(day + 9 * hour, day + 10 * hour, 90), entry(day + 11 * hour, day + 12 * hour)};
  const auto apartClusters = workIntervalClusters(sortedForClustering(observedIntervals(apart, later)));
  ASSERT_EQ(apartClusters.size(), 2u);
  EXPECT_EQ(apartClusters[0].breakSeconds(), hour);  // capped at the interval's length
  EXPECT_EQ(workedOn(apart), hour);
}

TEST(WorkIntervals, BreaksSpreadOverMidnightAndDaylightSavingNights) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date first = at(berlin, 2026, 3, 2);
  const Date second = at(berlin, 2026, 3, 3);
  EXPECT_EQ(byDay({entry(first + 22 * hour, first + 26 * hour, 60)}, berlin, first, second, second + 48 * hour),
            (std::map<Date, TimeInterval>{{first, 5'400}, {second, 5'400}}));

  // 22:00 to 04:00 over the spring change is five hours: two before midnight.
  const Date saturday = at(berlin, 2026, 3, 28);
  const Date sunday = at(berlin, 2026, 3, 29);
  EXPECT_EQ(byDay({entry(saturday + 22 * hour, saturday + 27 * hour)}, berlin, saturday, sunday, sunday + 24 * hour),
            (std::map<Date, TimeInterval>{{saturday, 2 * hour}, {sunday, 3 * hour}}));

  // Sao Paulo skipped midnight on 2018-11-04: that day starts at 01:00 and
  // lasts 23 hours; the next day starts at midnight again.
  const auto saoPaulo = calendarIn("America/Sao_Paulo");
  const Date november3 = at(saoPaulo, 2018, 11, 3);
  const Date november4 = saoPaulo.startOfDay(november3 + 36 * hour);
  const Date november5 = saoPaulo.startOfDay(november4 + 36 * hour);
  EXPECT_EQ(november4 - november3, 24 * hour);
  EXPECT_EQ(november5 - november4, 23 * hour);
  const Entries night{entry(november3 + 22 * hour, november4 + 2 * hour, 60), entry(november5 - hour, november5 + hour)};
  EXPECT_EQ(byDay(night, saoPaulo, november3, november5, november5 + 24 * hour),
            (std::map<Date, TimeInterval>{{november3, 5'400}, {november4, 5'400 + hour}, {november5, hour}}));
}

TEST(WorkIntervals, RunningFutureAndOutOfRangeEntries) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date day = at(berlin, 2026, 3, 2);
  const Date asOf = day + 10.5 * hour;
  EXPECT_EQ(byDay({entry(day + 8 * hour, std::nullopt)}, berlin, day, day, asOf)[day], 9'000);
  EXPECT_EQ(byDay({entry(day + 8 * hour, day + 18 * hour)}, berlin, day, day, asOf)[day], 2.5 * hour);
  EXPECT_TRUE(byDay({entry(day + 11 * hour, day + 12 * hour)}, berlin, day, day, asOf).empty());
  EXPECT_FALSE(observedInterval(*entry(day + 11 * hour, std::nullopt), asOf).has_value());
  EXPECT_FALSE(observedInterval(*entry(day + 9 * hour, day + 8 * hour), asOf).has_value());
  // A break longer than the entry leaves the day present with nothing worked.
  EXPECT_EQ(byDay({entry(day + 8 * hour, day + 9 * hour, 120)}, berlin, day, day, asOf),
            (std::map<Date, TimeInterval>{{day, 0}}));

  // Only the days from `from` through `through` count.
  const Date next = at(berlin, 2026, 3, 3);
  const Entries reaching{entry(day - 2 * hour, next + 3 * hour)};
  EXPECT_EQ(byDay(reaching, berlin, day, day, next + 24 * hour), (std::map<Date, TimeInterval>{{day, 24 * hour}}));
  EXPECT_EQ(byDay(reaching, berlin, next, next, next + 24 * hour), (std::map<Date, TimeInterval>{{next, 3 * hour}}));
  EXPECT_TRUE(byDay(reaching, berlin, next, day, next + 24 * hour).empty());
}

TEST(WorkIntervals, WorkedSecondsOfOneEntryInsideAnInterval) {
  const auto entryOfEightHours = entry(Date(0), Date(8 * hour), 60);
  EXPECT_EQ(TimeBankCalculator::workedSeconds(*entryOfEightHours, DateInterval(Date(4 * hour), 4 * hour), Date(1e9)), 12'600);
  EXPECT_EQ(TimeBankCalculator::workedSeconds(*entryOfEightHours, DateInterval(Date(9 * hour), hour), Date(1e9)), 0);
  EXPECT_EQ(TimeBankCalculator::workedSeconds(*entryOfEightHours, DateInterval(Date(8 * hour), hour), Date(1e9)), 0);
  // Running, observed at 04:00, asked for its first two hours: half of them and half the break.
  EXPECT_EQ(TimeBankCalculator::workedSeconds(*entry(Date(0), std::nullopt, 60), DateInterval(Date(0), 2 * hour), Date(4 * hour)),
            2 * hour - 1'800);
}

TEST(WorkIntervals, DayGridFindsTheCalendarsDayForAnyInstant) {
  std::mt19937_64 random(7);
  for (const char* zone : {"Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia", "Australia/Lord_Howe"}) {
    SCOPED_TRACE(zone);
    const auto calendar = calendarIn(zone);
    const Date first = at(calendar, 2010, 6, 1, 13);
    const Date last = at(calendar, 2019, 3, 1, 5);
    const DayGrid grid = DayGrid::covering(calendar, first, last);
    ASSERT_EQ(grid.start(0), calendar.startOfDay(first));
    ASSERT_EQ(grid.start(grid.size() - 1), calendar.startOfDay(last));
    std::uniform_real_distribution<double> instant((first - 5 * 86400.0).timeIntervalSinceReferenceDate,
                                                   (last + 5 * 86400.0).timeIntervalSinceReferenceDate);
    for (int i = 0; i < 20'000; ++i) {
      const Date date(instant(random));
      const auto day = grid.dayContaining(date);
      const Date expected = calendar.startOfDay(date);
      if (expected < grid.start(0) || expected > grid.start(grid.size() - 1)) {
        ASSERT_FALSE(day.has_value()) << date.timeIntervalSince1970();
      } else {
        ASSERT_TRUE(day.has_value()) << date.timeIntervalSince1970();
        ASSERT_EQ(grid.start(*day), expected) << date.timeIntervalSince1970();
        ASSERT_EQ(grid.weekday(*day), calendar.weekday(expected));
      }
    }
  }
  const auto berlin = calendarIn("Europe/Berlin");
  EXPECT_TRUE(DayGrid::covering(berlin, Date(0), Date(NAN)).empty());
  EXPECT_TRUE(DayGrid::covering(berlin, Date(86400 * 3), Date(0)).empty());
  EXPECT_EQ(DayGrid::covering(berlin, Date(0), Date(0)).dayContaining(Date(NAN)), std::nullopt);
}

TEST(WorkIntervals, LargeEntrySetsAreSortedForClustering) {
  // Above a few hundred intervals the order comes from buckets of starts; it
  // must agree with the plain ordering, negative, repeated and infinite starts included.
  std::mt19937_64 random(11);
  Entries entries;
  for (int i = 0; i < 5'000; ++i) {
    const double start = static_cast<double>(static_cast<std::int64_t>(random() % 2'000'000) - 1'000'000) * (i % 3 == 0 ? 0.25 : 60.0);
    entries.push_back(entry(Date(start), Date(start + static_cast<double>(1 + random() % 40'000)), static_cast<std::int64_t>(random() % 90)));
    if (i % 7 == 0) entries.push_back(entry(Date(start), Date(start + static_cast<double>(1 + random() % 40'000)), 5));
  }
  entries.push_back(entry(Date(-0.0), Date(10)));
  entries.push_back(entry(Date(0.0), Date(5)));
  entries.push_back(entry(Date(-INFINITY), Date(-5)));
  std::vector<ObservedWorkInterval> expected;
  for (const auto& each : entries) expected.push_back(*observedInterval(*each, Date(1e12)));
  const auto byStartEndBreak = [](const auto& a, const auto& b) {
    return std::tie(a.start, a.end, a.breakSeconds) < std::tie(b.start, b.end, b.breakSeconds);
  };
  std::sort(expected.begin(), expected.end(), byStartEndBreak);
  EXPECT_EQ(sortedForClustering(observedIntervals(entries, Date(1e12))), expected);
  // One far start crowds the rest into a bucket or two.
  entries.push_back(entry(Date(1e11), Date(1e11 + 1)));
  expected.push_back(*observedInterval(*entries.back(), Date(1e12)));
  EXPECT_EQ(sortedForClustering(observedIntervals(entries, Date(1e12))), expected);
}

// For random entries around the autumn change in Berlin: every day's worked
// time lies between 0 and the day's length, and a repeated entry changes nothing.
RC_GTEST_PROP(WorkIntervals, WorkedSecondsStayWithinTheDayAndIgnoreRepeats, ()) {
  static const auto berlin = calendarIn("Europe/Berlin");
  const Date base = at(berlin, 2026, 10, 22);
  Entries entries;
  const int count = *rc::gen::inRange(1, 12);
  for (int i = 0; i < count; ++i) {
    const Date start = base + *rc::gen::inRange(0, 8 * 24 * 60) * 60.0;
    const auto end = *rc::gen::element<std::optional<Date>>(start + *rc::gen::inRange(-60, 40 * 60) * 60.0, std::nullopt);
    entries.push_back(entry(start, end, *rc::gen::inRange(-10, 300)));
  }
  const Date asOf = base + *rc::gen::inRange(0, 9 * 24) * hour;
  const Date from = base + *rc::gen::inRange(0, 4 * 24) * hour;
  const Date through = base + *rc::gen::inRange(3 * 24, 8 * 24) * hour;
  const auto worked = byDay(entries, berlin, from, through, asOf);
  for (const auto& [day, seconds] : worked) {
    const Date next = berlin.startOfDay(*berlin.dateByAddingDays(1, day));
    RC_ASSERT(seconds >= 0);
    RC_ASSERT(seconds <= (next - day) + 1e-6);
  }
  const auto repeated = entries[*rc::gen::inRange<std::size_t>(0, entries.size())];
  entries.push_back(entry(repeated->startedAt(), repeated->endedAt(), repeated->breakMinutes()));
  RC_ASSERT(byDay(entries, berlin, from, through, asOf) == worked);
}

// The total of entries taken together is what the days add up to, whichever
// days the work falls on; so a list's total and a report's agree.
RC_GTEST_PROP(WorkIntervals, TheTotalOfEntriesIsTheSumOfTheirDays, ()) {
  static const auto berlin = calendarIn("Europe/Berlin");
  const Date base = at(berlin, 2026, 10, 22);
  Entries entries;
  for (int i = *rc::gen::inRange(0, 12); i > 0; --i) {
    const Date start = base + *rc::gen::inRange(0, 6 * 24 * 60) * 60.0;
    const auto end = *rc::gen::element<std::optional<Date>>(start + *rc::gen::inRange(-60, 30 * 60) * 60.0, std::nullopt);
    entries.push_back(entry(start, end, *rc::gen::inRange(-10, 300)));
  }
  const Date asOf = base + *rc::gen::inRange(0, 8 * 24) * hour;
  double days = 0;
  for (const auto& [day, seconds] : byDay(entries, berlin, base, base + 9 * 24 * hour, asOf)) days += seconds;
  const double total = TimeBankCalculator::workedSeconds(entries, asOf);
  RC_ASSERT(std::abs(total - days) < 1e-6);
  double separately = 0;
  for (const auto& one : entries) separately += one->workedSeconds(asOf) * (one->startedAt() <= asOf ? 1 : 0);
  RC_ASSERT(total <= separately + 1e-6);
}

TEST(WorkIntervals, TheTotalOfEntriesCountsOverlapsOnce) {
  const auto berlin = calendarIn("Europe/Berlin");
  const Date day = at(berlin, 2026, 3, 2);
  const Date later = day + 48 * hour;
  EXPECT_EQ(TimeBankCalculator::workedSeconds(
                Entries{entry(day + 9 * hour, day + 12 * hour), entry(day + 10 * hour, day + 13 * hour)}, later),
            14'400);
  EXPECT_EQ(TimeBankCalculator::workedSeconds(Entries{entry(day + 22 * hour, day + 26 * hour, 60)}, later), 3 * hour);
  // A running entry counts up to the instant asked about, not beyond.
  EXPECT_EQ(TimeBankCalculator::workedSeconds(Entries{entry(day + 8 * hour, std::nullopt)}, day + 10.5 * hour),
            2.5 * hour);
  EXPECT_EQ(TimeBankCalculator::workedSeconds(Entries{}, later), 0);
}

}  // namespace
}  // namespace quillmont
