// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "CleanSky.h"
#include "TurnTaker.h"
#include "clean/BeamMatrix.h"
#include "clean/BeamNorm.h"
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

/// Seconds per pixel and N^2 of the tile kernel alone, on one tile whose beams stay in the cache.
double kernelSeconds(const bench::CleanSky& sky, APtrArray<AMatrix<float>*>& beams) {
  constexpr std::uint32_t kRows = 8;
  constexpr std::uint32_t kColumns = 128;
  constexpr std::size_t kUpdates = 32;
  const auto terms = static_cast<std::int32_t>(sky.maps.size());
  BeamMatrix matrix;
  matrix.prepare(beams, terms);
  CleanTileMaps maps;
  maps.terms = terms;
  std::vector<AMatrix<float>> tiles(static_cast<std::size_t>(terms), AMatrix<float>(kRows, kColumns));
  for (std::int32_t k = 0; k < terms; ++k) maps.maps[k] = tiles[static_cast<std::size_t>(k)].data();
  for (std::int32_t m = 0; m < beams.count(); ++m) maps.beams[m] = beams[m]->data();
  maps.mapColumns = kColumns;
  maps.beamRows = beams[0]->rows();
  maps.beamColumns = beams[0]->columns();
  BeamNorm norm;
  if (norm.prepare(beams, matrix, terms)) maps.smallestBeam = norm.smallestBeam();
  CleanUpdate updates[kUpdates];
  for (std::size_t p = 0; p < kUpdates; ++p) {
    updates[p].row = static_cast<std::uint32_t>(p % 4);
    updates[p].column = static_cast<std::uint32_t>(p % 8);
    for (double& increment : updates[p].increments) increment = 1e-9;
  }
  double best = 1e300;
  for (int repetition = 0; repetition < 30; ++repetition) {
    const Clock::time_point start = Clock::now();
    subtractExactly(maps, {0, kRows, 0, kColumns}, updates, kUpdates);
    benchmark::ClobberMemory();
    best = std::min(best, secondsSince(start));
  }
  return best / (kRows * kColumns * static_cast<double>(kUpdates) * terms * terms);
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

/// What one engine took, slice by slice.
struct Timing {
  std::vector<double> perIteration;

  [[nodiscard]] double mean() const {
    return std::accumulate(perIteration.begin(), perIteration.end(), 0.0) /
           static_cast<double>(perIteration.size());
  }
  /// Last third of the slices over the first.
  [[nodiscard]] double lateOverEarly() const {
    const auto third = static_cast<std::ptrdiff_t>(perIteration.size() / 3);
    return median({perIteration.end() - third, perIteration.end()}) /
           median({perIteration.begin(), perIteration.begin() + third});
  }
};

constexpr std::int32_t kSlices = 12;
constexpr std::int32_t kIterations = 3000;
constexpr std::int32_t kSlice = kIterations / kSlices;

/// One engine on a sky of its own, run in slices.
template <typename Engine>
struct Runner {
  template <typename... More>
  Runner(const bench::CleanSky& sky, const CleanParameters& parameters, const More&... more) {
    copyInto(sky.maps, residuals);
    copyInto(sky.beams, beams);
    engine = std::make_unique<Engine>(residuals, beams, parameters, more...);
    turns = std::make_unique<bench::TurnTaker>(*engine);
  }
  void run(std::int32_t iterations) {
    const bench::TurnTaker::Seconds seconds = turns->slice(iterations);
    wall.perIteration.push_back(seconds.wall);
    thread.perIteration.push_back(seconds.thread);
  }

  APtrArray<AMatrix<float>*> residuals;
  APtrArray<AMatrix<float>*> beams;
  Timing wall;
  Timing thread;
  std::unique_ptr<Engine> engine;
  std::unique_ptr<bench::TurnTaker> turns;  // last: it waits for the engine
};

CleanTiling tilingOf(int threads, CleanRounding rounding = CleanRounding::kEveryProduct) {
  CleanTiling tiling;
  tiling.threads = threads;
  tiling.rounding = rounding;
  return tiling;
}

/// Maps of as many iterations are compared; false when they differ.
template <typename A, typename B>
bool sameAfter(std::int32_t iterations, A& plain, B& fast) {
  static_cast<void>(fast.turns->slice(iterations, [&] { fast.engine->settle(); }));
  for (std::int32_t k = 0; k < plain.residuals.count(); ++k)
    if (std::memcmp(plain.residuals[k]->data(), fast.residuals[k]->data(),
                    plain.residuals[k]->size() * sizeof(float)) != 0)
      return false;
  return true;
}

/// What an engine has put off is part of its cost.
double settledSeconds(Runner<TiledCleanEngine>& runner) {
  double settled = 0.0;
  static_cast<void>(runner.turns->slice(1, [&] {
    const Clock::time_point start = Clock::now();
    runner.engine->settle();
    settled = secondsSince(start);
  }));
  return settled;
}

/// The plain engine, on one and on two threads the tiled one and the one that rounds once, and the kernel
/// take turns on one sky; counters are medians over the slices and their ratios. On one thread the
/// processor's time counts, on two that on the wall, which means something on a quiet machine only.
void takeTurns(benchmark::State& state, const bench::CleanSky& sky, bool nonNegative) {
  const auto terms = static_cast<std::int32_t>(sky.maps.size());
  const auto pixels = static_cast<double>(sky.maps[0].size());
  CleanParameters parameters;
  parameters.iterations = std::numeric_limits<std::int32_t>::max();
  parameters.gain = 0.1;
  parameters.nonNegative = nonNegative;
  // A plain iteration costs the same from the first to the last, so fewer of them do.
  const std::int32_t plainSlice = std::max(4, static_cast<std::int32_t>(2e7 / pixels / terms));

  Runner<PlainCleanEngine> plain(sky, parameters);
  Runner<TiledCleanEngine> one(sky, parameters, tilingOf(1));
  Runner<TiledCleanEngine> two(sky, parameters, tilingOf(2));
  Runner<TiledCleanEngine> merged(sky, parameters, tilingOf(1, CleanRounding::kOnce));
  Runner<TiledCleanEngine> mergedTwo(sky, parameters, tilingOf(2, CleanRounding::kOnce));
  std::vector<double> kernels;
  for (std::int32_t slice = 0; slice < kSlices; ++slice) {
    plain.run(plainSlice);
    if (slice == 0 && !(sameAfter(plainSlice, plain, one) && sameAfter(plainSlice, plain, two))) {
      state.SkipWithError("the engines differ");
      return;
    }
    kernels.push_back(kernelSeconds(sky, one.beams));
    one.run(kSlice);
    two.run(kSlice);
    merged.run(kSlice);
    mergedTwo.run(kSlice);
  }
  const double mergedSeconds = merged.thread.mean() + settledSeconds(merged) / kIterations;
  const double mergedTwoSeconds = mergedTwo.wall.mean() + settledSeconds(mergedTwo) / kIterations;
  const double products = pixels * terms * terms;
  const double seconds = median(one.thread.perIteration);
  state.SetIterationTime(seconds);
  state.counters["plain_us"] = 1e6 * median(plain.thread.perIteration);
  state.counters["one_us"] = 1e6 * seconds;
  state.counters["two_us"] = 1e6 * median(two.wall.perIteration);
  state.counters["merged_us"] = 1e6 * mergedSeconds;
  state.counters["merged_two_us"] = 1e6 * mergedTwoSeconds;
  state.counters["ratio1"] = median(plain.thread.perIteration) / seconds;
  state.counters["ratio2"] = median(plain.wall.perIteration) / median(two.wall.perIteration);
  state.counters["merged_to_one"] = one.thread.mean() / mergedSeconds;
  // Of the rate that the tile kernel alone reaches in the cache.
  state.counters["of_kernel"] = median(kernels) * products / seconds;
  state.counters["kernel_ns"] = 1e9 * median(kernels);
  state.counters["late/early"] = one.thread.lateOverEarly();
  state.counters["prepare_ms"] = 1e3 * (one.turns->prepared().thread - plain.turns->prepared().thread);
  state.counters["searched"] =
      static_cast<double>(one.engine->pixelsSearched()) / (one.engine->iterationsDone() * pixels);
  // Of maps, components and beams.
  const double held = sizeof(float) * (2.0 * terms * pixels + static_cast<double>(sky.beams.size()) *
                                                                  static_cast<double>(sky.beams[0].size()));
  state.counters["memory_%"] = 100.0 * static_cast<double>(one.engine->workingBytes()) / held;
  state.counters["merged_memory_%"] = 100.0 * static_cast<double>(merged.engine->workingBytes()) / held;
}

void BM_CleanEngine_Iteration(benchmark::State& state) {
  const bench::CleanSky& sky =
      skyOf(static_cast<std::int32_t>(state.range(1)), static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) takeTurns(state, sky, state.range(2) != 0);
}

BENCHMARK(BM_CleanEngine_Iteration)
    ->ArgNames({"size", "N", "nonNegative"})
    ->ArgsProduct({{256, 512, 1024}, {1, 2, 3, 4}, {0}})
    ->ArgsProduct({{512, 1024}, {2}, {1}})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);

/// The same on the dirty maps and beams of a run: CLEAN_BENCH_FOLDER, with its separator, and
/// CLEAN_BENCH_PREFIX tell which.
void BM_CleanEngine_Files(benchmark::State& state) {
  const char* const folder = std::getenv("CLEAN_BENCH_FOLDER");
  const char* const prefix = std::getenv("CLEAN_BENCH_PREFIX");
  if (folder == nullptr || prefix == nullptr) {
    state.SkipWithError("CLEAN_BENCH_FOLDER and CLEAN_BENCH_PREFIX are not set");
    return;
  }
  const bench::CleanSky sky(folder, prefix);
  if (sky.maps.empty()) {
    state.SkipWithError("there are no dirty maps with their beams");
    return;
  }
  for (auto _ : state) takeTurns(state, sky, false);
}

BENCHMARK(BM_CleanEngine_Files)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lumo
