// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <random>
#include <vector>

#include "clean/PlainCleanEngine.h"

namespace lumo {
namespace {

/// Noise maps and beams twice their size whose centres are moments of a spread of frequencies: the cost of an
/// iteration does not depend on what the maps show.
struct Input {
  Input(std::int32_t terms, std::uint32_t size) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0F, 1.0F);
    for (std::int32_t k = 0; k < terms; ++k) {
      AMatrix<float>& map = maps.emplace_back(size, size);
      for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = noise(random);
      residuals.InsertAt(k, new AMatrix<float>(map));
    }
    for (std::int32_t m = 0; m < 2 * terms - 1; ++m) {
      beams.InsertAt(m, new AMatrix<float>(2 * size, 2 * size));
      for (std::size_t i = 0; i < beams[m]->size(); ++i) beams[m]->data()[i] = 1e-4F * noise(random);
      double moment = 0.0;
      for (int i = -3; i <= 3; ++i) moment += std::pow(0.2 * i, m) / 7.0;
      (*beams[m])(size, size) = static_cast<float>(moment);
    }
  }

  /// Every run starts from the same maps; otherwise they would grow or vanish over many runs.
  void reset() {
    for (std::int32_t k = 0; k < residuals.count(); ++k) *residuals[k] = maps[static_cast<std::size_t>(k)];
  }

  std::vector<AMatrix<float>> maps;
  APtrArray<AMatrix<float>*> residuals;
  APtrArray<AMatrix<float>*> beams;
};

/// Iterations of one engine; the preparation of a run is a small part of the time and stays in it.
template <typename Engine>
void BM_CleanEngine_Iteration(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto terms = static_cast<std::int32_t>(state.range(1));
  Input input(terms, size);
  CleanParameters parameters;
  parameters.gain = 0.1;
  parameters.iterations =
      static_cast<std::int32_t>(std::int64_t{4} * 1024 * 1024 / (static_cast<std::int64_t>(size) * size));
  const std::atomic<int> stop{0};
  std::int64_t iterations = 0;
  for (auto _ : state) {
    state.PauseTiming();
    input.reset();
    state.ResumeTiming();
    Engine engine(input.residuals, input.beams, parameters);
    if (engine.Run(stop, nullptr) != 1 || !std::isfinite(engine.totalFlux())) {
      state.SkipWithError("the engine did not do its iterations");
      break;
    }
    iterations += engine.iterationsDone();
    benchmark::DoNotOptimize(engine.totalFlux());
  }
  const double done = static_cast<double>(iterations);
  const double work = done * size * size * terms * terms;
  state.counters["iterations/s"] = benchmark::Counter(done, benchmark::Counter::kIsRate);
  state.counters["s/(pixel N^2)"] =
      benchmark::Counter(work, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(BM_CleanEngine_Iteration<PlainCleanEngine>)
    ->Name("BM_PlainCleanEngine_Iteration")
    ->ArgNames({"size", "N"})
    ->ArgsProduct({{256, 512, 1024}, {1, 2, 3, 4}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
