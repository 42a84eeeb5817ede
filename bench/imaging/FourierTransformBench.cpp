// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>

#include "core/PhaseTimer.h"
#include "core/ThreadTeam.h"
#include "imaging/FourierTransform.h"

namespace lumo {
namespace {

/// FFTW's own complex-to-real transform of the same size, planned once with the same effort for as many
/// threads: what a transform of a grid is held against. Out of place, as ours is.
class DirectTransform {
 public:
  DirectTransform(const AMatrix<Complex>& grid, int threads)
      : grid_(grid), image_(grid.rows(), 2 * (grid.columns() - 1)) {
    fftw_init_threads();
    fftw_plan_with_nthreads(threads);
    plan_ = fftw_plan_dft_c2r_2d(static_cast<int>(image_.rows()), static_cast<int>(image_.columns()),
                                 reinterpret_cast<fftw_complex*>(grid_.data()), image_.data(), FFTW_ESTIMATE);
    fftw_plan_with_nthreads(1);
  }
  DirectTransform(const DirectTransform&) = delete;
  DirectTransform& operator=(const DirectTransform&) = delete;
  ~DirectTransform() { fftw_destroy_plan(plan_); }
  /// The input is overwritten.
  void fill(const AMatrix<Complex>& grid) { std::copy_n(grid.data(), grid.size(), grid_.data()); }
  void run() {
    fftw_execute(plan_);
    benchmark::DoNotOptimize(image_.data());
  }

 private:
  AMatrix<Complex> grid_;
  AMatrix<double> image_;
  fftw_plan plan_;
};

/// Images of 2 Ny = 2 Nx = range(0) rows and columns as a run makes them, one after the other with plans and
/// image kept, in turns with FFTW's transform; `ratio` is ours over FFTW's time.
void BM_FourierTransform_Grid(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto threads = static_cast<int>(state.range(1));
  AMatrix<Complex> filled(size, size / 2 + 1);
  for (std::size_t i = 0; i < filled.size(); ++i)
    filled.data()[i] = Complex(static_cast<double>(i % 17), static_cast<double>(i % 5));
  ThreadTeam team(threads);
  GridTransform transform({}, team);
  DirectTransform direct(filled, threads);
  AMatrix<double> image;
  double ours = 0;
  double fftw = 0;
  for (auto _ : state) {
    direct.fill(filled);
    {
      const PhaseTimer timer(fftw);
      direct.run();
    }
    AMatrix<Complex> grid = filled;
    const Stopwatch watch;
    {
      const PhaseTimer timer(ours);
      transform.run(grid, image, RunIndicators());
      benchmark::DoNotOptimize(image.data());
    }
    state.SetIterationTime(watch.seconds());
  }
  state.counters["fftw_ms"] = 1e3 * fftw / static_cast<double>(state.iterations());
  state.counters["ratio"] = ours / fftw;
}
BENCHMARK(BM_FourierTransform_Grid)
    ->ArgNames({"size", "threads"})
    ->ArgsProduct({{512, 1024, 2048}, {1, 2}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
