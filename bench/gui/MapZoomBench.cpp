// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <vector>

#include "PaintWatch.h"
#include "view/A2_3DAxis.h"
#include "view/AAxisWnd.h"
#include "view/AColorsGraph.h"

namespace lumo {
namespace {

using Clock = std::chrono::steady_clock;

std::unique_ptr<A2_3DAxis> noiseMap(std::uint32_t size) {
  AMatrix<float> map(size, size);
  std::mt19937 random(1);
  std::normal_distribution<float> noise(0.0F, 1.0F);
  for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = noise(random);
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->setNameOX("Right ascent [%sas]");
  axis->setNameOY("Declination [%sas]");
  auto& graph = axis->addGraph(std::make_unique<AColorsGraph>());
  graph.SetParameters(std::move(map), {0.0, size - 1.0, 0.0, size - 1.0, -4.0, 4.0});
  graph.setBeam(BeamEllipse{8.0, 5.0, 30.0});
  return axis;
}

/// A map of `size` squared in a window: from the whole of it in steps of a tenth to a hundredth of it and
/// back, one picture a step, as long as the wheel turns. "pictures/s" is their rate, "longest" the slowest of
/// them.
void BM_Map_Zoom(benchmark::State& state) {
  AAxisWnd window;
  window.SetAxis(noiseMap(static_cast<std::uint32_t>(state.range(0))));
  window.resize(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
  window.show();
  PaintWatch paints;
  const auto picture = [&] {
    paints.forget();
    while (!paints.hasPaintedIn(window)) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  };
  window.redraw();
  picture();
  constexpr int kSteps = 48;
  constexpr double kStep = 1.1;
  double longest = 0.0;
  for (auto _ : state) {
    for (int step = 0; step < 2 * kSteps; ++step) {
      const auto start = Clock::now();
      window.zoom(step < kSteps ? kStep : 1.0 / kStep);
      picture();
      longest = std::max(longest, std::chrono::duration<double>(Clock::now() - start).count());
    }
  }
  state.counters["pictures/s"] =
      benchmark::Counter(2.0 * kSteps * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["longest_ms"] = 1e3 * longest;
}
BENCHMARK(BM_Map_Zoom)
    ->ArgNames({"map", "width", "height"})
    ->Args({2048, 900, 800})
    ->Args({2048, 1900, 1000})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
