// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "clean/BeamNorm.h"
#include "clean/BeamReach.h"
#include "clean/CleanStepList.h"
#include "clean/CleanTileKernel.h"
#include "clean/PlainCleanEngine.h"
#include "clean/TeamPacer.h"
#include "core/ThreadTeam.h"

namespace lumo {

/// When a TiledCleanEngine rounds the residuals to float.
enum class CleanRounding {
  kEveryProduct,  ///< as ABCleanEngine describes it
  kOnce,          ///< when all steps that a tile lacks are subtracted
};

/// How a TiledCleanEngine divides its work. Nothing but `rounding` changes a bit of the result of
/// kEveryProduct; with kOnce everything but `threads` may change the last bits.
struct CleanTiling {
  CleanRounding rounding = CleanRounding::kEveryProduct;
  int threads = 1;
  bool paced = true;  ///< several threads share the tiles only while that is faster, otherwise always
  /// Pixels of a tile, 0 for those that suit the maps: few rows, so that the beam rows below it stay in the
  /// cache; many columns, because memory is read along rows.
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
};

/// The engine for long runs: the bits of PlainCleanEngine in a fraction of its time, or with
/// CleanRounding::kOnce its results up to rounding in a fraction of that.
///
/// The maps are divided into tiles, and a tile may lag behind: the steps it has not subtracted yet stand in a
/// short list. For every tile the engine knows an upper bound of its best score, which grows with every step
/// by what the step can do there (BeamNorm, BeamReach). A tile is brought up to date only when its bound
/// reaches the best score known. Then all steps it lacks are subtracted in one pass with the residuals in
/// registers, in their order and with each of the roundings, and the pass finds the tile's best pixel as well
/// (updateCleanTile).
///
///     search:    bring up to date the tiles of the largest bounds, four at a time, a few times
///                then all others whose bound reaches the best score so found
///                and when the list is full those that lack its oldest steps
///                choose the best pixel of the tiles just searched, the last in scan order among equals
///     subtract:  raise the bounds of all tiles;  append the step to the list
///
/// Rounding once. A CLEAN comes back to the same pixels again and again. With kOnce the list is longer, the
/// steps that a tile lacks are summed pixel by pixel in single precision before they are subtracted, and a
/// residual is rounded once per pass (subtractMerged). The pass bounds the tile's norms too, and only a tile
/// that may win is searched in double. The peaks are chosen by the same rule from the same bounds, so they
/// are those of the plain engine as long as no two scores are within rounding of each other; after that the
/// order of the steps may differ. Residuals are those of the components up to rounding, in general closer to
/// them than the plain engine's. What is given up: the bits. They do not depend on the number of threads or
/// the instruction set, but on the tiles and on the iterations in which settle() is called.
///
/// Bounds. X bounds the largest norm |r| of a tile; without the constraint E = |r|^2 g h, h = 2 - g. With the
/// non-negativity constraint let z = W^1/2 r, s its component along W^1/2 e_0, w the rest, c = C_0 sqrt(q)
/// and P the projection on the half space s >= -c. Then E = |z|^2 - |P(g z) - z|^2, which is
/// -2 c s - c^2 + g h |w|^2 where t < 0. Where c >= 0, the gradient of sqrt(E) with respect to z is at most
/// L = sqrt(g h) for g <= 1 and L = sqrt(g / h) above, so a second bound Y of sqrt(E) grows by L times what
/// X grows by. Three things are added to Y when it is compared:
/// - a change of the loop gain since the tile was searched changes E by at most |change of g h| X^2 (g <= 1);
/// - rounding leaves components a little below 0. For c < 0, sqrt(E) differs from its value at c = 0 by at
///   most |c| sqrt(h / g) one way and sqrt(2 |c| X + c^2 (1 + h / g)) the other;
/// - E is formed in double from terms of the size of (4 X + |c|)^2 that may cancel.
/// C_0 itself enters E only at its own pixel: the tile of the last peak is always brought up to date.
///
/// Threads share the rows of each tile that is brought up to date, a thread always the same ones. They do so
/// only while that is faster (TeamPacer): asking for as many as there are cores costs nothing on a busy
/// machine.
///
/// Where the bounds do not hold the engine goes on as the plain one, from the iteration where it notices:
/// more than kMaxTileTerms terms, values in maps or beams that are not finite, a beam matrix that is not
/// positive definite or nearly singular, a loop gain outside 0 .. 2 or next to these, residuals growing out
/// of the range of a float.
///
/// Memory beyond maps and beams: workingBytes(), below 2 % of them from 256 x 256 pixels on, and some 80
/// kilobytes of stack per thread. It does not grow with the iterations, nor does their cost.
class TiledCleanEngine final : public PlainCleanEngine {
 public:
  TiledCleanEngine(APtrArray<AMatrix<float>*>& residuals, const APtrArray<AMatrix<float>*>& beams,
                   const CleanParameters& parameters, const CleanTiling& tiling = {});
  ~TiledCleanEngine() override;

