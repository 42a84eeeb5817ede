// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "TrackFile.h"
#include "core/PhaseTimer.h"
#include "imaging/Gridder.h"

namespace lumo {
namespace {

constexpr std::uint64_t kVisibilities = 12'000'000;
constexpr std::uint64_t kMostGroups = 4'000'000;

/// The file of the cases that follow one another with the same shape: writing one takes long.
struct Shelf {
  std::uint32_t ifs = 0;
  std::uint32_t channels = 0;
  std::uint64_t visibilities = 0;
  std::unique_ptr<bench::TrackFile> file;
};

const Shelf& fileOf(std::uint32_t ifs, std::uint32_t channels) {
  static Shelf shelf;
  if (shelf.file != nullptr && shelf.ifs == ifs && shelf.channels == channels) return shelf;
  const std::uint64_t each = std::uint64_t{ifs} * channels;
  const std::uint64_t groups = std::min(kVisibilities / each, kMostGroups);
  shelf.file.reset();
  shelf = {ifs, channels, groups * each, std::make_unique<bench::TrackFile>(ifs, channels, groups)};
  return shelf;
}

/// Reads the file through its memory map and sums all numbers of all visibilities: what gridding is held
/// against.
double readAndSum(const std::string& path) {
  AUVXFile file;
  if (file.Open(path, AFile::kRead) == 0) throw std::runtime_error(file.status().text());
  double re = 0, im = 0, weight = 0;
  const std::uint64_t each = file.shape().visibilities();
  for (std::uint64_t g = 0; g < file.groupCount(); ++g) {
    const std::uint8_t* bytes = file.groupAt(g) + UvxRecord::kBytes;
    for (std::uint64_t i = 0; i < each; ++i, bytes += sizeof(AUVXComplex)) {
      AUVXComplex value;
      std::memcpy(&value, bytes, sizeof value);
      re += value.Re();
      im += value.Im();
      weight += value.Weight();
    }
  }
  return re + im + weight;
}

/// The times that something took.
struct Times {
  void add(double seconds) {
    sum += seconds;
    least = std::min(least, seconds);
  }
  double sum = 0;
  double least = std::numeric_limits<double>::infinity();
};

/// Reading the file, gridding it on one thread and, if there are more, on all of them take turns. `rate` and
/// `reading` count every channel of every IF as a visibility; opening, setting up and folding the grids are
/// included; the phases are shares of the gridding. `over_one` is the time on one thread over that on all,
/// `least_over_one` the same of the shortest times.
void BM_Gridder_Tracks(benchmark::State& state) {
  const auto order = static_cast<std::int32_t>(state.range(3));
  const auto threads = static_cast<int>(state.range(4));
  const Shelf& shelf =
      fileOf(static_cast<std::uint32_t>(state.range(1)), static_cast<std::uint32_t>(state.range(2)));
  ABMakeParameters parameters = bench::trackParameters(static_cast<std::int32_t>(state.range(5)));
  parameters.kernelType = static_cast<std::int32_t>(state.range(0));
  const VisibilityInputs inputs = shelf.file->inputs();
  const RunIndicators indicators;
  std::map<std::string, double> phases;
  // Its watch goes on until the memory has been given back.
  const auto grid = [&](int members) {
    const Stopwatch watch;
    SpectralGridSet grids;
    Gridder gridder(parameters, inputs, {order, bench::kTrackFrequency, std::uint64_t{512} << 20, members},
                    indicators);
    if (gridder.run(grids) == 0) state.SkipWithError(gridder.status().text().c_str());
    benchmark::DoNotOptimize(grids.beams[0].data());
    if (members == threads)
      for (const PhaseTime& phase : gridder.phases()) phases[phase.name] += phase.seconds;
    return watch;
  };
  benchmark::DoNotOptimize(readAndSum(shelf.file->path()));
  Times reading, alone, gridding;
  for (auto _ : state) {
    const Stopwatch watch;
    benchmark::DoNotOptimize(readAndSum(shelf.file->path()));
    reading.add(watch.seconds());
    if (threads > 1) alone.add(grid(1).seconds());
    const double seconds = grid(threads).seconds();
    gridding.add(seconds);
    state.SetIterationTime(seconds);
  }
  const auto done = static_cast<double>(state.iterations()) * static_cast<double>(shelf.visibilities);
  state.counters["rate"] = done / gridding.sum;
  state.counters["reading"] = done / reading.sum;
  state.counters["ratio"] = reading.sum / gridding.sum;
  if (threads > 1) {
    state.counters["over_one"] = alone.sum / gridding.sum;
    state.counters["least_over_one"] = alone.least / gridding.least;
  }
  for (const auto& [name, seconds] : phases) state.counters[name] = seconds / gridding.sum;
}
BENCHMARK(BM_Gridder_Tracks)
    ->ArgNames({"kernel", "ifs", "channels", "order", "threads", "half-size"})
    ->ArgsProduct({{kKernelPillBox}, {8, 64}, {1, 16}, {1, 2, 3, 4}, {1, 2}, {256}})
    ->ArgsProduct({{kKernelGauss}, {8, 64}, {1, 16}, {1, 4}, {1, 2}, {256}})
    ->ArgsProduct({{kKernelPillBox, kKernelGauss}, {1}, {1}, {1}, {1, 2}, {256}})
    ->ArgsProduct({{kKernelPillBox}, {8}, {16}, {1, 4}, {1, 2}, {1024}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
