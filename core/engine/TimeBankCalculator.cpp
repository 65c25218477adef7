#include "core/engine/TimeBankCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numeric>
#include <optional>
#include <utility>

#include "core/engine/TimeBankDateBounds.h"
#include "core/engine/WorkIntervals.h"
#include "core/ledger/WeekdayMinutes.h"

namespace quillmont::TimeBankCalculator {
namespace detail {
namespace {

constexpr TimeInterval nominalDaySeconds = 86400.0;

TimeInterval breakSecondsOf(const WorkEntry& entry) {
  return static_cast<TimeInterval>(std::max<std::int64_t>(entry.breakMinutes(), 0)) * 60.0;
}

bool precedesForClustering(const ObservedWorkInterval& a, const ObservedWorkInterval& b) {
  if (a.start != b.start) return a.start < b.start;
  if (a.end != b.end) return a.end < b.end;
  return a.breakSeconds < b.breakSeconds;
}

// Insertion sort of positions by the intervals they point to; for the few
// intervals that share a bucket.
void insertionSort(std::span<std::uint32_t> order, std::span<const ObservedWorkInterval> intervals) {
  for (std::size_t item = 1; item < order.size(); ++item) {
    const std::uint32_t value = order[item];
    std::size_t hole = item;
    for (; hole > 0 && precedesForClustering(intervals[value], intervals[order[hole - 1]]); --hole) order[hole] = order[hole - 1];
    order[hole] = value;
  }
}

}  // namespace

TimeInterval netFactor(TimeInterval length, TimeInterval breakSeconds) {
  // Written so that an unbounded cluster keeps the factor 1 instead of inf / inf.
  const TimeInterval net = length - breakSeconds;
  return net >= length ? 1.0 : net <= 0 ? 0.0 : net / length;
}

TimeInterval clusteredWorkedSeconds(std::span<const ObservedWorkInterval> intervals) {
  TimeInterval total = 0;
  for (const WorkIntervalCluster& cluster : workIntervalClusters(sortedForClustering(intervals))) {
    const TimeInterval length = cluster.end - cluster.start;
    if (length > 0) total += netFactor(length, cluster.breakSeconds()) * length;
  }
  return total;
}

TimeInterval WorkIntervalCluster::breakSeconds() const {
  TimeInterval total = 0;
  for (const auto& [key, seconds] : breakSecondsByInterval) total += seconds;
  return total;
}

DayGrid DayGrid::covering(const Calendar& calendar, Date first, Date last) {
  DayGrid grid;
  const Date lastDay = calendar.startOfDay(last);
  // The day after the last closes the grid; without it the last day is only
  // a boundary and drops out.
  const std::optional<Date> dayAfter = calendar.dateByAddingDays(1, lastDay);
  grid.boundaries_ = calendar.days(first, dayAfter.value_or(lastDay));
  if (grid.boundaries_.size() < 2) grid.boundaries_.clear();
  return grid;
}

std::size_t DayGrid::boundariesUpTo(Date date) const {
  const std::size_t count = boundaries_.size();
  if (count == 0) return 0;
  if (date != date) return count;
  if (date < boundaries_[0].start) return 0;
  const TimeInterval daysIn = (date - boundaries_[0].start) * (1.0 / nominalDaySeconds);

  // Days last 24 hours give or take a daylight-saving hour, so the nominal
  // guess is mostly right and otherwise a step or two off; gallop from it to
  // a bracket [low, high) with boundaries_[low] <= date < boundaries_[high].
  const std::size_t guess = daysIn < static_cast<TimeInterval>(count - 1) ? static_cast<std::size_t>(daysIn) : count - 1;
  if (boundaries_[guess].start <= date && (guess + 1 == count || date < boundaries_[guess + 1].start)) return guess + 1;
  std::size_t low = guess;
  std::size_t high = guess + 1;
  std::size_t step = 1;
  if (boundaries_[guess].start <= date) {
    while (high < count && boundaries_[high].start <= date) {
      low = high;
      high = std::min(count, high + step);
      step *= 2;
    }
  } else {
    high = guess;
    low = guess - 1;  // boundaries_[0] <= date, so the guess is not 0
    while (boundaries_[low].start > date) {
      high = low;
      low = low > step ? low - step : 0;
      step *= 2;
    }
  }
  const auto first = boundaries_.begin() + static_cast<std::ptrdiff_t>(low) + 1;
  const auto last = boundaries_.begin() + static_cast<std::ptrdiff_t>(high);
  const auto found = std::upper_bound(first, last, date, [](Date value, const Calendar::Day& day) { return value < day.start; });
  return static_cast<std::size_t>(found - boundaries_.begin());
}

std::optional<std::size_t> DayGrid::dayContaining(Date date) const {
  const std::size_t boundaries = boundariesUpTo(date);
  if (boundaries == 0 || boundaries > size()) return std::nullopt;
  return boundaries - 1;
}

std::optional<ObservedWorkInterval> observedInterval(const WorkEntry& entry, Date asOf) {
  const Date start = entry.startedAt();
  Date end = entry.endedAt().value_or(asOf);
  if (asOf < end) end = asOf;
  if (!(end > start) || start > asOf) return std::nullopt;
  return ObservedWorkInterval{start, end, std::min(breakSecondsOf(entry), end - start)};
}

std::vector<ObservedWorkInterval> observedIntervals(std::span<const std::shared_ptr<WorkEntry>> entries, Date asOf) {
  std::vector<ObservedWorkInterval> intervals;
  intervals.reserve(entries.size());
  for (const auto& entry : entries) {
    if (auto interval = observedInterval(*entry, asOf)) intervals.push_back(*interval);
  }
  return intervals;
}

std::vector<std::uint32_t> clusteringOrder(std::span<const ObservedWorkInterval> intervals) {
  const std::size_t count = intervals.size();
  std::vector<std::uint32_t> order(count);
  const auto byInterval = [&](std::uint32_t a, std::uint32_t b) { return precedesForClustering(intervals[a], intervals[b]); };
  // Stores mostly hand out entries in the order they were made.
  std::iota(order.begin(), order.end(), 0u);
  if (std::is_sorted(intervals.begin(), intervals.end(), precedesForClustering)) return order;

  // A bucket sort of positions: buckets of equal width between the earliest
  // and the latest finite start (a monotonic bucket function, so buckets are
  // in order), then the few positions of each bucket sorted by the full
  // order. Positions are moved instead of intervals to keep the scratch
  // memory small; a skewed spread of starts only makes buckets larger.
  std::optional<Date> lowest;
  std::optional<Date> highest;
  for (const ObservedWorkInterval& interval : intervals) {
    if (!std::isfinite(interval.start.timeIntervalSinceReferenceDate)) continue;
    if (!lowest || interval.start < *lowest) lowest = interval.start;
    if (!highest || interval.start > *highest) highest = interval.start;
  }
  const TimeInterval range = lowest ? *highest - *lowest : 0;
  if (count < 256 || !(range > 0) || !std::isfinite(range)) {
    std::sort(order.begin(), order.end(), byInterval);
    return order;
  }
  const std::size_t bucketCount = count / 4 + 1;
  const TimeInterval scale = static_cast<TimeInterval>(bucketCount) / range;
  const auto bucketOf = [&](Date start) -> std::size_t {
    if (start <= *lowest) return 0;
    if (start >= *highest) return bucketCount - 1;
    return std::min(static_cast<std::size_t>((start - *lowest) * scale), bucketCount - 1);
  };
  // ends[b] counts up to where bucket b starts, then, as positions are
  // placed, moves on to where it ends.
  std::vector<std::uint32_t> ends(bucketCount, 0);
  for (const ObservedWorkInterval& interval : intervals) ++ends[bucketOf(interval.start)];
  std::uint32_t offset = 0;
  for (std::uint32_t& end : ends) offset += std::exchange(end, offset);
  for (std::uint32_t position = 0; position < count; ++position) order[ends[bucketOf(intervals[position].start)]++] = position;

  // The positions of a bucket point anywhere into the intervals; fetching
  // the intervals a few buckets ahead overlaps those cache misses.
  constexpr std::size_t prefetchDistance = 24;
  for (std::size_t position = 0; position < std::min(prefetchDistance, count); ++position) {
    __builtin_prefetch(&intervals[order[position]]);
  }
  std::uint32_t begin = 0;
  for (const std::uint32_t end : ends) {
    for (std::size_t ahead = begin + prefetchDistance; ahead < std::min<std::size_t>(end + prefetchDistance, count); ++ahead) {
      __builtin_prefetch(&intervals[order[ahead]]);
    }
    const std::span<std::uint32_t> bucket(order.data() + begin, end - begin);
    if (bucket.size() > 16) {
      std::sort(bucket.begin(), bucket.end(), byInterval);
    } else if (bucket.size() > 1) {
      insertionSort(bucket, intervals);
    }
    begin = end;
  }
  return order;
}

std::vector<ObservedWorkInterval> sortedForClustering(std::span<const ObservedWorkInterval> intervals) {
  std::vector<ObservedWorkInterval> sorted;
  sorted.reserve(intervals.size());
  for (const std::uint32_t position : clusteringOrder(intervals)) sorted.push_back(intervals[position]);
  return sorted;
}

std::vector<WorkIntervalCluster> workIntervalClusters(std::span<const ObservedWorkInterval> sortedIntervals) {
  std::vector<WorkIntervalCluster> clusters;
  for (const ObservedWorkInterval& interval : sortedIntervals) {
    const WorkIntervalKey key{interval.start, interval.end};
    if (clusters.empty() || interval.start > clusters.back().end) {
      clusters.push_back({interval.start, interval.end, {{key, interval.breakSeconds}}});
      continue;
    }
    WorkIntervalCluster& cluster = clusters.back();
    cluster.end = std::max(cluster.end, interval.end);
    auto& breaks = cluster.breakSecondsByInterval;
    if (breaks.back().first == key) {
      breaks.back().second = std::max(breaks.back().second, interval.breakSeconds);
    } else {
      breaks.emplace_back(key, std::max<TimeInterval>(interval.breakSeconds, 0));
    }
  }
  return clusters;
}

std::vector<std::optional<TimeInterval>> workedSecondsOnDays(std::span<const ObservedWorkInterval> intervals,
                                                             std::span<const std::uint32_t> order, const DayGrid& grid) {
  std::vector<std::optional<TimeInterval>> worked(grid.size());
  if (grid.empty()) return worked;

  // Clusters ascend and do not overlap, so their days are found by walking
  // the grid forward: `passed` counts the day starts at or before the start
  // of the latest cluster.
  const std::size_t boundaryCount = grid.size() + 1;
  const auto countUpTo = [&](std::size_t counted, Date date) {
    while (counted < boundaryCount && grid.start(counted) <= date) ++counted;
    return counted;
  };
  std::size_t passed = 0;
  const auto spread = [&](Date start, Date end, TimeInterval breakSeconds) {
    const TimeInterval length = end - start;
    if (!(length > 0)) return;
    const TimeInterval factor = netFactor(length, breakSeconds);
    passed = countUpTo(passed, start);
    const std::size_t endBoundaries = countUpTo(passed, end);
    if (endBoundaries == 0) return;
    const std::size_t lastDay = std::min(endBoundaries - 1, grid.size() - 1);
    for (std::size_t day = passed == 0 ? 0 : passed - 1; day <= lastDay; ++day) {
      const Date segmentStart = std::max(grid.start(day), start);
      const Date segmentEnd = std::min(grid.start(day + 1), end);
      if (segmentEnd > segmentStart) worked[day] = worked[day].value_or(0) + factor * (segmentEnd - segmentStart);
    }
  };

  // The clustering of workIntervalClusters(), streamed: a repeat of an
  // interval is always the last distinct interval seen, so the breaks are
  // summed in key order as that function's clusters sum them.
  bool open = false;
  Date clusterStart;
  Date clusterEnd;
  TimeInterval earlierBreaks = 0;  // distinct intervals before the last one
  WorkIntervalKey lastKey;
  TimeInterval lastBreak = 0;
  constexpr std::size_t prefetchDistance = 16;
  for (std::size_t index = 0; index < order.size(); ++index) {
    if (index + prefetchDistance < order.size()) __builtin_prefetch(&intervals[order[index + prefetchDistance]]);
    const ObservedWorkInterval& interval = intervals[order[index]];
    const WorkIntervalKey key{interval.start, interval.end};
    if (!open || interval.start > clusterEnd) {
      if (open) spread(clusterStart, clusterEnd, earlierBreaks + lastBreak);
      open = true;
      clusterStart = interval.start;
      clusterEnd = interval.end;
      earlierBreaks = 0;
      lastKey = key;
      lastBreak = interval.breakSeconds;
      continue;
    }
    clusterEnd = std::max(clusterEnd, interval.end);
    if (key == lastKey) {
      lastBreak = std::max(lastBreak, interval.breakSeconds);
    } else {
      earlierBreaks += lastBreak;
      lastKey = key;
      lastBreak = std::max<TimeInterval>(interval.breakSeconds, 0);
    }
  }
  if (open) spread(clusterStart, clusterEnd, earlierBreaks + lastBreak);
  return worked;
}

std::map<Date, TimeInterval> workedSecondsByDay(std::span<const std::shared_ptr<WorkEntry>> entries, Date from,
                                                Date through, Date asOf, const Calendar& calendar) {
  const DayGrid grid = DayGrid::covering(calendar, from, through);
  const auto intervals = observedIntervals(entries, asOf);
  const auto worked = workedSecondsOnDays(intervals, clusteringOrder(intervals), grid);
  std::map<Date, TimeInterval> byDay;
  for (std::size_t day = 0; day < worked.size(); ++day) {
    if (worked[day]) byDay.emplace_hint(byDay.end(), grid.start(day), *worked[day]);
  }
  return byDay;
}

}  // namespace detail

TimeInterval workedSeconds(Entries entries, Date asOf) {
  return detail::clusteredWorkedSeconds(detail::observedIntervals(entries, asOf));
}

namespace {

using detail::DayGrid;

TimeInterval seconds(std::int64_t minutes) { return static_cast<TimeInterval>(minutes) * 60.0; }

// The order among schedules that take effect on the same day: the later
// modification, then the later creation, then the greater identifier (byte
// order, which is the order of the upper-case texts).
bool takesPrecedenceOnSameDay(const WorkSchedule& candidate, const WorkSchedule& current) {
  if (candidate.modifiedAt() != current.modifiedAt()) return candidate.modifiedAt() > current.modifiedAt();
  if (candidate.createdAt() != current.createdAt()) return candidate.createdAt() > current.createdAt();
  return candidate.id() > current.id();
}

// Scanning in list order, a later schedule replaces the choice only when it
// takes precedence, so among full ties the first one listed stays.
void consider(const WorkSchedule*& choice, const WorkSchedule& candidate) {
  if (choice == nullptr || takesPrecedenceOnSameDay(candidate, *choice)) choice = &candidate;
}

// The governing schedule of a day is the greatest of those in effect, and
// the start of day of `effectiveFrom` is the first thing compared, so it
// comes from the schedules that took effect on the latest day not after it.
// That makes the governing schedule a step function over the grid: the
// winner among schedules effective before the first day, replaced on each
// day on which schedules take effect by the winner among those.
struct GoverningSchedules {
  const WorkSchedule* beforeFirstDay = nullptr;
  std::vector<const WorkSchedule*> takingEffectOn;  // per day of the grid
};

GoverningSchedules governingSchedules(Schedules schedules, const DayGrid& grid, const Calendar& calendar) {
  GoverningSchedules governing;
  governing.takingEffectOn.assign(grid.size(), nullptr);
  std::optional<Date> latestBefore;
  for (const auto& schedule : schedules) {
    const Date effectiveFrom = schedule->effectiveFrom();
    const std::size_t boundaries = grid.boundariesUpTo(effectiveFrom);
    if (boundaries == 0) {
      if (!latestBefore || effectiveFrom > *latestBefore) latestBefore = effectiveFrom;
    } else if (boundaries <= grid.size()) {
      consider(governing.takingEffectOn[boundaries - 1], *schedule);
    }
  }
  // Before the grid, the schedules of the latest day are those from that
  // day's start through the latest effectiveFrom (start of day is monotonic):
  // one calendar call instead of one per schedule.
  if (latestBefore) {
    const Date latestDay = calendar.startOfDay(*latestBefore);
    for (const auto& schedule : schedules) {
      const Date effectiveFrom = schedule->effectiveFrom();
      if (effectiveFrom >= latestDay && grid.boundariesUpTo(effectiveFrom) == 0) consider(governing.beforeFirstDay, *schedule);
    }
  }
  return governing;
}

// For a date the calendar cannot place in its grid (not finite, or outside
// ICU's range): the rule applied literally, a calendar call per schedule.
std::int64_t scheduledMinutesOutsideGrid(Date date, const TimeBankSettings& settings, Schedules schedules,
                                         const Calendar& calendar) {
  const Date day = calendar.startOfDay(date);
  const WorkSchedule* choice = nullptr;
  Date choiceDay;
  for (const auto& schedule : schedules) {
    const Date effectiveDay = calendar.startOfDay(schedule->effectiveFrom());
    if (!(effectiveDay <= day)) continue;
    if (choice == nullptr || effectiveDay > choiceDay ||
        (effectiveDay == choiceDay && takesPrecedenceOnSameDay(*schedule, *choice))) {
      choice = schedule.get();
      choiceDay = effectiveDay;
    }
  }
  const std::size_t index = weekdayIndex(calendar.weekday(day));
  return clampedDailyMinutes(choice != nullptr ? choice->weekdayMinutes()[index] : settings.weekdayMinutes()[index]);
}

}  // namespace

TimeInterval workedSeconds(const WorkEntry& entry, const DateInterval& during, Date asOf) {
  const Date start = entry.startedAt();
  Date end = entry.endedAt().value_or(asOf);
  if (asOf < end) end = asOf;
  if (!(end > start)) return 0;
  const auto common = DateInterval::between(start, end).intersection(during);
  if (!common) return 0;
  const TimeInterval length = end - start;
  const TimeInterval share = length > 0 ? common->duration / length : 0;
  const TimeInterval worked = common->duration - share * static_cast<TimeInterval>(std::max<std::int64_t>(entry.breakMinutes(), 0)) * 60.0;
  return worked >= 0 ? worked : 0;
}

std::vector<DayBalance> dayBalances(Entries entries, Adjustments adjustments, Schedules schedules,
                                    const TimeBankSettings& settings, Date through, const Calendar& calendar,
                                    HolidayDays holidays) {
  const auto intervals = detail::observedIntervals(entries, through);
  std::vector<BookedMinutes> bookings;
  bookings.reserve(adjustments.size());
  for (const auto& adjustment : adjustments) bookings.push_back({adjustment->date(), adjustment->minutes()});
  return dayBalancesFrom(intervals, bookings, schedules, settings, through, calendar, std::nullopt, holidays);
}

std::vector<DayBalance> dayBalancesFrom(std::span<const detail::ObservedWorkInterval> intervals,
                                        std::span<const BookedMinutes> bookings, Schedules schedules,
                                        const TimeBankSettings& settings, Date through, const Calendar& calendar,
                                        std::optional<Date> firstDay, HolidayDays holidays) {
  const Date earliest = TimeBankDateBounds::earliestCalculationDate(calendar);
  Date start = settings.calculationStartDate() > earliest ? settings.calculationStartDate() : earliest;
  // A later first day starts the grid at its midnight, one of the grid's own
  // day boundaries: every day from it on is the same day as in the whole grid.
  if (firstDay) start = std::max(start, calendar.startOfDay(*firstDay));
  const DayGrid grid = DayGrid::covering(calendar, start, through);
  if (grid.empty()) return {};

  const auto worked = detail::workedSecondsOnDays(intervals, detail::clusteringOrder(intervals), grid);

  // Whole minutes times 60: the sums are exact in any order.
  std::vector<TimeInterval> adjusted(grid.size(), 0.0);
  for (const BookedMinutes& booking : bookings) {
    if (const auto day = grid.dayContaining(booking.date)) adjusted[*day] += seconds(booking.minutes);
  }

  std::vector<bool> isHoliday(holidays.empty() ? 0 : grid.size(), false);
  for (const Date holiday : holidays) {
    if (const auto day = grid.dayContaining(holiday)) isHoliday[*day] = true;
  }

  const GoverningSchedules governing = governingSchedules(schedules, grid, calendar);
  WeekdayMinutes minutes = governing.beforeFirstDay != nullptr ? governing.beforeFirstDay->weekdayMinutes()
                                                               : settings.weekdayMinutes();

  std::vector<DayBalance> balances;
  balances.reserve(grid.size());
  for (std::size_t day = 0; day < grid.size(); ++day) {
    if (const WorkSchedule* schedule = governing.takingEffectOn[day]) minutes = schedule->weekdayMinutes();
    const bool holiday = !isHoliday.empty() && isHoliday[day];
    const std::int64_t expectedMinutes = holiday ? 0 : clampedDailyMinutes(minutes[weekdayIndex(grid.weekday(day))]);
    balances.push_back({grid.start(day), worked[day].value_or(0), adjusted[day], static_cast<TimeInterval>(expectedMinutes * 60)});
  }
  return balances;
}

TimeInterval balanceSeconds(Entries entries, Adjustments adjustments, Schedules schedules,
                            const TimeBankSettings& settings, Date through, const Calendar& calendar,
                            HolidayDays holidays) {
  TimeInterval total = 0;
  for (const DayBalance& day : dayBalances(entries, adjustments, schedules, settings, through, calendar, holidays)) {
    total += day.balanceSeconds();
  }
  return seconds(settings.startingBalanceMinutes()) + total;
}

std::int64_t scheduledMinutes(Date date, const TimeBankSettings& settings, Schedules schedules,
                              const Calendar& calendar) {
  const DayGrid grid = DayGrid::covering(calendar, date, date);
  if (grid.empty()) return scheduledMinutesOutsideGrid(date, settings, schedules, calendar);
  const GoverningSchedules governing = governingSchedules(schedules, grid, calendar);
  const WorkSchedule* schedule = governing.takingEffectOn[0] != nullptr ? governing.takingEffectOn[0] : governing.beforeFirstDay;
  const std::size_t index = weekdayIndex(grid.weekday(0));
  return clampedDailyMinutes(schedule != nullptr ? schedule->weekdayMinutes()[index] : settings.weekdayMinutes()[index]);
}

TimeInterval ledgerBalanceSeconds(Adjustments adjustments, std::int64_t startingBalanceMinutes, Date through) {
  TimeInterval total = 0;
  for (const auto& adjustment : adjustments) total += ledgerSecondsOf(adjustment->date(), adjustment->minutes(), through);
  return seconds(startingBalanceMinutes) + total;
}

TimeInterval ledgerSecondsOf(Date date, std::int64_t minutes, Date through) {
  return date <= through ? seconds(minutes) : 0.0;
}

std::vector<DayBalance> ledgerDayBalances(Adjustments adjustments, const DateInterval& interval,
                                          const Calendar& calendar) {
  const std::optional<Date> lastInstant = calendar.dateByAddingSeconds(-1, interval.end());
  if (!lastInstant) return {};
  const DayGrid grid = DayGrid::covering(calendar, interval.start, *lastInstant);

  std::vector<TimeInterval> adjusted(grid.size(), 0.0);
  for (const auto& adjustment : adjustments) {
    const Date date = adjustment->date();
    if (!(interval.start <= date && date < interval.end())) continue;
    if (const auto day = grid.dayContaining(date)) adjusted[*day] += seconds(adjustment->minutes());
  }

  std::vector<DayBalance> balances;
  balances.reserve(grid.size());
  for (std::size_t day = 0; day < grid.size(); ++day) balances.push_back({grid.start(day), 0, adjusted[day], 0});
  return balances;
}

}  // namespace quillmont::TimeBankCalculator