  void settle() override;

  [[nodiscard]] CleanRounding rounding() const { return tiling_.rounding; }
  /// True while the tiles are in use, false where the engine works as the plain one.
  [[nodiscard]] bool tiled() const { return tiled_; }
  /// Pixels searched so far, by tiles: what the bounds spare shows against iterations times pixels.
  [[nodiscard]] std::int64_t pixelsSearched() const { return pixelsSearched_; }
  /// Memory held beyond maps and beams, in bytes; constant from the first iteration on.
  [[nodiscard]] std::size_t workingBytes() const;

 protected:
  void prepare() override;
  bool search(double gainValue, CleanStep& step) override;
  void subtract(const CleanStep& step) override;

 private:
  struct Tile {
    CleanTileArea area;
    CleanTileBest best;       ///< when last brought up to date
    std::size_t applied = 0;  ///< steps of the list that it has subtracted
    double gain = 0.0;        ///< of the search that `best` is from
    double slope = 0.0;       ///< L of that gain
  };
  struct Gain;

  [[nodiscard]] bool boundsHold();
  void chooseShape();
  void makeTiles();
  void pointAtMaps();
  void givePlainWay();
  [[nodiscard]] bool constrained() const { return maps_.nonNegative; }
  [[nodiscard]] double constrainedBound(std::size_t i, const Gain& gain) const;
  void formBounds(const Gain& gain);
  [[nodiscard]] bool raiseBounds(const CleanStep& step);
  [[nodiscard]] double bestScore() const { return best_ != nullptr ? best_->score : 0.0; }
  void chooseLeaders();
  void chooseRivals();
  void chooseOverdue();
  template <typename Condition>
  void chooseWhere(const Condition& condition);
  void bringUpToDate(double gain);
  void updatePieces(double gain);
  [[nodiscard]] CleanTileBest updatePiece(std::uint32_t index, std::size_t part, double gain) const;
  [[nodiscard]] double subtractLacking(const CleanTileArea& area, std::size_t applied) const;
  [[nodiscard]] CleanTileBest updateMerged(const CleanTileArea& area, std::size_t applied,
                                           const CleanContest& contest) const;
  void dropSubtracted();
  [[nodiscard]] std::size_t peakOf(const CleanTileBest& best, double gain) const;
  void fillStep(const CleanTileBest& best, double gain, CleanStep& step) const;

  CleanTiling tiling_;
  std::unique_ptr<ThreadTeam> team_;
  TeamPacer pacer_;
  BeamNorm norm_;
  BeamReach reach_;
  CleanTileMaps maps_;
  std::size_t tileRows_ = 0;  ///< of tiles, not of pixels
  std::size_t tileColumns_ = 0;
  std::vector<Tile> tiles_;
  // By tile: X and Y, infinite before its first search and where `best` says nothing because C_0 changed; the
  // bound of the score in this iteration.
  std::vector<double> normBound_;
  std::vector<double> scoreBound_;
  std::vector<double> bound_;
  CleanStepList list_;
  std::vector<std::uint32_t> chosen_;  ///< tiles to bring up to date
  std::vector<CleanTileBest> pieces_;  ///< what each part of these holds, tile by tile
  std::size_t piecesPerTile_ = 1;
  const CleanTileBest* best_ = nullptr;  ///< of the tiles searched in this iteration
  double mostNegative_ = 0.0;            ///< |c| of the most negative component of term 0 so far
  double partialSums_ = 1.0;             ///< roundings that a step can see in a sum of steps
  bool tiled_ = false;
  std::int64_t pixelsSearched_ = 0;
};

}  // namespace lumo
