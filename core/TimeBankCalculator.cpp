#include "core/TimeBankCalculator.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "core/TimeBankDateBounds.h"
#include "core/WeekdayMinutes.h"
#include "core/WorkIntervals.h"

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

// The bits of an instant as an unsigned key with the same order. Observed
// intervals never hold NaN; -0 is folded into +0 first so equal instants
// get equal keys.
std::uint64_t orderedKey(Date date) {
  const auto bits = std::bit_cast<std::uint64_t>(date.timeIntervalSinceReferenceDate + 0.0);
  constexpr std::uint64_t signBit = std::uint64_t{1} << 63;
  return (bits & signBit) != 0 ? ~bits : bits | signBit;
}

// Least-significant-digit radix sort by start, 11 bits a pass; passes in
// which every key has the same digit (the high bits of instants in one
// era, the low bits of whole seconds) are skipped.
void radixSortByStart(std::vector<ObservedWorkInterval>& intervals) {
  constexpr int digitBits = 11;
  constexpr int digitCount = 6;
  constexpr std::size_t bucketCount = std::size_t{1} << digitBits;
  constexpr std::uint64_t digitMask = bucketCount - 1;
  const std::size_t count = intervals.size();

  std::vector<std::array<std::uint32_t, bucketCount>> histograms(digitCount);
  for (const ObservedWorkInterval& interval : intervals) {
    const std::uint64_t key = orderedKey(interval.start);
    for (int digit = 0; digit < digitCount; ++digit) ++histograms[digit][(key >> (digit * digitBits)) & digitMask];
  }

  std::vector<ObservedWorkInterval> buffer(count);
  ObservedWorkInterval* source = intervals.data();
  ObservedWorkInterval* target = buffer.data();
  for (int digit = 0; digit < digitCount; ++digit) {
    auto& histogram = histograms[digit];
    const int shift = digit * digitBits;
    if (histogram[(orderedKey(source[0].start) >> shift) & digitMask] == count) continue;
    std::uint32_t offset = 0;
    for (std::uint32_t& bucket : histogram) offset += std::exchange(bucket, offset);
    for (std::size_t i = 0; i < count; ++i) target[histogram[(orderedKey(source[i].start) >> shift) & digitMask]++] = source[i];
    std::swap(source, target);
  }
  if (source != intervals.data()) std::copy(source, source + count, intervals.data());
}

void sortForClustering(std::vector<ObservedWorkInterval>& intervals) {
  // Stores mostly hand out entries in the order they were made.
  if (std::is_sorted(intervals.begin(), intervals.end(), precedesForClustering)) return;
  if (intervals.size() < 512) {
    std::sort(intervals.begin(), intervals.end(), precedesForClustering);
    return;
  }
  radixSortByStart(intervals);
  // Runs of equal start are repeated entries, short; order them by end and break.
  for (auto run = intervals.begin(); run != intervals.end();) {
    const auto runEnd = std::find_if(run + 1, intervals.end(), [&](const auto& other) { return other.start != run->start; });
    if (runEnd - run > 1) std::sort(run, runEnd, precedesForClustering);
    run = runEnd;
  }
}

}  // namespace

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
  const TimeInterval daysIn = (date - boundaries_[0].start) / nominalDaySeconds;

  // Days last 24 hours give or take a daylight-saving hour, so the nominal
  // guess is at most a step or two off; gallop from it to a bracket
  // [low, high) with boundaries_[low] <= date < boundaries_[high].
  const std::size_t guess = daysIn < static_cast<TimeInterval>(count - 1) ? static_cast<std::size_t>(daysIn) : count - 1;
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
  sortForClustering(intervals);
  return intervals;
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

std::vector<std::optional<TimeInterval>> workedSecondsOnDays(std::span<const ObservedWorkInterval> sortedIntervals,
                                                             const DayGrid& grid) {
  std::vector<std::optional<TimeInterval>> worked(grid.size());
  if (grid.empty()) return worked;

  const auto spread = [&](Date start, Date end, TimeInterval breakSeconds) {
    const TimeInterval length = end - start;
    if (!(length > 0)) return;
    // (length - breaks) / length clamped to 0 ... 1; written so that an
    // unbounded cluster keeps the factor 1 instead of inf / inf.
    const TimeInterval net = length - breakSeconds;
    const TimeInterval factor = net >= length ? 1.0 : net <= 0 ? 0.0 : net / length;
    const std::size_t startBoundaries = grid.boundariesUpTo(start);
    const std::size_t endBoundaries = grid.boundariesUpTo(end);
    if (endBoundaries == 0) return;
    const std::size_t lastDay = std::min(endBoundaries - 1, grid.size() - 1);
    for (std::size_t day = startBoundaries == 0 ? 0 : startBoundaries - 1; day <= lastDay; ++day) {
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
  for (const ObservedWorkInterval& interval : sortedIntervals) {
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
  const auto worked = workedSecondsOnDays(observedIntervals(entries, asOf), grid);
  std::map<Date, TimeInterval> byDay;
  for (std::size_t day = 0; day < worked.size(); ++day) {
    if (worked[day]) byDay.emplace_hint(byDay.end(), grid.start(day), *worked[day]);
  }
  return byDay;
}

}  // namespace detail

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
                                    const TimeBankSettings& settings, Date through, const Calendar& calendar) {
  const Date earliest = TimeBankDateBounds::earliestCalculationDate(calendar);
  const Date calculationStart = settings.calculationStartDate() > earliest ? settings.calculationStartDate() : earliest;
  const DayGrid grid = DayGrid::covering(calendar, calculationStart, through);
  if (grid.empty()) return {};

  const auto worked = detail::workedSecondsOnDays(detail::observedIntervals(entries, through), grid);

  std::vector<TimeInterval> adjusted(grid.size(), 0.0);
  for (const auto& adjustment : adjustments) {
    if (const auto day = grid.dayContaining(adjustment->date())) adjusted[*day] += seconds(adjustment->minutes());
  }

  const GoverningSchedules governing = governingSchedules(schedules, grid, calendar);
  WeekdayMinutes minutes = governing.beforeFirstDay != nullptr ? governing.beforeFirstDay->weekdayMinutes()
                                                               : settings.weekdayMinutes();

  std::vector<DayBalance> balances;
  balances.reserve(grid.size());
  for (std::size_t day = 0; day < grid.size(); ++day) {
    if (const WorkSchedule* schedule = governing.takingEffectOn[day]) minutes = schedule->weekdayMinutes();
    const std::int64_t expectedMinutes = clampedDailyMinutes(minutes[weekdayIndex(grid.weekday(day))]);
    balances.push_back({grid.start(day), worked[day].value_or(0), adjusted[day], static_cast<TimeInterval>(expectedMinutes * 60)});
  }
  return balances;
}

TimeInterval balanceSeconds(Entries entries, Adjustments adjustments, Schedules schedules,
                            const TimeBankSettings& settings, Date through, const Calendar& calendar) {
  TimeInterval total = 0;
  for (const DayBalance& day : dayBalances(entries, adjustments, schedules, settings, through, calendar)) {
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
  for (const auto& adjustment : adjustments) {
    if (adjustment->date() <= through) total += seconds(adjustment->minutes());
  }
  return seconds(startingBalanceMinutes) + total;
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
