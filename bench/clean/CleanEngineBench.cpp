// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "CleanSky.h"
#include "clean/BeamMatrix.h"
#include "clean/CleanTileKernel.h"
#include "clean/PlainCleanEngine.h"
#include "clean/TiledCleanEngine.h"

namespace lumo {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The last sky asked for: one program holds one of them at a time.
const bench::CleanSky& skyOf(std::int32_t terms, std::uint32_t size) {
  static std::pair<std::int32_t, std::uint32_t> key;
  static std::unique_ptr<bench::CleanSky> sky;
  if (sky == nullptr || key != std::pair(terms, size)) {
    sky.reset();
    sky = std::make_unique<bench::CleanSky>(terms, size);
    key = {terms, size};
  }
  return *sky;
}

void copyInto(const std::vector<AMatrix<float>>& from, APtrArray<AMatrix<float>*>& to) {
  for (const AMatrix<float>& map : from) to.InsertAt(to.count(), new AMatrix<float>(map));
}

/// Splits the time of a run into preparation and iterations.
class Stopwatch : public CleanObserver {
 public:
  void iterationDone(const CleanProgress& progress) override {
    if (progress.iteration == 1) first_ = Clock::now();
  }
  [[nodiscard]] Clock::time_point first() const { return first_; }

 private:
  Clock::time_point first_;
};

struct Outcome {
  double prepared = 0.0;      ///< seconds up to the end of the first iteration
  double perIteration = 0.0;  ///< seconds, from the second on
  double searched = 1.0;      ///< part of the pixels that an iteration searched
  std::vector<AMatrix<float>> residuals;
};

template <typename Engine, typename... More>
Outcome clean(const bench::CleanSky& sky, std::int32_t iterations, bool nonNegative, const More&... more) {
  APtrArray<AMatrix<float>*> residuals;
  APtrArray<AMatrix<float>*> beams;
  copyInto(sky.maps, residuals);
  copyInto(sky.beams, beams);
  CleanParameters parameters;
  parameters.iterations = iterations;
  parameters.gain = 0.1;
  parameters.nonNegative = nonNegative;
  const std::atomic<int> stop{0};
  Stopwatch watch;
  Outcome outcome;
  const Clock::time_point start = Clock::now();
  Engine engine(residuals, beams, parameters, more...);
  static_cast<void>(engine.Run(stop, &watch));
  outcome.perIteration = secondsSince(watch.first()) / (iterations - 1);
  outcome.prepared = std::chrono::duration<double>(watch.first() - start).count();
  if constexpr (std::is_same_v<Engine, TiledCleanEngine>)
    outcome.searched = static_cast<double>(engine.pixelsSearched()) /
                       (static_cast<double>(iterations) * static_cast<double>(sky.maps[0].size()));
  for (const AMatrix<float>* map : residuals) outcome.residuals.push_back(*map);
  return outcome;
}

bool sameMaps(const std::vector<AMatrix<float>>& a, const std::vector<AMatrix<float>>& b) {
  for (std::size_t k = 0; k < a.size(); ++k)
    if (std::memcmp(a[k].data(), b[k].data(), a[k].size() * sizeof(float)) != 0) return false;
  return a.size() == b.size();
}

/// Seconds per pixel and N^2 of the tile kernel alone, on one tile whose beams stay in the cache.
double kernelSeconds(const bench::CleanSky& sky) {
  constexpr std::uint32_t kRows = 8;
  constexpr std::uint32_t kColumns = 128;
  constexpr std::size_t kUpdates = 32;
  const auto terms = static_cast<std::int32_t>(sky.maps.size());
  APtrArray<AMatrix<float>*> beams;
  copyInto(sky.beams, beams);
  BeamMatrix matrix;
  matrix.prepare(beams, terms);
  CleanTileMaps maps;
  maps.terms = terms;
  std::vector<AMatrix<float>> tiles(static_cast<std::size_t>(terms), AMatrix<float>(kRows, kColumns));
  const AMatrix<float> intensity(kRows, kColumns);
  for (std::int32_t k = 0; k < terms; ++k) maps.maps[k] = tiles[static_cast<std::size_t>(k)].data();
  for (std::int32_t m = 0; m < beams.count(); ++m) maps.beams[m] = beams[m]->data();
  maps.intensity = intensity.data();
  maps.mapColumns = kColumns;
  maps.beamRows = beams[0]->rows();
  maps.beamColumns = beams[0]->columns();
  maps.inverse = matrix.inverse().data();
  maps.q = matrix.q();
  CleanUpdate updates[kUpdates];
  for (std::size_t p = 0; p < kUpdates; ++p) {
    updates[p].row = static_cast<std::uint32_t>(p % 4);
    updates[p].column = static_cast<std::uint32_t>(p % 8);
    for (double& increment : updates[p].increments) increment = 1e-9;
  }
  double best = 1e300;
  for (int repetition = 0; repetition < 30; ++repetition) {
    const Clock::time_point start = Clock::now();
    benchmark::DoNotOptimize(updateCleanTile(maps, {0, kRows, 0, kColumns}, updates, kUpdates, 0.1));
    best = std::min(best, secondsSince(start));
  }
  return best / (kRows * kColumns * static_cast<double>(kUpdates) * terms * terms);
}

/// Iterations of both engines on one sky, one after the other; the counters are ratios of their times.
void BM_CleanEngine_Iteration(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto terms = static_cast<std::int32_t>(state.range(1));
  CleanTiling tiling;
  tiling.threads = static_cast<int>(state.range(2));
  const bool nonNegative = state.range(3) != 0;
  const bench::CleanSky& sky = skyOf(terms, size);
  constexpr std::int32_t kIterations = 3000;
  // Plain iterations cost the same from the first to the last; the maps are compared after as many.
  const auto plainIterations =
      static_cast<std::int32_t>(std::int64_t{200} * 1024 * 1024 / (std::int64_t{size} * size) / terms);
  const double kernel = kernelSeconds(sky);
  const double pixels = static_cast<double>(size) * size * terms * terms;
  for (auto _ : state) {
    const Outcome plain = clean<PlainCleanEngine>(sky, plainIterations, nonNegative);
    if (!sameMaps(plain.residuals,
                  clean<TiledCleanEngine>(sky, plainIterations, nonNegative, tiling).residuals)) {
      state.SkipWithError("the engines differ");
      break;
    }
    const Outcome fast = clean<TiledCleanEngine>(sky, kIterations, nonNegative, tiling);
    state.SetIterationTime(fast.perIteration);
    state.counters["ratio"] = plain.perIteration / fast.perIteration;
    state.counters["plain_us"] = 1e6 * plain.perIteration;
    state.counters["fast_us"] = 1e6 * fast.perIteration;
    state.counters["prepare_ms"] = 1e3 * (fast.prepared - plain.prepared);
    state.counters["searched"] = fast.searched;
    // Of the rate that the tile kernel alone reaches in the cache.
    state.counters["of_kernel"] = kernel * pixels / fast.perIteration / tiling.threads;
    state.counters["ns/product"] = 1e9 * fast.perIteration / pixels;
  }
  state.counters["side_lobe"] = sky.largestSideLobe;
}

BENCHMARK(BM_CleanEngine_Iteration)
    ->ArgNames({"size", "N", "threads", "nonNegative"})
    ->ArgsProduct({{256, 512, 1024}, {1, 2, 3, 4}, {1, 2}, {0}})
    ->ArgsProduct({{512, 1024}, {2}, {1, 2}, {1}})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lumo
