// The desktop widget's redraw after a reload: a timeline request through the
// driver (snapshot, day rule, view tree), the layout, and the painting of a
// frame at twice the logical size, as the window does when a booking lands.
// Start-up to the first frame, idle CPU and memory of the whole program are
// measured by bench/desktop.sh.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <cstdlib>

#include "bench/SyntheticLedger.h"
#include "core/widgetstate/WidgetSnapshotStore.h"
#include "desktop/TimelineDriver.h"
#include "desktop/WidgetLayout.h"
#include "desktop/WidgetPainter.h"
#include "platform/foundation/ProcessEntitlements.h"
#include "widget/TimeBankWidget.h"

namespace quillmont {
namespace {

void redrawAfterReload(benchmark::State& state) {
  bench::TemporaryHome home;
  ::unsetenv("QUILLMONT_ENTITLEMENTS");
  ProcessEntitlements::embed(R"({"com.apple.developer.team-identifier": "BENCH", )"
                             R"("com.apple.security.application-groups": ["group.io.quillmont.ledger"]})");
  const std::array<std::int64_t, 4> quick{15, 30, 60, 120};
  WidgetSnapshotStore::save(WidgetSnapshot(16200, 5400, 1800, std::nullopt, quick, Date::now(), true));
  const auto family = static_cast<WidgetFamily>(state.range(0));
  TimelineDriver driver(TimeBankWidget().body(), family);
  const QSizeF size = WidgetLayout::sizeOf(family);
  QImage frame((size * 2).toSize(), QImage::Format_ARGB32_Premultiplied);
  frame.setDevicePixelRatio(2);
  const WidgetPalette palette = WidgetPalette::light();
  for (auto _ : state) {
    driver.reload();
    const WidgetLayout layout(driver.entry().content.root, size);
    frame.fill(Qt::transparent);
    QPainter painter(&frame);
    WidgetPainter::paint(painter, layout, driver.entry().content.containerBackground, palette);
    painter.end();
    benchmark::DoNotOptimize(frame.constBits());
  }
}
BENCHMARK(redrawAfterReload)
    ->Arg(static_cast<int>(WidgetFamily::systemSmall))
    ->Arg(static_cast<int>(WidgetFamily::systemMedium))
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quillmont

int main(int argc, char** argv) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
