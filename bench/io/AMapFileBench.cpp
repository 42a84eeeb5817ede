// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "io/MapProduct.h"

namespace lumo {
namespace {

struct Sample {
  std::string path = (std::filesystem::temp_directory_path() / "lumo-bench-map.exm").string();
  AMapHeader header;
  TMinMax range;
  AMatrix<float> matrix;

  explicit Sample(std::uint32_t size) : matrix(size, size) {
    header.frequency = 5e9;
    range.xMin = range.yMin = -(size / 2.0);
    range.xMax = range.yMax = size / 2.0 - 1;
    for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] = static_cast<float>(i % 1009) - 7.5F;
  }
  ~Sample() { std::filesystem::remove(path); }
  [[nodiscard]] std::int64_t bytes() const {
    return static_cast<std::int64_t>(matrix.size() * sizeof(float));
  }
};

void BM_AMapFile_Write(benchmark::State& state) {
  Sample sample(static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) {
    const Status status = writeMap(sample.path, sample.header, sample.range, sample.matrix);
    if (!status.ok()) {
      state.SkipWithError(status.text().c_str());
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * sample.bytes());
}
BENCHMARK(BM_AMapFile_Write)->Arg(256)->Arg(1024)->Arg(2048)->UseRealTime();

void BM_AMapFile_Read(benchmark::State& state) {
  const Sample sample(static_cast<std::uint32_t>(state.range(0)));
  LoadedMap map;
  const bool good = writeMap(sample.path, sample.header, sample.range, sample.matrix).ok() &&
                    readMap(sample.path, map).ok() && (*map.matrix)(3, 5) == sample.matrix(3, 5);
  if (!good) {
    state.SkipWithError("the map does not read back");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(readMap(sample.path, map).ok());
    benchmark::DoNotOptimize(map.matrix->data());
  }
  state.SetBytesProcessed(state.iterations() * sample.bytes());
}
BENCHMARK(BM_AMapFile_Read)->Arg(256)->Arg(1024)->Arg(2048)->UseRealTime();

}  // namespace
}  // namespace lumo
