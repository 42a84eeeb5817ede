// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/FourierTransform.h"

#include <fftw3.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "imaging/Fft.h"
#include "imaging/HermitianPacker.h"
#include "imaging/ShareOut.h"

namespace lumo {

namespace {

// Columns that travel through the scratch buffer together: enough to use whole cache lines of the row-major
// grid, few enough to stay in the second-level cache. And rows that a thread takes at a time.
constexpr std::int64_t kBatch = 8;
// Columns that lie interleaved in the buffer, as they do in the grid: with more of them FFTW is slower.
constexpr std::int64_t kTogether = 4;

struct FftwDelete {
  void operator()(Complex* memory) const { fftw_free(memory); }
};

std::mutex& plannerMutex() {
  static std::mutex mutex;  // FFTW's planner is not reentrant.
  return mutex;
}

using Buffer = std::unique_ptr<Complex, FftwDelete>;

/// The transform of some vectors of one length, in place in any of its buffers: one for each member of a
/// team. `together` of them are interleaved, element by element, and their groups follow each other. Every
/// buffer is aligned alike, so the bits do not depend on who transforms.
class BatchPlan {
 public:
  BatchPlan(std::int64_t length, std::int64_t groups, std::int64_t together, int direction, double scale,
            int members)
      : length_(length),
        groups_(groups),
        together_(together),
        usable_(isTransformLength(length)),
        scale_(direction < 1 ? scale : 1.0 / (static_cast<double>(length) * scale)) {
    const auto size = static_cast<std::size_t>(length * groups * together);
    for (int i = 0; i < members; ++i) {
      buffers_.emplace_back(static_cast<Complex*>(fftw_malloc(sizeof(Complex) * size)));
      if (buffers_.back() == nullptr) throw std::bad_alloc();
      std::fill_n(buffers_.back().get(), size, Complex());
    }
    if (!usable_) return;
    const int n = static_cast<int>(length);
    const int stride = static_cast<int>(together);
    auto* const data = reinterpret_cast<fftw_complex*>(buffers_[0].get());
    const std::lock_guard lock(plannerMutex());
    plan_ = fftw_plan_many_dft(1, &n, stride, data, nullptr, stride, 1, data, nullptr, stride, 1,
                               direction < 1 ? FFTW_FORWARD : FFTW_BACKWARD, FFTW_ESTIMATE);
    if (plan_ == nullptr) throw std::bad_alloc();
  }
  BatchPlan(const BatchPlan&) = delete;
  BatchPlan& operator=(const BatchPlan&) = delete;
  ~BatchPlan() {
    const std::lock_guard lock(plannerMutex());
    if (plan_ != nullptr) fftw_destroy_plan(plan_);
  }

  /// Element `t` of the first of the vectors of a group, those of the others behind it.
  [[nodiscard]] Complex* element(std::size_t member, std::int64_t group, std::int64_t t) const {
    return buffers_[member].get() + (group * length_ + t) * together_;
  }
  /// Transforms all vectors of a member's buffer; a refused length leaves them as they are.
  void transform(std::size_t member) const {
    if (!usable_) return;
    if (scale_ != 1.0) {
      Complex* const data = element(member, 0, 0);
      for (std::int64_t i = 0; i < length_ * groups_ * together_; ++i) data[i] *= scale_;
    }
    for (std::int64_t group = 0; group < groups_; ++group) {
      auto* const values = reinterpret_cast<fftw_complex*>(element(member, group, 0));
      fftw_execute_dft(plan_, values, values);
    }
  }

