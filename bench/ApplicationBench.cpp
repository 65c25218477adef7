// The Quillmont window on the store of QUILLMONT_HOME (bench/application.sh
// fills it with ten years): the Activity page read and painted after a
// switch from the Time bank, and one page of its list scrolled and painted.
// Start-up to the first painted page, idle CPU and memory of the whole
// program are measured by bench/application.sh.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QScrollBar>
#include <QTableView>
#include <cstdlib>
#include <memory>

#include "desktop/application/HistoryPage.h"
#include "desktop/application/QuillmontWindow.h"
#include "platform/foundation/ProcessEntitlements.h"

namespace quillmont {
namespace {

// The window at `route`, painted once; none (and the benchmark skipped)
// without a filled data home.
std::unique_ptr<QuillmontWindow> opened(benchmark::State& state, AppRoute route) {
  if (std::getenv("QUILLMONT_HOME") == nullptr) {
    state.SkipWithError("set QUILLMONT_HOME to a filled data home (bench/application.sh does)");
    return nullptr;
  }
  auto window = std::make_unique<QuillmontWindow>();
  window->setRemembering(false);
  window->resize(1000, 700);
  window->open(route);
  window->grab();
  return window;
}

void activityAfterSwitch(benchmark::State& state) {
  const auto window = opened(state, AppRoute::overview);
  if (!window) return;
  for (auto _ : state) {
    window->open(AppRoute::overview);
    window->open(AppRoute::history);  // reads every record afresh
    benchmark::DoNotOptimize(window->grab().cacheKey());
  }
  state.counters["rows"] = window->historyPage().view().model()->rowCount();
}
BENCHMARK(activityAfterSwitch)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void activityPageScrolled(benchmark::State& state) {
  const auto window = opened(state, AppRoute::history);
  if (!window) return;
  QTableView& view = window->historyPage().view();
  QScrollBar& bar = *view.verticalScrollBar();
  for (auto _ : state) {
    if (bar.value() >= bar.maximum()) bar.setValue(0);
    bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
    benchmark::DoNotOptimize(view.viewport()->grab().cacheKey());
  }
}
BENCHMARK(activityPageScrolled)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quillmont

int main(int argc, char** argv) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // The programs' own entitlements, so the window opens the store they keep.
  quillmont::ProcessEntitlements::embed(R"({"com.apple.developer.team-identifier": "QUILLMONT", )"
                                        R"("com.apple.security.application-groups": ["group.io.quillmont.ledger"]})");
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
