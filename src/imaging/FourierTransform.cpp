// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/FourierTransform.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "core/Units.h"
#include "imaging/Fft.h"

namespace lumo {

namespace {

// Columns (rows) that travel through the scratch buffer together: enough to use whole cache lines of the
// row-major grid, few enough to stay in the second-level cache.
constexpr std::int64_t kBatch = 8;

struct FftwDelete {
  void operator()(Complex* memory) const { fftw_free(memory); }
};

std::mutex& plannerMutex() {
  static std::mutex mutex;  // FFTW's planner is not reentrant.
  return mutex;
}

/// kBatch contiguous vectors of one length and their in-place transform.
class TransformBatch {
 public:
  TransformBatch(std::int64_t length, const TransformSettings& settings, double scale)
      : length_(length),
        usable_(isTransformLength(length)),
        scale_(settings.direction < 1 ? scale : 1.0 / (static_cast<double>(length) * scale)),
        memory_(
            static_cast<Complex*>(fftw_malloc(sizeof(Complex) * static_cast<std::size_t>(length * kBatch)))) {
    if (memory_ == nullptr) throw std::bad_alloc();
    std::fill_n(memory_.get(), length * kBatch, Complex());
    if (!usable_) return;
    const int n = static_cast<int>(length);
    auto* const data = reinterpret_cast<fftw_complex*>(memory_.get());
    const std::lock_guard lock(plannerMutex());
    plan_ = fftw_plan_many_dft(1, &n, kBatch, data, nullptr, 1, n, data, nullptr, 1, n,
                               settings.direction < 1 ? FFTW_FORWARD : FFTW_BACKWARD, FFTW_ESTIMATE);
    if (plan_ == nullptr) throw std::bad_alloc();
  }
  TransformBatch(const TransformBatch&) = delete;
  TransformBatch& operator=(const TransformBatch&) = delete;
  ~TransformBatch() {
    const std::lock_guard lock(plannerMutex());
    if (plan_ != nullptr) fftw_destroy_plan(plan_);
  }

  Complex* vector(std::int64_t index) { return memory_.get() + index * length_; }
  /// Transforms all vectors; a refused length leaves them as they are.
  void transform() {
    if (!usable_) return;
    if (scale_ != 1.0)
      for (std::int64_t i = 0; i < length_ * kBatch; ++i) memory_.get()[i] *= scale_;
    fftw_execute(plan_);
  }

 private:
  std::int64_t length_;
  bool usable_;
  double scale_;
  std::unique_ptr<Complex, FftwDelete> memory_;
  fftw_plan plan_ = nullptr;
};

/// PackHermitianRow with its factors computed once for all rows; the same operations in the same order.
class HermitianPacker {
 public:
  HermitianPacker(std::int64_t n, int direction) : n_(n) {
    double angle = 1.5707963267948966;
    const double step = direction * kPi / static_cast<double>(n);
    for (std::int64_t k = 0; k <= n / 2; ++k, angle += step) {
      alpha_.push_back((1.0 - std::cos(angle)) * 0.5);
      beta_.push_back(-0.5 * std::sin(angle));
    }
  }
  void pack(Complex* row) const {
    for (std::int64_t k = 0; k <= n_ / 2; ++k) {
      const double alpha = alpha_[static_cast<std::size_t>(k)];
      const double beta = beta_[static_cast<std::size_t>(k)];
      const Complex x = row[k];
      const Complex y = row[n_ - k];
      const double dr = x.real() - y.real();
      const double di = x.imag() + y.imag();
      const double tr = dr * alpha - di * beta;
      const double ti = dr * beta + di * alpha;
      row[k] = Complex(2.0 * (x.real() - tr), 2.0 * (x.imag() - ti));
      if (k < n_ / 2) row[n_ - k] = Complex(2.0 * (y.real() + tr), 2.0 * (y.imag() - ti));
    }
  }

