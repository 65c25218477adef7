// The balance engine over a synthetic history from 2000-01-01 to today in
// Europe/Berlin: 100,000 work entries (overlapping, about 5% repeated, one
// running), 100,000 adjustments and 10,000 or 20,000 schedules, in the
// arbitrary order a synchronised store may hand them out (or, for entries,
// in chronological order). Records are made in list order, as a store loading
// them would. The history is the same on every run up to today.
//
//   BM_DayBalances/<schedules>/<entries shuffled>  every day balance through now
//   BM_LedgerBalanceSeconds                        the widget's ledger balance
//   BM_MonthReportCSV                              a month cut from the days, as CSV
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "core/engine/TimeBankCalculator.h"
#include "core/reports/TimeBankReporting.h"

namespace {

using namespace quillmont;

constexpr std::size_t entryCount = 100'000;
constexpr std::size_t adjustmentCount = 100'000;
constexpr double hour = 3600.0;

struct History {
  Calendar calendar = *Calendar::make("Europe/Berlin", "de_DE");
  Date first = *calendar.date(2000, 1, 1);
  Date now = Date::now();
  std::vector<std::shared_ptr<WorkEntry>> entries;
  std::vector<std::shared_ptr<BalanceAdjustment>> adjustments;
  std::vector<std::shared_ptr<WorkSchedule>> schedules;
  std::shared_ptr<TimeBankSettings> settings;
};

const History& history(std::size_t scheduleCount, bool shuffled) {
  static std::map<std::pair<std::size_t, bool>, std::unique_ptr<History>> made;
  auto& slot = made[{scheduleCount, shuffled}];
  if (slot) return *slot;
  slot = std::make_unique<History>();
  History& result = *slot;
  std::mt19937_64 random(20000101);
  const double span = result.now - result.first;
  const auto instant = [&] { return result.first + std::uniform_real_distribution<double>(0, span)(random); };
  const auto minutes = [&](std::int64_t low, std::int64_t high) {
    return std::uniform_int_distribution<std::int64_t>(low, high)(random);
  };

  // Working days of about ten entries each: mostly whole minutes from 07:00,
  // overlapping one another, some repeated with another break.
  struct EntryValues {
    Date start;
    std::optional<Date> end;
    std::int64_t breakMinutes;
  };
  std::vector<EntryValues> values;
  const auto days = static_cast<std::int64_t>(span / (24 * hour));
  for (std::size_t i = 0; values.size() < entryCount - 1; ++i) {
    if (i % 20 == 19 && !values.empty()) {
      const auto repeated = values[static_cast<std::size_t>(minutes(0, static_cast<std::int64_t>(values.size()) - 1))];
      values.push_back({repeated.start, repeated.end, minutes(0, 60)});
      continue;
    }
    const Date day = result.first + static_cast<double>(minutes(0, days - 1)) * 24 * hour;
    const Date start = day + 7 * hour + static_cast<double>(minutes(0, 12 * 60)) * 60;
    values.push_back({start, start + static_cast<double>(minutes(15, 9 * 60)) * 60, minutes(0, 45)});
  }
  values.push_back({result.now - 2 * hour, std::nullopt, 0});
  if (shuffled) {
    std::shuffle(values.begin(), values.end(), random);
  } else {
    std::stable_sort(values.begin(), values.end(), [](const auto& a, const auto& b) { return a.start < b.start; });
  }
  // A store makes its records in the order it hands them out.
  for (const EntryValues& each : values) {
    result.entries.push_back(std::make_shared<WorkEntry>(UUID::random(), each.start, each.end, each.breakMinutes, "",
                                                         each.start, each.start));
  }

  for (std::size_t i = 0; i < adjustmentCount; ++i) {
    const Date date = instant();
    result.adjustments.push_back(std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes(-600, 600), "",
                                                                     BalanceAdjustmentKind::manual, date, date));
  }
  for (std::size_t i = 0; i < scheduleCount; ++i) {
    const Date effectiveFrom = instant();
    const std::vector<std::int64_t> weekdays{minutes(0, 600), minutes(0, 600), minutes(0, 600), minutes(0, 600),
                                             minutes(0, 600), minutes(0, 120), 0};
    result.schedules.push_back(std::make_shared<WorkSchedule>(UUID::random(), effectiveFrom, weekdays, effectiveFrom,
                                                              effectiveFrom + static_cast<double>(minutes(0, 3)) * hour));
  }
  const std::vector<std::int64_t> weekdays{480, 480, 480, 480, 480, 0, 0};
  result.settings = std::make_shared<TimeBankSettings>(UUID::random(), result.first - 24 * hour, 0, weekdays,
                                                       std::vector<std::int64_t>{}, "", "[]", true, result.first);
  return result;
}

void BM_DayBalances(benchmark::State& state) {
  const History& data = history(static_cast<std::size_t>(state.range(0)), state.range(1) != 0);
  std::size_t days = 0;
  for (auto _ : state) {
    const auto balances = TimeBankCalculator::dayBalances(data.entries, data.adjustments, data.schedules, *data.settings,
                                                          data.now, data.calendar);
    days = balances.size();
    benchmark::DoNotOptimize(balances.data());
  }
  state.counters["days"] = static_cast<double>(days);
}
BENCHMARK(BM_DayBalances)->ArgNames({"schedules", "shuffled"})->Args({10'000, 1})->Args({20'000, 1})->Args({10'000, 0})
    ->Unit(benchmark::kMillisecond);

void BM_LedgerBalanceSeconds(benchmark::State& state) {
  const History& data = history(10'000, true);
  for (auto _ : state) {
    benchmark::DoNotOptimize(TimeBankCalculator::ledgerBalanceSeconds(data.adjustments, 0, data.now));
  }
}
BENCHMARK(BM_LedgerBalanceSeconds)->Unit(benchmark::kMicrosecond);

void BM_MonthReportCSV(benchmark::State& state) {
  const History& data = history(10'000, true);
  const auto balances = TimeBankCalculator::dayBalances(data.entries, data.adjustments, data.schedules, *data.settings,
                                                        data.now, data.calendar);
  for (auto _ : state) {
    const auto report = TimeBankReporting::report(balances, data.now, ReportGranularity::month, data.calendar);
    benchmark::DoNotOptimize(TimeBankReporting::csv(report, data.calendar));
  }
}
BENCHMARK(BM_MonthReportCSV)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
