// The widget's two roads: a timeline request as a host makes it (snapshot
// load, day rule, view tree, and the terminal drawing), and a button press
// (open the store, maintenance, booking, snapshot, reload request) on ten
// years of use and at the archive's limits.
#include <benchmark/benchmark.h>

#include "bench/SyntheticLedger.h"
#include "cli/output/WidgetTerminalRendering.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/widgetstate/WidgetSnapshotBuilder.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "platform/foundation/ProcessEntitlements.h"
#include "widget/AdjustTimeBankIntent.h"
#include "widget/QuillmontWidgets.h"

namespace quillmont {
namespace {

// A data home shared through the application group, which this program's
// own entitlements grant (as the real programs' do), with a snapshot stored.
class WidgetHome {
 public:
  WidgetHome() {
    ::unsetenv("QUILLMONT_ENTITLEMENTS");
    ProcessEntitlements::embed(R"({"com.apple.developer.team-identifier": "BENCH", )"
                               R"("com.apple.security.application-groups": ["group.io.quillmont.ledger"]})");
    const std::array<std::int64_t, 4> quick{15, 30, 60, 120};
    WidgetSnapshotStore::save(WidgetSnapshot(16200, 5400, 1800, std::nullopt, quick, Date::now(), true));
  }

 private:
  bench::TemporaryHome home_;
};

void snapshotLoad(benchmark::State& state) {
  WidgetHome home;
  for (auto _ : state) benchmark::DoNotOptimize(WidgetSnapshotStore::load());
}

// What every request pays for the user's calendar and the day rule.
void currentCalendarAndDayRule(benchmark::State& state) {
  const Date now = Date::now();
  for (auto _ : state) {
    const Calendar calendar = Calendar::autoupdatingCurrent();
    benchmark::DoNotOptimize(calendar.isDate(now, now - 3600));
    benchmark::DoNotOptimize(calendar.dateByAddingDays(1, calendar.startOfDay(now)));
  }
}

void timelineRequest(benchmark::State& state) {
  WidgetHome home;
  const auto widget = *QuillmontWidgets().widget("TimeBankWidget");
  for (auto _ : state) benchmark::DoNotOptimize(widget.timeline({WidgetFamily::systemMedium, false}));
}

void timelineRequestDrawnAsText(benchmark::State& state) {
  WidgetHome home;
  const auto widget = *QuillmontWidgets().widget("TimeBankWidget");
  for (auto _ : state) {
    const auto timeline = widget.timeline({WidgetFamily::systemMedium, false});
    benchmark::DoNotOptimize(
        WidgetTerminalRendering::render(timeline.entries.front().content, WidgetFamily::systemMedium, false));
  }
}

void press(benchmark::State& state, bench::LedgerSize size) {
  WidgetHome home;
  {
    ModelContext context(QuillmontPersistence::makeContainer(false, false, true));
    bench::fillLedger(context, size, Date::now());
    DataStoreMaintenance::reconcile(context, Calendar::autoupdatingCurrent(), Date::now(), true);
  }
  const AdjustTimeBankIntent intent(60);
  for (auto _ : state) {
    if (intent.adjust().outcome != AdjustTimeBankIntent::AdjustmentOutcome::recorded) {
      state.SkipWithError("the press booked nothing");
    }
  }
}

BENCHMARK(snapshotLoad)->Unit(benchmark::kMicrosecond);
BENCHMARK(currentCalendarAndDayRule)->Unit(benchmark::kMicrosecond);
BENCHMARK(timelineRequest)->Unit(benchmark::kMicrosecond);
BENCHMARK(timelineRequestDrawnAsText)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(press, tenYears, bench::LedgerSize{25'000, 5'000, 20, 10})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(press, archiveLimits, bench::LedgerSize{100'000, 100'000, 10'000, 26})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace
}  // namespace quillmont

BENCHMARK_MAIN();
