// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "imaging/Gridder.h"
#include "io/UvxWriter.h"

namespace lumo {
namespace {

constexpr int kGroups = 50000;
constexpr double kFrequency = 1.4e9;

void require(const Status& status) {
  if (!status.ok()) throw std::runtime_error(status.text());
}

/// A file of elliptical uv tracks, kGroups groups of one channel and product; removed at the end.
class TrackFile {
 public:
  explicit TrackFile(std::uint32_t ifs)
      : path_(std::filesystem::temp_directory_path() /
              ("lumo-bench-" + std::to_string(::getpid()) + ".uvx")) {
    UvxContent content;
    content.shape = {ifs, 1, 1};
    content.sources = {{1, "BENCH", UvxFrame::kIcrs, 0, 0, 2000.0}};
    content.products = {1};
    content.selections = {{1, {}}};
    for (std::uint32_t i = 0; i < ifs; ++i)
      content.selections[0].bands.push_back({kFrequency * (1 + 0.01 * i), 1e6});
    UvxWriter writer;
    require(writer.begin(path_, content));
    std::vector<AUVXComplex> values(ifs, AUVXComplex(1.0, 0.5, 2.0));
    for (int g = 0; g < kGroups; ++g) {
      // 45 baselines after one another at each time.
      const double length = 1e-3 * (1 + g % 45) / 45;
      const double hour = 6.28 * g / kGroups + 0.7 * (g % 45);
      UvxRecord record;
      record.freqSel = 1;
      record.source = 1;
      record.u = static_cast<float>(length * std::cos(hour));
      record.v = static_cast<float>(0.6 * length * std::sin(hour));
      require(writer.append(record, values));
    }
    require(writer.finish());
  }
  TrackFile(const TrackFile&) = delete;
  TrackFile& operator=(const TrackFile&) = delete;
  ~TrackFile() { std::remove(path_.c_str()); }

  [[nodiscard]] VisibilityInputs inputs() const {
    AUVXFile file;
    if (file.Open(path_, AFile::kRead) == 0) throw std::runtime_error(file.status().text());
    VisibilityInputs inputs;
    ABitArray all(1);
    all = 1;
    inputs.names.InsertAt(0, path_);
    inputs.tables.InsertAt(0, AUVXFqTbl(file, 1));
    inputs.selections.InsertAt(0, all);
    inputs.mixes.InsertAt(0, AStokesMix(StokesQuantity::kI, 0));
    inputs.sources.InsertAt(0, 1);
    return inputs;
  }

 private:
  std::string path_;
};

/// Visibilities (group times IF) per second.
void BM_Gridder_Tracks(benchmark::State& state) {
  ABMakeParameters parameters;
  const auto order = static_cast<std::int32_t>(state.range(0));
  parameters.kernelType = static_cast<std::int32_t>(state.range(1));
  const auto ifs = static_cast<std::uint32_t>(state.range(2));
  parameters.halfSizeX = parameters.halfSizeY = static_cast<std::int32_t>(state.range(3));
  parameters.uvLimitU = parameters.uvLimitV = ABMakeParameters::kDefaultUvLimit;
  parameters.uvScaleU = 1.07e-3 * kFrequency;
  parameters.uvScaleV = 0.65e-3 * kFrequency;
  const TrackFile file(ifs);
  const VisibilityInputs inputs = file.inputs();
  const RunIndicators indicators;
  for (auto _ : state) {
    SpectralGridSet grids;
    Gridder gridder(parameters, inputs, {order, kFrequency, std::uint64_t{512} << 20}, indicators);
    if (gridder.run(grids) == 0) state.SkipWithError(gridder.status().text().c_str());
    benchmark::DoNotOptimize(grids.beams[0].data());
  }
  state.SetItemsProcessed(state.iterations() * kGroups * static_cast<std::int64_t>(ifs));
}
BENCHMARK(BM_Gridder_Tracks)
    ->ArgNames({"order", "kernel", "ifs", "half-size"})
    ->ArgsProduct({{1, 2, 4}, {kKernelPillBox, kKernelGauss}, {1, 8}, {256, 1024}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