 private:
  std::int64_t n_;
  std::vector<double> alpha_, beta_;
};

void swapRowHalves(AMatrix<Complex>& grid) {
  const std::uint32_t half = grid.rows() / 2;
  for (std::uint32_t r = 0; r < half; ++r)
    std::swap_ranges(&grid(r, 0), &grid(r, 0) + grid.columns(), &grid(r + half, 0));
}

int columnPass(AMatrix<Complex>& grid, const TransformSettings& settings, const RunIndicators& indicators,
               AProgress& progress) {
  const std::int64_t rows = grid.rows();
  const std::int64_t columns = grid.columns();
  TransformBatch batch(rows, settings, settings.columnScale);
  for (std::int64_t first = 0; first < columns; first += kBatch) {
    const std::int64_t count = std::min(kBatch, columns - first);
    for (std::int64_t i = 0; i < count; ++i) {
      progress.SetPos(static_cast<double>(first + i + 1));
      if (indicators.cancelled()) return 0;
    }
    // Vectors beyond the last column hold what was there before; nothing reads their transforms.
    for (std::int64_t r = 0; r < rows; ++r)
      for (std::int64_t i = 0; i < count; ++i) batch.vector(i)[r] = grid.data()[r * columns + first + i];
    batch.transform();
    for (std::int64_t r = 0; r < rows; ++r)
      for (std::int64_t i = 0; i < count; ++i) grid.data()[r * columns + first + i] = batch.vector(i)[r];
  }
  return 1;
}

int rowPass(AMatrix<Complex>& grid, const TransformSettings& settings, const RunIndicators& indicators,
            AProgress& progress) {
  const std::int64_t rows = grid.rows();
  const std::int64_t columns = grid.columns();
  const std::int64_t n = columns - 1;
  TransformBatch batch(n, settings, settings.rowScale);
  const HermitianPacker packer(n, settings.direction);
  for (std::int64_t first = 0; first < rows; first += kBatch) {
    const std::int64_t count = std::min(kBatch, rows - first);
    for (std::int64_t i = 0; i < count; ++i) {
      progress.SetPos(static_cast<double>(columns + first + i + 1));
      if (indicators.cancelled()) return 0;
      Complex* const row = grid.data() + (first + i) * columns;
      packer.pack(row);
      std::copy_n(row, n, batch.vector(i));
    }
    batch.transform();
    for (std::int64_t i = 0; i < count; ++i)
      std::copy_n(batch.vector(i), n, grid.data() + (first + i) * columns);
  }
  return 1;
}

void swapQuadrants(AMatrix<double>& image) {
  const std::uint32_t halfRows = (1u << transformExponent(image.rows())) / 2;
  const std::uint32_t halfColumns = (1u << transformExponent(image.columns())) / 2;
  for (std::uint32_t r = 0; r < halfRows; ++r) {
    double* const upper = &image(r, 0);
    double* const lower = &image(r + halfRows, 0);
    std::swap_ranges(upper, upper + halfColumns, lower + halfColumns);
    std::swap_ranges(lower, lower + halfColumns, upper + halfColumns);
  }
}

}  // namespace

int fourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, const TransformSettings& settings,
                         const RunIndicators& indicators) {
  indicators.setText("Fast Fourier Transform...");
  swapRowHalves(grid);
  indicators.resetBar(indicators.readingBar);
  AProgress progress(indicators.readingBar, static_cast<double>(grid.columns()) + grid.rows());
  if (columnPass(grid, settings, indicators, progress) == 0) return 0;
  if (rowPass(grid, settings, indicators, progress) == 0) return 0;
  indicators.resetBar(indicators.readingBar);

  image.resize(grid.rows(), 2 * grid.columns());
  std::memcpy(image.data(), grid.data(), image.size() * sizeof(double));
  grid.clear();
  swapQuadrants(image);
  indicators.setText("");
  return 1;
}

}  // namespace lumo
