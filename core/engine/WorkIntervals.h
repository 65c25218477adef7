// WorkIntervals: the inside of the balance engine, open to its tests and to
// the reports. Work entries become observed intervals; overlapping or
// touching intervals form clusters whose breaks count once per distinct
// interval; a cluster's net time is spread over the days it covers in
// proportion to its part on each day.
//
// Days come from a DayGrid: every day of a range computed once with
// Calendar::days, so daylight-saving days keep their true length, and an
// instant finds its day by a search over the day starts instead of a
// calendar call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "core/ledger/WorkEntry.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont::TimeBankCalculator::detail {

/// One entry as seen at an instant: its end cut there, its break capped at its length.
struct ObservedWorkInterval {
  Date start;
  Date end;
  TimeInterval breakSeconds = 0;

  friend constexpr bool operator==(const ObservedWorkInterval&, const ObservedWorkInterval&) = default;
};

/// One distinct interval inside a cluster.
struct WorkIntervalKey {
  Date start;
  Date end;

  friend constexpr bool operator==(const WorkIntervalKey&, const WorkIntervalKey&) = default;
  friend constexpr auto operator<=>(const WorkIntervalKey&, const WorkIntervalKey&) = default;
};

/// A maximal run of overlapping or touching observed intervals.
struct WorkIntervalCluster {
  Date start;
  Date end;
  /// Break seconds of each distinct interval, kept as a flat map in
  /// ascending key order. Intervals join in sorted order, so a repeat of an
  /// interval always meets its key as the last pair.
  std::vector<std::pair<WorkIntervalKey, TimeInterval>> breakSecondsByInterval;

  /// The breaks of all distinct intervals, summed in key order from 0.
  TimeInterval breakSeconds() const;

  friend bool operator==(const WorkIntervalCluster&, const WorkIntervalCluster&) = default;
};

/// The days of a calendar over a range, each with its start and weekday,
/// followed by the start of the day after the last as a closing boundary.
/// The day after a day is the next element; where midnight was skipped the
/// day starts at its first instant and the next day again at midnight.
class DayGrid {
 public:
  DayGrid() = default;

  /// Every day from the day of `first` through the day of `last`. Empty when
  /// `last` lies on an earlier day or the calendar cannot place either
  /// instant (not finite, or outside ICU's range). A last day whose successor
  /// the calendar cannot compute is left out; ICU always can inside its range.
  static DayGrid covering(const Calendar& calendar, Date first, Date last);

  /// The number of days.
  std::size_t size() const { return boundaries_.empty() ? 0 : boundaries_.size() - 1; }
  bool empty() const { return size() == 0; }
  /// The start of day `day`; start(size()) is the end of the last day.
  Date start(std::size_t day) const { return boundaries_[day].start; }
  /// 1 Sunday ... 7 Saturday.
  int weekday(std::size_t day) const { return boundaries_[day].weekday; }

  /// How many day starts (the closing boundary included) lie at or before
  /// `date`: 0 before the first day, i + 1 inside day i, size() + 1 from the
  /// end of the last day on and for NaN.
  std::size_t boundariesUpTo(Date date) const;
  /// The day that contains `date`, if it is one of the grid's days.
  std::optional<std::size_t> dayContaining(Date date) const;

 private:
  std::vector<Calendar::Day> boundaries_;
};

/// The entry as seen at `asOf`: running entries and later ends are cut at
/// `asOf`; nothing when the cut interval is empty or starts after `asOf`.
std::optional<ObservedWorkInterval> observedInterval(const WorkEntry& entry, Date asOf);

/// The observed intervals of `entries` at `asOf`, in the order of the entries.
std::vector<ObservedWorkInterval> observedIntervals(std::span<const std::shared_ptr<WorkEntry>> entries, Date asOf);

/// The positions of `intervals` in the order clusters are built in:
/// ascending start, then end, then break.
std::vector<std::uint32_t> clusteringOrder(std::span<const ObservedWorkInterval> intervals);
/// `intervals` in clustering order.
std::vector<ObservedWorkInterval> sortedForClustering(std::span<const ObservedWorkInterval> intervals);

/// Clusters of intervals in clustering order, in ascending order of start.
/// Two intervals with the same start and end are one interval whose break
/// is the larger of theirs.
std::vector<WorkIntervalCluster> workIntervalClusters(std::span<const ObservedWorkInterval> sortedIntervals);

/// The share of a cluster's length that is worked: (length - breaks) / length,
/// clamped to 0 ... 1. The cluster must have a positive length.
TimeInterval netFactor(TimeInterval length, TimeInterval breakSeconds);

/// Worked seconds of intervals taken together, on no particular day: the
/// length of each cluster times its net factor, summed. The same as the sum
/// over every day of workedSecondsOnDays().
TimeInterval clusteredWorkedSeconds(std::span<const ObservedWorkInterval> intervals);

/// Worked seconds of intervals, taken in `order`, on each day of `grid`:
/// every part of a cluster of positive length on a day adds its length times
/// the cluster's net factor (its length less its breaks, as a share of its
/// length, clamped to 0 ... 1), cluster by cluster in ascending order. Days
/// that no cluster reaches hold nothing.
std::vector<std::optional<TimeInterval>> workedSecondsOnDays(std::span<const ObservedWorkInterval> intervals,
                                                             std::span<const std::uint32_t> order, const DayGrid& grid);

/// Worked seconds of `entries` per day from the day of `from` through the day
/// of `through`, running and later-ending entries counted up to `asOf`. Days
/// with no part of a cluster are absent.
std::map<Date, TimeInterval> workedSecondsByDay(std::span<const std::shared_ptr<WorkEntry>> entries, Date from,
                                                Date through, Date asOf, const Calendar& calendar);

}  // namespace quillmont::TimeBankCalculator::detail
