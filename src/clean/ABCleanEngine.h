// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "clean/BeamMatrix.h"
#include "clean/CleanObserver.h"
#include "clean/CleanParameters.h"
#include "core/AMatrix.h"
#include "core/AObjArray.h"
#include "core/APtrArray.h"

namespace lumo {

/// The pixel that an iteration chose and what it adds to each term there.
struct CleanStep {
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  double score = 0.0;
  std::vector<double> increments;  ///< D_0 .. D_{N-1}, map units
  double residual = 0.0;           ///< R_0 there before the step, map units
};

/// Joint CLEAN of the N dirty maps of a multi-frequency run. Engines differ in speed only: they give the same
/// bits, because the loop below is shared and search() and subtract() are fixed to the order of every
/// floating-point operation on a pixel; the one exception says so itself (CleanRounding::kOnce). Maps and
/// beams are single precision, all arithmetic is double.
///
///     W, v, q := BeamMatrix;  C_j := 0;  F := 0
///     for n = 1 .. iterations
///       if stop is set: return 0
///       g := loopGain(n);  h := 2 - g;  best := 0
///       for every pixel, row by row, r_k being the value of R_k there                     -- search()
///         S := 0;  for j = N-1 .. 0:  a_j := 0;  for k = 0 .. N-1: a_j += r_k W[j][k];  S += r_j a_j
///         E := S (h g);  t := a_0 g + C_0;  f := 0
///         if nonNegative and t < 0:  E -= (h a_0 + C_0) (t q);  f := t
///         if not (best > E):  best := E;  peak := pixel;  D_j := g a_j - f v_j
///       C_j(peak) += D_j;  F += D_0
///       for every pixel (row, column), k = 0 .. N-1, in it j = 0 .. N-1                   -- subtract()
///         R_k := float(R_k - B_{k+j}(centre - peak + pixel, wrapped once) D_j)
///       tell the observer
///     return 1
///
/// E is the drop 2 D'r - D'M D of the beam-weighted quadratic form of the residuals, so the best pixel is the
/// one whose step explains most. Ties go to the later pixel. A score that is not a number is chosen and is
/// then beaten by any pixel after it, so the pixels before it are forgotten. When no pixel reaches a score of
/// 0 the step before is applied again; nothing is applied while there is none yet.
///
/// An engine may put the subtraction off; settle() makes up for it. The residual maps are those of the
/// description when Run() has returned and after settle(), and must not be looked at otherwise.
///
/// Not copied. Run() is called once. While it runs, components, residuals and the figures below belong to its
/// thread; another thread may touch them only where CleanWorker says so.
class ABCleanEngine {
 public:
  /// @param residuals the N >= 1 dirty maps, all of one size; Run() turns them into the residual maps.
  /// @param beams 2 N - 1 beams of one size, at least that of the maps in both directions. Beam m is the
  ///   response of map k to a unit of term j for every k + j = m; it is taken as periodic with its own size.
  /// Both arrays must outlive the engine and keep their storage. Counts and sizes are preconditions, not
  /// checked here.
  ABCleanEngine(APtrArray<AMatrix<float>*>& residuals, const APtrArray<AMatrix<float>*>& beams,
                const CleanParameters& parameters);
  ABCleanEngine(const ABCleanEngine&) = delete;
  ABCleanEngine& operator=(const ABCleanEngine&) = delete;
  virtual ~ABCleanEngine() = default;

  /// The loop above. Reads `stop` at the start of every iteration and nowhere else. `observer` may be null.
  /// Returns 1 when all iterations were done, 0 when it was stopped. Throws std::bad_alloc, before the first
  /// iteration only, when memory is short.
  int Run(const std::atomic<int>& stop, CleanObserver* observer);

  /// Completes every subtraction that was put off. For the thread of Run(), between two iterations, which is
  /// where the observer is called; costs up to some tens of plain iterations, with CleanRounding::kOnce some
  /// hundreds. Changes no result but, with that, its last bits.
  virtual void settle() {}

  [[nodiscard]] const CleanParameters& parameters() const { return parameters_; }
  /// N, the number of spectral terms.
  [[nodiscard]] std::int32_t terms() const { return residuals_.count(); }
  [[nodiscard]] const APtrArray<AMatrix<float>*>& residuals() const { return residuals_; }
  /// C_0 .. C_{N-1}, of the size of the maps; empty until Run() is called.
  [[nodiscard]] const AObjArray<AMatrix<float>>& components() const { return components_; }
  [[nodiscard]] double totalFlux() const { return totalFlux_; }
  [[nodiscard]] std::int32_t iterationsDone() const { return iterationsDone_; }
  /// max |W M - I| of the preparation.
  [[nodiscard]] double inversionError() const { return inversionError_; }

 protected:
  /// Called once, after the beam matrix and the component maps are ready: the place to allocate.
  virtual void prepare() {}
  /// The search of one iteration. Returns whether any pixel was chosen; `step` is left alone if none was.
  virtual bool search(double gain, CleanStep& step) = 0;
  /// The subtraction of one step from every residual map, C_j being up to date. May be put off until
  /// settle().
  virtual void subtract(const CleanStep& step) = 0;

  [[nodiscard]] const APtrArray<AMatrix<float>*>& beams() const { return beams_; }
  [[nodiscard]] const BeamMatrix& beamMatrix() const { return beamMatrix_; }

 private:
  void prepareRun();
  void apply(const CleanStep& step);

  APtrArray<AMatrix<float>*>& residuals_;
  const APtrArray<AMatrix<float>*>& beams_;
  CleanParameters parameters_;
  BeamMatrix beamMatrix_;
  AObjArray<AMatrix<float>> components_;
  double totalFlux_ = 0.0;
  std::int32_t iterationsDone_ = 0;
  double inversionError_ = 0.0;
};

}  // namespace lumo