 private:
  std::int64_t length_;
  std::int64_t groups_;
  std::int64_t together_;
  bool usable_;
  double scale_;
  std::vector<Buffer> buffers_;
  fftw_plan plan_ = nullptr;
};

/// Index i with the halves of 0 .. 2·half − 1 exchanged; what lies behind them stays.
std::int64_t exchanged(std::int64_t i, std::int64_t half) {
  if (i >= 2 * half) return i;
  return i < half ? i + half : i - half;
}

/// kTogether values, or as many as there are, to a place apart.
void copyTogether(const Complex* from, std::int64_t count, Complex* to) {
  // Of a length that the compiler knows, where it can be; for std::copy_n it calls a function none the less.
  if (count < kTogether)
    std::copy_n(from, count, to);
  else
    std::memcpy(to, from, kTogether * sizeof(Complex));
}

/// One row's elements of a batch of columns; an address outside the grid does no harm.
void prefetchBatch(const Complex* elements) {
  constexpr std::int64_t kOfLine = 64 / sizeof(Complex);
  for (std::int64_t i = 0; i < kBatch; i += kOfLine) __builtin_prefetch(elements + i);
  __builtin_prefetch(elements + kBatch - 1);
}

/// Half the length that a pass of `length` has by the exponent rule.
std::int64_t halfLength(std::uint32_t length) {
  return (std::int64_t{1} << transformExponent(length)) / 2;
}

/// Takes row r of a transformed grid, each value two samples, into the image with its quadrants exchanged,
/// which are `halfRows` by `half` samples. What lies behind the samples of the image, as a rule its last two
/// columns, comes from `rest`.
void storeRow(const Complex* row, const Complex* rest, std::int64_t r, std::int64_t halfRows,
              std::int64_t half, AMatrix<double>& image) {
  const std::int64_t columns = image.columns();
  const auto* const samples = reinterpret_cast<const double*>(row);
  const auto* const others = reinterpret_cast<const double*>(rest);
  double* const same = image.data() + r * columns;
  const bool exchange = r < 2 * halfRows;
  double* const to = exchange ? image.data() + exchanged(r, halfRows) * columns : same;
  std::copy_n(samples, half, exchange ? to + half : to);
  std::copy_n(samples + half, half, exchange ? to : to + half);
  std::copy(others + 2 * half, others + columns, same + 2 * half);
}

}  // namespace

struct GridTransform::Plans {
  Plans(std::int64_t rows, std::int64_t n, const TransformSettings& settings, int members)
      : columns(rows, kBatch / kTogether, kTogether, settings.direction, settings.columnScale, members),
        row(n, 1, 1, settings.direction, settings.rowScale, members),
        packer(n, settings.direction) {}
  BatchPlan columns, row;
  HermitianPacker packer;
};

/// Shows the progress of a transform and asks for its end; all members of the team pass through here, but
/// only the caller's thread touches the bar.
class GridTransform::Watch {
 public:
  Watch(const RunIndicators& indicators, std::int64_t steps)
      : indicators_(indicators),
        steps_(steps),
        progress_(indicators.readingBar, static_cast<double>(steps)) {}
  /// Before `count` columns or rows are worked on. Returns false when they are to be left.
  bool step(std::int64_t count) {
    const std::int64_t first = begun_.fetch_add(count);
    for (std::int64_t i = 0; i < count; ++i) {
      if (stopped_) return false;
      if (std::this_thread::get_id() == caller_) progress_.SetPos(static_cast<double>(first + i + 1));
      if (indicators_.cancelled()) stopped_ = true;
    }
    return !stopped_;
  }
  [[nodiscard]] bool stopped() const { return stopped_; }
  void finish() { progress_.SetPos(static_cast<double>(steps_)); }

