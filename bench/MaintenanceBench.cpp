// Store maintenance as every writer runs it before booking (activity,
// configuration, ledger migration) on a store that needs no repair, on a
// fresh context (loading included); and a booking with its save after it.
// Sizes: ten years of use, and the largest archive an import accepts.
#include <benchmark/benchmark.h>

#include "bench/SyntheticLedger.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

const Calendar& calendar() {
  static const Calendar shared = *Calendar::make("Europe/Berlin");
  return shared;
}

std::shared_ptr<ModelContainer> preparedStore(const bench::LedgerSize& size) {
  auto container = QuillmontPersistence::makeContainer(false, false, true);
  ModelContext context(container);
  bench::fillLedger(context, size, Date::now());
  DataStoreMaintenance::reconcile(context, calendar(), Date::now(), true);  // repairs once; later runs find nothing
  return container;
}

void maintenanceOnFreshContext(benchmark::State& state, bench::LedgerSize size) {
  bench::TemporaryHome home;
  const auto container = preparedStore(size);
  for (auto _ : state) {
    ModelContext context(container);
    benchmark::DoNotOptimize(DataStoreMaintenance::reconcile(context, calendar(), Date::now(), true));
    if (context.hasChanges()) state.SkipWithError("maintenance found something to repair");
  }
}

void bookingAfterMaintenance(benchmark::State& state) {
  bench::TemporaryHome home;
  const auto container = preparedStore({25'000, 5'000, 20, 10});
  ModelContext context(container);
  DataStoreMaintenance::reconcile(context, calendar(), Date::now(), true);
  for (auto _ : state) {
    benchmark::DoNotOptimize(TimeBankTransactionController::record(15, Date::now(), "Quick booking", "manual", context));
  }
}

BENCHMARK_CAPTURE(maintenanceOnFreshContext, tenYears, bench::LedgerSize{25'000, 5'000, 20, 10})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(maintenanceOnFreshContext, archiveLimits, bench::LedgerSize{100'000, 100'000, 10'000, 26})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK(bookingAfterMaintenance)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quillmont

BENCHMARK_MAIN();
