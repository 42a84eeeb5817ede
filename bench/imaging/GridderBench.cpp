// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
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

/// Gridding and reading take turns. `rate` and `reading` count every channel of every IF as a visibility;
/// opening, setting up and folding the grids are included; the phases are shares of the gridding.
void BM_Gridder_Tracks(benchmark::State& state) {
  const auto order = static_cast<std::int32_t>(state.range(3));
  const auto threads = static_cast<int>(state.range(4));
  const Shelf& shelf =
      fileOf(static_cast<std::uint32_t>(state.range(1)), static_cast<std::uint32_t>(state.range(2)));
  ABMakeParameters parameters = bench::trackParameters(static_cast<std::int32_t>(state.range(5)));
  parameters.kernelType = static_cast<std::int32_t>(state.range(0));
  const VisibilityInputs inputs = shelf.file->inputs();
  const RunIndicators indicators;
  benchmark::DoNotOptimize(readAndSum(shelf.file->path()));
  double reading = 0;
  double gridding = 0;
  std::map<std::string, double> phases;
  for (auto _ : state) {
    {
      const PhaseTimer timer(reading);
      benchmark::DoNotOptimize(readAndSum(shelf.file->path()));
    }
    const Stopwatch watch;
    {
      const PhaseTimer timer(gridding);
      SpectralGridSet grids;
      Gridder gridder(parameters, inputs, {order, bench::kTrackFrequency, std::uint64_t{512} << 20, threads},
                      indicators);
      if (gridder.run(grids) == 0) state.SkipWithError(gridder.status().text().c_str());
      benchmark::DoNotOptimize(grids.beams[0].data());
      for (const PhaseTime& phase : gridder.phases()) phases[phase.name] += phase.seconds;
    }
    state.SetIterationTime(watch.seconds());
  }
  const auto done = static_cast<double>(state.iterations()) * static_cast<double>(shelf.visibilities);
  state.counters["rate"] = done / gridding;
  state.counters["reading"] = done / reading;
  state.counters["ratio"] = reading / gridding;
  for (const auto& [name, seconds] : phases) state.counters[name] = seconds / gridding;
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
