// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/PhaseTimer.h"
#include "core/Progress.h"
#include "core/Status.h"
#include "core/ThreadTeam.h"
#include "imaging/AB3DFunc.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/BatchGridder.h"
#include "imaging/GridGeometry.h"
#include "imaging/PointAdder.h"
#include "imaging/PointMaker.h"
#include "imaging/SelectionIndex.h"
#include "imaging/SpectralGridSet.h"
#include "imaging/WorkGrid.h"
#include "io/VisibilityInputs.h"

namespace lumo {

/// What gridding needs besides the parameter block and the files.
struct GriddingSettings {
  std::int32_t order = 1;
  double referenceFrequency = 0;    ///< ν0, Hz
  std::uint64_t workGridBytes = 0;  ///< for the work grids of IFs that are gridded together; one always runs
  int threads = 1;
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
/// The cost of a visibility does not depend on the order. The IFs of a file's selections share a pass over it
/// as far as the work grids' memory allows (BatchGridder): all IFs of some selections, or some IFs of one.
/// Each has a work grid of its own and they are folded in their order, so the sums are those of the
/// one-IF-at-a-time loop to the bit, for any number of threads. A pass starts with as many IFs as the last
/// ones had room for; those that turn out not to fit wait for the next pass.
class Gridder {
 public:
  /// The references must outlive the gridder.
  Gridder(const ABMakeParameters& parameters, const VisibilityInputs& inputs,
          const GriddingSettings& settings, const RunIndicators& indicators);

  /// Sizes, zeroes and fills the set. Returns 1; 0 when cancelled or a file cannot be read: status() says
  /// which.
  int run(SpectralGridSet& grids);
  [[nodiscard]] const Status& status() const { return status_; }
  /// What run() took, in parts: making the grids ready, reading, adding (BatchGridder), folding, uniform
  /// weighting.
  [[nodiscard]] std::vector<PhaseTime> phases() const;

 private:
  [[nodiscard]] Status checkFile(const AUVXFile& file, std::int32_t index) const;
  [[nodiscard]] bool prepare(SpectralGridSet& grids);
  int gridFile(std::int32_t index, SpectralGridSet& grids);
  [[nodiscard]] IfBatch nextBatch(std::int32_t index, const std::vector<int>& rows, std::size_t done) const;
  void prepareWorkGrids(const IfBatch& batch);
  void fold(const IfBatch& batch, std::size_t count, SpectralGridSet& grids);
  int fail(Status status);

  const ABMakeParameters& parameters_;
  const VisibilityInputs& inputs_;
  GriddingSettings settings_;
  const RunIndicators& indicators_;
  GridGeometry geometry_;
  std::unique_ptr<PointAdder> adder_;
  std::unique_ptr<AB3DFunc> taper_;
  std::unique_ptr<PointMaker> maker_;
  std::unique_ptr<ThreadTeam> team_;
  std::unique_ptr<BatchGridder> batches_;
  std::size_t together_ = 0;  ///< IFs that the next pass starts with
  TilePool pool_;
  std::vector<WorkGrid> workGrids_;
  AMatrix<double> cumulative_;  ///< ΣK over all frequencies; only for uniform weighting
  SelectionIndex index_;        ///< of the current file, where its selections need several passes
  double prepareSeconds_ = 0, foldSeconds_ = 0, weightSeconds_ = 0;
  Status status_;
};

/// The taper of a valid parameter block; null for a type outside 1..4.
[[nodiscard]] std::unique_ptr<AB3DFunc> makeTaper(const ABMakeParameters& p);

}  // namespace lumo
