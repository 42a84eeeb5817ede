// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include "imaging/FourierTransform.h"

namespace lumo {
namespace {

/// One image of 2 Ny = 2 Nx = range(0) rows and columns.
void BM_FourierTransform_Grid(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  AMatrix<Complex> filled(size, size / 2 + 1);
  for (std::size_t i = 0; i < filled.size(); ++i)
    filled.data()[i] = Complex(static_cast<double>(i % 17), static_cast<double>(i % 5));
  for (auto _ : state) {
    state.PauseTiming();
    AMatrix<Complex> grid = filled;
    AMatrix<double> image;
    state.ResumeTiming();
    benchmark::DoNotOptimize(fourierTransformGrid(grid, image, {}, RunIndicators()));
    benchmark::DoNotOptimize(image.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(size) * size);
}
BENCHMARK(BM_FourierTransform_Grid)->ArgName("size")->Arg(512)->Arg(1024)->Arg(2048)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