 private:
  const RunIndicators& indicators_;
  std::int64_t steps_;
  AProgress progress_;
  std::thread::id caller_ = std::this_thread::get_id();
  std::atomic<std::int64_t> begun_{0};
  std::atomic<bool> stopped_{false};
};

GridTransform::GridTransform(const TransformSettings& settings, ThreadTeam& team)
    : settings_(settings), team_(team) {}

GridTransform::~GridTransform() = default;

void GridTransform::plan(std::uint32_t rows, std::uint32_t columns) {
  if (plans_ != nullptr && rows == rows_ && columns == columns_) return;
  plans_.reset();
  plans_ = std::make_unique<Plans>(rows, std::int64_t{columns} - 1, settings_, team_.size());
  rows_ = rows;
  columns_ = columns;
}

void GridTransform::columnPass(AMatrix<Complex>& grid, Watch& watch) const {
  const std::int64_t rows = grid.rows();
  const std::int64_t columns = grid.columns();
  const BatchPlan& plan = plans_->columns;
  shareOut(team_, static_cast<std::size_t>((columns + kBatch - 1) / kBatch),
           [&](std::size_t n, std::size_t member) {
             const std::int64_t first = static_cast<std::int64_t>(n) * kBatch;
             const std::int64_t count = std::min(kBatch, columns - first);
             if (!watch.step(count)) return;
             // Reading with the halves of the rows exchanged puts v = 0 first. Vectors beyond the last column
             // hold what was there before; nothing reads their transforms.
             for (std::int64_t r = 0; r < rows; ++r) {
               const Complex* const from = grid.data() + exchanged(r, rows / 2) * columns + first;
               for (std::int64_t i = 0; i < count; i += kTogether)
                 copyTogether(from + i, count - i, plan.element(member, i / kTogether, r));
             }
             plan.transform(member);
             for (std::int64_t r = 0; r < rows; ++r) {
               Complex* const to = grid.data() + r * columns + first;
               prefetchBatch(to + kBatch);  // for the next batch of columns, which lie far apart
               for (std::int64_t i = 0; i < count; i += kTogether)
                 copyTogether(plan.element(member, i / kTogether, r), count - i, to + i);
             }
           });
}

void GridTransform::rowPass(AMatrix<Complex>& grid, AMatrix<double>& image, Watch& watch) const {
  const std::int64_t rows = grid.rows();
  const std::int64_t columns = grid.columns();
  const BatchPlan& plan = plans_->row;
  // Where all samples of the image are in a transformed vector they need not go back to the grid first.
  const std::int64_t half = halfLength(image.columns());
  const std::int64_t halfRows = halfLength(image.rows());
  const bool whole = half == columns - 1;
  shareOut(team_, static_cast<std::size_t>((rows + kBatch - 1) / kBatch),
           [&](std::size_t n, std::size_t member) {
             const std::int64_t first = static_cast<std::int64_t>(n) * kBatch;
             const std::int64_t count = std::min(kBatch, rows - first);
             if (!watch.step(count)) return;
             for (std::int64_t i = 0; i < count; ++i) {
               Complex* const row = grid.data() + (first + i) * columns;
               Complex* const transformed = plan.element(member, 0, 0);
               plans_->packer.pack(row, transformed);
               plan.transform(member);
               if (!whole) std::copy_n(transformed, columns - 1, row);
               storeRow(whole ? transformed : row, row, first + i, halfRows, half, image);
             }
           });
}

std::uint64_t GridTransform::bytes(std::uint32_t rows, std::uint32_t columns, int members) {
  const std::uint64_t buffers = static_cast<std::uint64_t>(std::max(members, 1)) *
                                (std::uint64_t{kBatch} * rows + columns - 1) * sizeof(Complex);
  return std::uint64_t{rows} * (2 * std::uint64_t{columns}) * sizeof(double) + buffers;
}

int GridTransform::run(AMatrix<Complex>& grid, AMatrix<double>& image, const RunIndicators& indicators) {
  indicators.setText("Fast Fourier Transform...");
  plan(grid.rows(), grid.columns());
  indicators.resetBar(indicators.readingBar);
  Watch watch(indicators, std::int64_t{grid.columns()} + grid.rows());
  columnPass(grid, watch);
  if (watch.stopped()) return 0;
  // Every element is written below.
  if (image.rows() != grid.rows() || image.columns() != 2 * grid.columns())
    image.resize(grid.rows(), 2 * grid.columns());
  rowPass(grid, image, watch);
  if (watch.stopped()) return 0;
  watch.finish();
  indicators.resetBar(indicators.readingBar);
  grid.clear();
  indicators.setText("");
  return 1;
}

int fourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, const TransformSettings& settings,
                         const RunIndicators& indicators) {
  ThreadTeam alone(1);
  return GridTransform(settings, alone).run(grid, image, indicators);
}

}  // namespace lumo
