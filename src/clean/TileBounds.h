// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "clean/ABCleanEngine.h"
#include "clean/BeamMatrix.h"
#include "clean/BeamNorm.h"
#include "clean/BeamReach.h"
#include "clean/CandidateKernel.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"
#include "core/ThreadTeam.h"

namespace lumo {

/// Upper bounds of the scores that the pixels of a map's tiles can have, however many steps they lack: of all
/// those pixels of a tile that are no candidates.
///
/// X bounds the largest norm |r| (BeamNorm) of a tile's pixels, Y the largest root of a score of those that
/// are no candidates. Every step raises both by what it can do to a tile of this place (BeamReach).
///
/// Without the constraint E = |r|^2 g h, h = 2 - g, and Y is kept as a bound of |r|, whatever the gain. With
/// the non-negativity constraint let z = W^1/2 r, s its component along W^1/2 e_0, w the rest, c = C_0
/// sqrt(q) and P the projection on the half space s >= -c. Then E = |z|^2 - |P(g z) - z|^2, which is -2 c s -
/// c^2 + g h |w|^2 where t < 0. Where c >= 0, the gradient of sqrt(E) with respect to z is at most L = sqrt(g
/// h) for g <= 1 and L = sqrt(g / h) above, so Y, a bound of sqrt(E), grows by L times what X grows by. Three
/// things are added to Y when it is compared:
/// - a change of the loop gain since the tile was searched changes E by at most |change of g h| X^2 (g <= 1);
/// - rounding leaves components a little below 0. For c < 0, sqrt(E) differs from its value at c = 0 by at
///   most |c| sqrt(h / g) one way and sqrt(2 |c| X + c^2 (1 + h / g)) the other;
/// - E is formed in double from terms of the size of (4 X + |c|)^2 that may cancel.
/// C_0 itself enters E only at its own pixel. A pixel that gets a component is a candidate, or its tile must
/// be searched: include() a score of infinity.
class TileBounds {
 public:
  /// Tiles of `rows` x `columns` pixels, those at the lower and right ends of the map perhaps smaller.
  struct Grid {
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
    std::size_t tileRows = 0;
    std::size_t tileColumns = 0;
    [[nodiscard]] std::size_t tiles() const { return tileRows * tileColumns; }
  };

  /// @return false where there are no bounds: see BeamNorm::prepare().
  [[nodiscard]] bool measure(const APtrArray<AMatrix<float>*>& beams, const BeamMatrix& matrix,
                             std::int32_t terms);
  [[nodiscard]] double smallestBeam() const { return norm_.smallestBeam(); }
  /// After measure(). All bounds are infinite.
  /// @param maps must outlive this.
  /// @param partialSums how many roundings a step can see in a sum of steps, 1 where steps are not summed.
  void prepare(const Grid& grid, const CleanTileMaps& maps, const APtrArray<AMatrix<float>*>& beams,
               double partialSums, ThreadTeam& team);

  /// Forms the bounds of the scores in an iteration.
  void form(double gain);
  /// That of a tile; below 0 for one that has been searched since form().
  [[nodiscard]] double score(std::size_t tile) const { return bound_[tile]; }
  /// By how much S of a pixel of the tile, or what stands for it with the constraint, may be larger than what
  /// single precision makes of it.
  [[nodiscard]] double singleError(std::size_t tile, double gain) const;

  /// A tile that lacks no step has been searched.
  void setSearched(std::size_t tile, const AreaRest& rest, double gain);
  /// A pixel of this score is no candidate any more.
  void include(std::size_t tile, double score, double gain);
  /// @return false where residuals may leave the range of a float: the bounds hold no longer.
  [[nodiscard]] bool raise(const CleanStep& step);
  /// C_0 of a pixel has changed to this.
  void noteComponent(double component);

  [[nodiscard]] std::size_t bytes() const;

 private:
  [[nodiscard]] bool constrained() const { return maps_->nonNegative; }
  [[nodiscard]] double rootOf(double score, double gain) const;
  [[nodiscard]] double constrainedBound(std::size_t tile, double gain) const;
  [[nodiscard]] double scoreRounding(double x) const;

  Grid grid_;
  const CleanTileMaps* maps_ = nullptr;
  double partialSums_ = 1.0;
  BeamNorm norm_;
  BeamReach reach_;
  // By tile.
  std::vector<double> normBound_;   ///< X
  std::vector<double> scoreBound_;  ///< Y
  std::vector<double> gain_;        ///< of the search that Y is from
  std::vector<double> slope_;       ///< L of that gain
  std::vector<double> bound_;
  double mostNegative_ = 0.0;  ///< |c| of the most negative component of term 0 so far
};

}  // namespace lumo
