// The balance engine: day balances, schedule precedence, the running and
// ledger balances, the calculation bounds, and a comparison of dayBalances
// with a literal day-by-day implementation in zones with daylight saving.
#include "core/engine/TimeBankCalculator.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <tuple>

#include "core/engine/TimeBankDateBounds.h"

namespace quillmont {
namespace {

using Entries = std::vector<std::shared_ptr<WorkEntry>>;
using Adjustments = std::vector<std::shared_ptr<BalanceAdjustment>>;
using Schedules = std::vector<std::shared_ptr<WorkSchedule>>;
using Minutes = std::vector<std::int64_t>;

constexpr double hour = 3600.0;

Date at(const Calendar& calendar, int year, int month, int day, double hours = 0) {
  return *calendar.date(year, month, day) + hours * hour;
}

std::shared_ptr<WorkEntry> entry(Date start, std::optional<Date> end, std::int64_t breakMinutes = 0) {
  return std::make_shared<WorkEntry>(UUID::random(), start, end, breakMinutes, "", start, start);
}

std::shared_ptr<BalanceAdjustment> adjustment(Date date, std::int64_t minutes) {
  return std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, "", BalanceAdjustmentKind::manual, date, date);
}

std::shared_ptr<WorkSchedule> schedule(Date effectiveFrom, const Minutes& minutes, Date modifiedAt = Date(0),
                                       Date createdAt = Date(0), UUID id = UUID::random()) {
  return std::make_shared<WorkSchedule>(id, effectiveFrom, minutes, createdAt, modifiedAt);
}

TimeBankSettings settings(Date calculationStart, const Minutes& weekdays = {480, 480, 480, 480, 480, 0, 0},
                          std::int64_t startingBalance = 0) {
  return TimeBankSettings(UUID::random(), calculationStart, startingBalance, weekdays, {}, "", "[]", true, Date(0));
}

TEST(TimeBankDateBounds, CalculationsStartIn2000AtTheEarliestAndNeverAfterThrough) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date newYear2000 = at(berlin, 2000, 1, 1);
  EXPECT_EQ(TimeBankDateBounds::earliestCalculationDate(berlin), newYear2000);
  EXPECT_EQ(newYear2000, TimeBankDateBounds::fallbackEarliestCalculationDate - hour);
  const Date through = at(berlin, 2026, 3, 4, 8);
  EXPECT_EQ(TimeBankDateBounds::normalizedCalculationStartDate(at(berlin, 1995, 6, 1), through, berlin), newYear2000);
  EXPECT_EQ(TimeBankDateBounds::normalizedCalculationStartDate(at(berlin, 2026, 3, 2, 9.5), through, berlin),
            at(berlin, 2026, 3, 2));
  EXPECT_EQ(TimeBankDateBounds::normalizedCalculationStartDate(at(berlin, 2027, 1, 1), through, berlin),
            at(berlin, 2026, 3, 4));

  // Day balances of a start in 1995 begin on 1 January 2000.
  const auto days = TimeBankCalculator::dayBalances({}, {}, {}, settings(at(berlin, 1995, 6, 1)), at(berlin, 2000, 1, 3), berlin);
  ASSERT_EQ(days.size(), 3u);
  EXPECT_EQ(days.front().date, newYear2000);
}

