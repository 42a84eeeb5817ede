// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "core/AMatrix.h"
#include "core/Progress.h"
#include "core/ThreadTeam.h"
#include "imaging/SpectralGridSet.h"

namespace lumo {

/// How a grid is transformed: exponent sign (−1 in all uses) and a factor for each of the two passes.
struct TransformSettings {
  int direction = -1;
  double columnScale = 1.0;
  double rowScale = 1.0;
  bool operator==(const TransformSettings&) const = default;
};

/// Turns half-plane uv grids of one size, one after the other, into images with the phase centre in the
/// middle. The columns and then the rows are shared by the team; the bits do not depend on its size.
///
/// For each call of run():
///
/// @param grid   rows = 2·Ny by columns = Nx+1, row Ny is v = 0, column 0 is u = 0. Consumed: empty
/// afterwards.
/// @param image  becomes rows × 2·columns doubles; the first 2·Nx columns hold the image, the last two are
/// left
///               over. It is the unnormalised transform with negative exponents of the Hermitian-extended
///               grid; the zero-lag value lies at (R/2, C/2) with R = 2^e(rows), C = 2^e(2·columns), e the
///               exponent rule of Fft.h. A pass whose length that rule refuses leaves its data untransformed.
///               An image that has its size already keeps its memory, and memory beyond grid and image is 8
///               columns and 8 rows for each member of the team.
/// @return 1, or 0 when cancelled (grid and image are then of no use).
///
/// The transforms themselves are FFTW's; each pass agrees with Fft1D and PackHermitianRow to
/// (8 + length) · 2^-52 of the largest value (the plain passes sum up their twiddle angles, which drift by
/// half a unit in the last place a step), and with itself to the bit from run to run on one machine (plans
/// are estimated, never measured).
class GridTransform {
 public:
  /// `team` must outlive the transform.
  GridTransform(const TransformSettings& settings, ThreadTeam& team);
  GridTransform(const GridTransform&) = delete;
  GridTransform& operator=(const GridTransform&) = delete;
  ~GridTransform();

  int run(AMatrix<Complex>& grid, AMatrix<double>& image, const RunIndicators& indicators);
  /// Memory beyond the grid, the image among it, for grids of this size and a team of `members`.
  [[nodiscard]] static std::uint64_t bytes(std::uint32_t rows, std::uint32_t columns, int members);
  [[nodiscard]] const TransformSettings& settings() const { return settings_; }

 private:
  struct Plans;
  class Watch;

  void plan(std::uint32_t rows, std::uint32_t columns);
  void columnPass(AMatrix<Complex>& grid, Watch& watch) const;
  void rowPass(AMatrix<Complex>& grid, AMatrix<double>& image, Watch& watch) const;

  TransformSettings settings_;
  ThreadTeam& team_;
  std::unique_ptr<Plans> plans_;
  std::uint32_t rows_ = 0, columns_ = 0;  ///< that the plans are for
};

/// GridTransform for one grid, on the caller's thread.
int fourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, const TransformSettings& settings,
                         const RunIndicators& indicators);

}  // namespace lumo
