// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/AB3DFunc.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/GridGeometry.h"
#include "imaging/SpectralGridSet.h"
#include "imaging/WorkGrid.h"
#include "io/VisibilityInputs.h"

namespace lumo {

/// What gridding needs besides the parameter block and the files.
struct GriddingSettings {
  std::int32_t order = 1;
  double referenceFrequency = 0;    ///< ν0, Hz
  std::uint64_t workGridBytes = 0;  ///< for the work grids of IFs that are gridded together; one always runs
};

/// Grids every selected visibility of every file onto one half-plane uv grid per spectral term.
///
///     for each file, selected frequency selection, IF (frequency ν of its first channel, f = ν/ν0 − 1):
///       for each usable record: average the IF's channels; u, v in wavelengths; weight = taper (· mean
///       weight);
///         turn the phase by the shift; add kernel · weight · V at (u, v) and conj V at (−u, −v) to the work
///         grid
///       add f^k times the work grid to spectral grid k
///     uniform weighting: flatten blocks
///
/// The cost of a visibility does not depend on the order. IFs of one selection share a pass over the file as
/// far as the work grids' memory allows; each has a work grid of its own and they are folded in their order,
/// so the sums are those of the one-IF-at-a-time loop to the bit.
class Gridder {
 public:
  /// The references must outlive the gridder.
  Gridder(const ABMakeParameters& parameters, const VisibilityInputs& inputs,
          const GriddingSettings& settings, const RunIndicators& indicators);

  /// Sizes, zeroes and fills the set. Returns 1; 0 when cancelled or a file cannot be read: status() says
  /// which.
  int run(SpectralGridSet& grids);
  [[nodiscard]] const Status& status() const { return status_; }

 private:
  struct IfBatch;

  [[nodiscard]] Status checkFile(const AUVXFile& file, std::int32_t index) const;
  int gridFile(std::int32_t index, SpectralGridSet& grids);
  int gridBatch(AUVXFile& file, std::int32_t index, const IfBatch& batch);
  void addVisibility(WorkGrid& grid, double u, double v, double weight, double re, double im) const;
  void addPoint(WorkGrid& grid, double u, double v, double weight, double re, double im) const;
  int fail(Status status);

  const ABMakeParameters& parameters_;
  const VisibilityInputs& inputs_;
  GriddingSettings settings_;
  const RunIndicators& indicators_;
  GridGeometry geometry_;
  std::unique_ptr<AB3DFunc> kernel_;
  std::unique_ptr<AB3DFunc> taper_;
  double supportU_ = 0, supportV_ = 0;  ///< half-width of the kernel, whole cells
  double phaseX_ = 0, phaseY_ = 0;      ///< radians per wavelength
  std::vector<WorkGrid> workGrids_;
  AMatrix<double> cumulative_;  ///< ΣK over all frequencies; only for uniform weighting
  Status status_;
};

/// The kernel (widths in cells times the cell size) and the taper of a valid parameter block; null for a type
/// outside 1..4.
[[nodiscard]] std::unique_ptr<AB3DFunc> makeKernel(const ABMakeParameters& parameters,
                                                   const GridGeometry& geometry);
[[nodiscard]] std::unique_ptr<AB3DFunc> makeTaper(const ABMakeParameters& parameters);

}  // namespace lumo