TEST(TimeBankCalculator, DayBalancesRunFromTheCalculationStartThroughTheDayOfThrough) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date monday = at(berlin, 2026, 3, 2);
  const Date wednesday = at(berlin, 2026, 3, 4);
  const Date through = wednesday + 8 * hour;
  const Entries entries{entry(monday + 9 * hour, monday + 17 * hour, 30), entry(wednesday + 7 * hour, std::nullopt)};
  const Adjustments adjustments{adjustment(wednesday + 23 * hour + 59 * 60, 90), adjustment(monday - hour, -600),
                                adjustment(monday + 12 * hour, -15), adjustment(monday + 13 * hour, 30)};
  const auto record = settings(monday + 9.5 * hour, {480, 480, 240, 0, 0, 0, 0}, -120);

  const auto days = TimeBankCalculator::dayBalances(entries, adjustments, {}, record, through, berlin);
  EXPECT_EQ(days, (std::vector<DayBalance>{{monday, 27'000, 900, 28'800},
                                           {at(berlin, 2026, 3, 3), 0, 0, 28'800},
                                           {wednesday, hour, 5'400, 14'400}}));
  EXPECT_EQ(days[0].balanceSeconds(), -900);
  EXPECT_EQ(days[0].id(), monday);
  EXPECT_EQ(TimeBankCalculator::balanceSeconds(entries, adjustments, {}, record, through, berlin),
            -7'200 + (-900 - 28'800 + (3'600 + 5'400 - 14'400)));

  // The ledger counts to the instant, before the calculation start too.
  EXPECT_EQ(TimeBankCalculator::ledgerBalanceSeconds(adjustments, -120, through), (-120 - 600 - 15 + 30) * 60.0);
  EXPECT_EQ(TimeBankCalculator::ledgerBalanceSeconds(adjustments, 0, wednesday + 24 * hour), (90 - 600 - 15 + 30) * 60.0);

  // A start after the day of through: no days, the starting balance alone.
  const auto late = settings(wednesday + 24 * hour, {}, -120);
  EXPECT_TRUE(TimeBankCalculator::dayBalances(entries, adjustments, {}, late, through, berlin).empty());
  EXPECT_EQ(TimeBankCalculator::balanceSeconds(entries, adjustments, {}, late, through, berlin), -7'200);
  EXPECT_TRUE(TimeBankCalculator::dayBalances(entries, adjustments, {}, record, Date(NAN), berlin).empty());
}

TEST(TimeBankCalculator, NothingIsExpectedOnPublicHolidays) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date monday = at(berlin, 2026, 3, 2);
  const Date tuesday = at(berlin, 2026, 3, 3);
  const Date through = at(berlin, 2026, 3, 4, 20);
  const Entries entries{entry(tuesday + 9 * hour, tuesday + 11 * hour)};
  const Adjustments adjustments{adjustment(tuesday + 12 * hour, 30)};
  const auto record = settings(monday);
  const auto plain = TimeBankCalculator::dayBalances(entries, adjustments, {}, record, through, berlin);

  // Any instant of the day marks it; a day outside the range, or a day
  // listed twice, changes nothing else. Worked time and bookings stay.
  const std::vector<Date> holidays{tuesday + 23 * hour, at(berlin, 2026, 2, 1), tuesday};
  const auto days = TimeBankCalculator::dayBalances(entries, adjustments, {}, record, through, berlin, holidays);
  ASSERT_EQ(days.size(), 3u);
  EXPECT_EQ(days[0], plain[0]);
  EXPECT_EQ(days[1], (DayBalance{tuesday, 2 * hour, 1'800, 0}));
  EXPECT_EQ(days[2], plain[2]);
  EXPECT_EQ(TimeBankCalculator::balanceSeconds(entries, adjustments, {}, record, through, berlin, holidays),
            TimeBankCalculator::balanceSeconds(entries, adjustments, {}, record, through, berlin) + 8 * hour);
  // No holidays is the rule of the schedules alone.
  EXPECT_EQ(TimeBankCalculator::dayBalances(entries, adjustments, {}, record, through, berlin, {}), plain);
}

TEST(TimeBankCalculator, SchedulePrecedenceAndClampedMinutes) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const Date sunday = at(berlin, 2026, 3, 8);
  const Date monday = at(berlin, 2026, 3, 9);
  const auto record = settings(sunday, {1, 2, 3, 4, 5, 6, 7});
  const auto minutesOn = [&](Date day, const Schedules& schedules) {
    return TimeBankCalculator::scheduledMinutes(day + 10 * hour, record, schedules, berlin);
  };
  EXPECT_EQ(minutesOn(sunday, {}), 7);
  EXPECT_EQ(minutesOn(monday, {}), 1);
  const auto fromSundayAfternoon = schedule(sunday + 15 * hour, {10, 0, 0, 0, 0, 0, 70});
  EXPECT_EQ(minutesOn(sunday, {fromSundayAfternoon}), 70);
  EXPECT_EQ(minutesOn(sunday - 24 * hour, {fromSundayAfternoon}), 6);

  // Same day of effect: later modification, then later creation, then the
  // greater identifier text, then the first listed.
  const UUID low = *UUID::parse("0000000a-0000-4000-8000-000000000000");
  const UUID high = *UUID::parse("A0000000-0000-4000-8000-000000000000");
  const auto modifiedLater = schedule(monday + hour, {101}, Date(2), Date(0), low);
  const auto effectiveLaterSameDay = schedule(monday + 20 * hour, {102}, Date(1), Date(9), high);
  EXPECT_EQ(minutesOn(monday, {modifiedLater, effectiveLaterSameDay}), 101);
  EXPECT_EQ(minutesOn(monday, {effectiveLaterSameDay, modifiedLater}), 101);
  const auto createdLater = schedule(monday, {103}, Date(2), Date(1), low);
  EXPECT_EQ(minutesOn(monday, {createdLater, modifiedLater}), 103);
  const auto greaterId = schedule(monday, {104, 44}, Date(2), Date(1), high);
  EXPECT_EQ(minutesOn(monday, {createdLater, greaterId}), 104);
  const auto fullTie = schedule(monday, {105}, Date(2), Date(1), high);
  EXPECT_EQ(minutesOn(monday, {fullTie, createdLater, greaterId}), 105);
  EXPECT_EQ(minutesOn(monday, {greaterId, fullTie}), 104);
  // A later day of effect wins whatever its other keys.
  const auto nextDay = schedule(monday + 24 * hour, {0, 106}, Date(-5), Date(-5), low);
  EXPECT_EQ(minutesOn(monday + 24 * hour, {greaterId, nextDay}), 106);
  EXPECT_EQ(minutesOn(monday, {greaterId, nextDay}), 104);

  auto outOfRange = schedule(monday - 48 * hour, {});
  outOfRange->setMondayMinutes(2000);
  outOfRange->setTuesdayMinutes(-30);
  EXPECT_EQ(minutesOn(monday, {outOfRange}), 1440);
  EXPECT_EQ(minutesOn(monday + 24 * hour, {outOfRange}), 0);

  // The same choices drive the expected seconds of day balances, for
  // schedules effective before the first day as well as during the range.
  const auto days = TimeBankCalculator::dayBalances({}, {}, Schedules{nextDay, fullTie, greaterId, outOfRange, createdLater},
                                                    settings(monday), monday + 30 * hour, berlin);
  ASSERT_EQ(days.size(), 2u);
  EXPECT_EQ(days[0].expectedSeconds, 105 * 60);
  EXPECT_EQ(days[1].expectedSeconds, 106 * 60);
  const auto fromBefore = TimeBankCalculator::dayBalances({}, {}, Schedules{outOfRange, createdLater, greaterId},
                                                          settings(monday + 24 * hour), monday + 30 * hour, berlin);
  ASSERT_EQ(fromBefore.size(), 1u);
  EXPECT_EQ(fromBefore[0].expectedSeconds, 44 * 60);
}

TEST(TimeBankCalculator, LedgerDayBalancesCoverTheIntervalWithoutItsEnd) {
  const auto saoPaulo = *Calendar::make("America/Sao_Paulo");
  const Date monday = at(saoPaulo, 2018, 10, 29);
  const Date nextMonday = saoPaulo.startOfDay(monday + 7 * 24 * hour);  // the week holding the skipped midnight
  const Adjustments adjustments{adjustment(nextMonday, 60), adjustment(monday, 15), adjustment(monday + 3 * hour, 30),
                                adjustment(monday + 6 * 24 * hour, -45)};
  const auto days = TimeBankCalculator::ledgerDayBalances(adjustments, DateInterval::between(monday, nextMonday), saoPaulo);
  ASSERT_EQ(days.size(), 7u);
  EXPECT_EQ(days[0], (DayBalance{monday, 0, 2'700, 0}));
  EXPECT_EQ(days[6].date, saoPaulo.startOfDay(monday + 6 * 24 * hour));
  EXPECT_EQ(days[6].adjustmentSeconds, -2'700);
  EXPECT_EQ(nextMonday - days[6].date, 23 * hour);  // Sunday 4 November starts at 01:00
  EXPECT_TRUE(TimeBankCalculator::ledgerDayBalances(adjustments, DateInterval(monday, 0), saoPaulo).empty());
  EXPECT_EQ(TimeBankCalculator::ledgerDayBalances(adjustments, DateInterval(monday + hour, 0), saoPaulo).size(), 1u);
}

// ---- A literal implementation: every day by calendar addition, every
// schedule and adjustment through its own calendar call. ----

Date nextDay(const Calendar& calendar, Date day) {
  // Days start at their first instant; after a skipped midnight the
  // following days start at midnight again.
  return calendar.startOfDay(*calendar.dateByAddingDays(1, day));
}

std::map<Date, double> literalWorkedByDay(const Entries& entries, Date firstDay, Date lastDay, Date asOf,
                                          const Calendar& calendar) {
  std::vector<std::tuple<Date, Date, double>> observed;
  for (const auto& each : entries) {
    Date end = each->endedAt().value_or(asOf);
    if (asOf < end) end = asOf;
    if (!(end > each->startedAt()) || each->startedAt() > asOf) continue;
    observed.emplace_back(each->startedAt(), end, std::min(static_cast<double>(std::max<std::int64_t>(each->breakMinutes(), 0)) * 60.0, end - each->startedAt()));
  }
  std::sort(observed.begin(), observed.end());
  struct Cluster { Date start, end; std::map<std::pair<Date, Date>, double> breaks; };
  std::vector<Cluster> clusters;
  for (const auto& [start, end, breakSeconds] : observed) {
    if (clusters.empty() || start > clusters.back().end) clusters.push_back({start, end, {}});
    auto& cluster = clusters.back();
    cluster.end = std::max(cluster.end, end);
    auto& stored = cluster.breaks[{start, end}];
    stored = std::max(stored, breakSeconds);
  }
  std::map<Date, double> worked;
  for (const auto& cluster : clusters) {
    const double length = cluster.end - cluster.start;
    if (!(length > 0)) continue;
    double breaks = 0;
    for (const auto& [key, seconds] : cluster.breaks) breaks += seconds;
    const double factor = std::clamp((length - breaks) / length, 0.0, 1.0);
    const Date last = std::min(calendar.startOfDay(cluster.end), lastDay);
    for (Date day = std::max(calendar.startOfDay(cluster.start), firstDay); day <= last;) {
      const Date next = nextDay(calendar, day);
      const Date segmentStart = std::max(day, cluster.start);
      const Date segmentEnd = std::min(next, cluster.end);
      if (segmentEnd > segmentStart) worked[day] += factor * (segmentEnd - segmentStart);
      day = next;
    }
  }
  return worked;
}

std::int64_t literalScheduledMinutes(Date date, const TimeBankSettings& record, const Schedules& schedules,
                                     const Calendar& calendar) {
  const Date day = calendar.startOfDay(date);
  const WorkSchedule* choice = nullptr;
  const auto key = [&](const WorkSchedule& each) {
    return std::make_tuple(calendar.startOfDay(each.effectiveFrom()), each.modifiedAt(), each.createdAt(), each.id().uuidString());
  };
  for (const auto& each : schedules) {
    if (calendar.startOfDay(each->effectiveFrom()) > day) continue;
    if (choice == nullptr || key(*each) > key(*choice)) choice = each.get();
  }
  const auto index = static_cast<std::size_t>((calendar.weekday(day) + 5) % 7);
  return std::clamp<std::int64_t>(choice != nullptr ? choice->weekdayMinutes()[index] : record.weekdayMinutes()[index], 0, 1440);
}

std::vector<DayBalance> literalDayBalances(const Entries& entries, const Adjustments& adjustments,
                                           const Schedules& schedules, const TimeBankSettings& record, Date through,
                                           const Calendar& calendar) {
  const Date earliest = *calendar.date(2000, 1, 1);
  const Date firstDay = calendar.startOfDay(std::max(earliest, record.calculationStartDate()));
  const Date lastDay = calendar.startOfDay(through);
  std::map<Date, double> adjusted;
  for (const auto& each : adjustments) adjusted[calendar.startOfDay(each->date())] += static_cast<double>(each->minutes()) * 60.0;
  auto worked = literalWorkedByDay(entries, firstDay, lastDay, through, calendar);
  std::vector<DayBalance> days;
  for (Date day = firstDay; day <= lastDay; day = nextDay(calendar, day)) {
    const auto expected = static_cast<double>(literalScheduledMinutes(day, record, schedules, calendar) * 60);
    days.push_back({day, worked.count(day) != 0 ? worked[day] : 0, adjusted.count(day) != 0 ? adjusted[day] : 0, expected});
  }
  return days;
}

// Random histories around daylight-saving changes (and around 1 January
// 2000), with overlapping and repeated entries, schedules that tie on some or
// all keys, and weekday minutes out of range.
RC_GTEST_PROP(TimeBankCalculator, DayBalancesEqualTheLiteralComputation, ()) {
  struct Window { const char* zone; int year, month, day; };
  static const std::vector<Window> windows{{"Europe/Berlin", 2026, 3, 25}, {"Europe/Berlin", 2026, 10, 21},
                                           {"America/Sao_Paulo", 2018, 10, 31}, {"America/Sao_Paulo", 2019, 2, 13},
                                           {"Europe/Berlin", 1999, 12, 28}};
  const Window window = *rc::gen::elementOf(windows);
  const auto calendar = *Calendar::make(window.zone);
  const Date base = *calendar.date(window.year, window.month, window.day);
  const auto instant = [&](int fromDay, int toDay) {
    // Whole minutes, sometimes exactly a midnight or a fraction of a second off.
    const Date date = base + *rc::gen::inRange(fromDay * 1440, toDay * 1440) * 60.0;
    return *rc::gen::element(date, calendar.startOfDay(date), date + 0.25);
  };
  const auto weekdays = [&] {
    Minutes minutes;
    for (int i = 0; i < 7; ++i) minutes.push_back(*rc::gen::inRange<std::int64_t>(-60, 1600));
    return minutes;
  };

  Entries entries;
  // Now and then enough entries to take the bucketed ordering of large sets.
  for (int i = *rc::gen::inRange(0, 10) + (*rc::gen::inRange(0, 8) == 0 ? 400 : 0); i > 0; --i) {
    const Date start = instant(-1, 9);
    const std::optional<Date> end = *rc::gen::element<std::optional<Date>>(start + *rc::gen::inRange(-30, 1800) * 60.0, std::nullopt);
    entries.push_back(entry(start, end, *rc::gen::inRange(-10, 400)));
    if (*rc::gen::inRange(0, 4) == 0) entries.push_back(entry(start, end, *rc::gen::inRange(0, 60)));
  }
  Adjustments adjustments;
  for (int i = *rc::gen::inRange(0, 10); i > 0; --i) adjustments.push_back(adjustment(instant(-2, 10), *rc::gen::inRange(-600, 600)));
  static const std::vector<UUID> ids{*UUID::parse("00000000-0000-4000-8000-00000000000A"),
                                     *UUID::parse("0000000B-0000-4000-8000-000000000000"),
                                     *UUID::parse("C0000000-0000-4000-8000-000000000000")};
  Schedules schedules;
  for (int i = *rc::gen::inRange(0, 7); i > 0; --i) {
    auto each = schedule(instant(-4, 10), {}, Date(*rc::gen::inRange(0, 2)), Date(*rc::gen::inRange(0, 2)), *rc::gen::elementOf(ids));
    const Minutes minutes = weekdays();
    each->setMondayMinutes(minutes[0]);
    each->setTuesdayMinutes(minutes[1]);
    each->setWednesdayMinutes(minutes[2]);
    each->setThursdayMinutes(minutes[3]);
    each->setFridayMinutes(minutes[4]);
    each->setSaturdayMinutes(minutes[5]);
    each->setSundayMinutes(minutes[6]);
    schedules.push_back(each);
  }
  auto record = settings(instant(-3, 6), weekdays());
  record.setWednesdayMinutes(*rc::gen::inRange<std::int64_t>(-60, 1600));
  const Date through = instant(0, 9);

  const auto fast = TimeBankCalculator::dayBalances(entries, adjustments, schedules, record, through, calendar);
  RC_ASSERT(fast == literalDayBalances(entries, adjustments, schedules, record, through, calendar));
  const Date day = instant(-5, 10);
  RC_ASSERT(TimeBankCalculator::scheduledMinutes(day, record, schedules, calendar) ==
            literalScheduledMinutes(day, record, schedules, calendar));
}

}  // namespace
}  // namespace quillmont
