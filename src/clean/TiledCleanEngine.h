// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "clean/BeamNorm.h"
#include "clean/BeamReach.h"
#include "clean/CleanTileKernel.h"
#include "clean/PlainCleanEngine.h"
#include "core/ThreadTeam.h"

namespace lumo {

/// How a TiledCleanEngine divides its work. None of it changes a bit of the result.
struct CleanTiling {
  int threads = 1;
  /// Pixels of a tile: few rows, so that the beam rows below it stay in the cache; many columns, because
  /// memory is read along rows.
  std::uint32_t rows = 8;
  std::uint32_t columns = 256;
};

/// The engine for long runs: the bits of PlainCleanEngine in a fraction of its time.
///
/// The maps are divided into tiles, and a tile may lag behind: the steps it has not subtracted yet stand in a
/// short list. For every tile the engine knows an upper bound of its best score, which grows with every step
/// by what the step can do there (BeamNorm, BeamReach). A tile is brought up to date only when its bound
/// reaches the best score known. Then all steps it lacks are subtracted in one pass with the residuals in
/// registers, in their order and with each of the roundings, and the pass finds the tile's best pixel as well
/// (updateCleanTile).
///
///     search:    a few times: bring up to date the tiles of the largest bounds that reach the best score
///                bring every other tile up to date whose bound reaches it, or that lacks the oldest steps
///                choose the best pixel of the tiles that are up to date, the last in scan order among equals
///     subtract:  raise the bounds of all tiles;  append the step to the list
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
/// Where the bounds do not hold the engine goes on as the plain one, from the iteration where it notices:
/// more than kMaxTileTerms terms, values in maps or beams that are not finite, a beam matrix that is not
/// positive definite or nearly singular, a loop gain outside 0 .. 2 or next to these, residuals growing out
/// of the range of a float.
///
/// Memory beyond maps and beams: below 2 % of them from 128 x 128 pixels on.
class TiledCleanEngine final : public PlainCleanEngine {
 public:
  TiledCleanEngine(APtrArray<AMatrix<float>*>& residuals, const APtrArray<AMatrix<float>*>& beams,
                   const CleanParameters& parameters, const CleanTiling& tiling = {});
  ~TiledCleanEngine() override;

  void settle() override;

  /// True while the tiles are in use, false where the engine works as the plain one.
  [[nodiscard]] bool tiled() const { return tiled_; }
  /// Pixels searched so far, by tiles: what the bounds spare shows against iterations times pixels.
  [[nodiscard]] std::int64_t pixelsSearched() const { return pixelsSearched_; }

 protected:
  void prepare() override;
  bool search(double gain, CleanStep& step) override;
  void subtract(const CleanStep& step) override;

 private:
  struct Tile {
    CleanTileArea area;
    CleanTileBest best;       ///< when last brought up to date
    std::size_t applied = 0;  ///< steps of the list that it has subtracted
    double gain = 0.0;        ///< of the search that `best` is from
    double slope = 0.0;       ///< L of that gain
    double normBound = 0.0;   ///< X
    double scoreBound = 0.0;  ///< Y, kept with the constraint only
    bool unknown = true;      ///< `best` says nothing: not searched yet, or C_0 changed in it
  };
  struct Gain;

  [[nodiscard]] bool boundsHold();
  void makeTiles();
  void givePlainWay();
  [[nodiscard]] double bound(const Tile& tile, const Gain& gain) const;
  [[nodiscard]] bool upToDate(const Tile& tile, const Gain& gain) const;
  [[nodiscard]] bool raiseBounds(const CleanStep& step);
  void bringUpToDate(double gain);
  void updateTile(Tile& tile, double gain);
  [[nodiscard]] bool chooseLeaders(const Gain& gain);
  void chooseRest(const Gain& gain);
  [[nodiscard]] const Tile* winner(const Gain& gain) const;
  void dropSubtracted();
  void fillStep(const CleanTileBest& best, double gain, CleanStep& step) const;

  CleanTiling tiling_;
  std::unique_ptr<ThreadTeam> team_;
  BeamNorm norm_;
  BeamReach reach_;
  CleanTileMaps maps_;
  std::vector<Tile> tiles_;
  std::size_t tilesPerRow_ = 0;
  std::vector<CleanUpdate> list_;    ///< steps that some tile lacks, at most kMaxTileUpdates
  std::vector<std::size_t> chosen_;  ///< tiles to bring up to date
  double mostNegative_ = 0.0;        ///< |c| of the most negative component of term 0 so far
  bool tiled_ = false;
  std::int64_t pixelsSearched_ = 0;
};

}  // namespace lumo
