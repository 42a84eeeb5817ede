// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "clean/CleanCandidates.h"
#include "clean/CleanStepList.h"
#include "clean/CleanTileKernel.h"
#include "clean/PlainCleanEngine.h"
#include "clean/TeamPacer.h"
#include "clean/TileBounds.h"
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
/// short list. The pixels of the best scores are candidates (CleanCandidates): every step is subtracted from
/// them at once, so that their scores are known, and of all other pixels of a tile an upper bound of the
/// score, which grows with every step by what the step can do there (TileBounds). A tile is brought up to
/// date only when its bound reaches the best score of the candidates. Then all steps it lacks are subtracted
/// in one pass with the residuals in registers, in their order and with each of the roundings
/// (subtractExactly), and it is searched for new candidates.
///
///     search:    choose the best candidate, the last in scan order among equals
///                while the bounds of tiles reach its score, bring them up to date and choose again
///                when the list is full, bring up to date those that lack its oldest steps
///     subtract:  raise the bounds of all tiles;  subtract the step from the candidates
///                append it to the list
///
/// Pixels are candidates from a part of the best score on. Where there is no room for more, the worst give
/// way and the part rises; where there is room it falls slowly.
///
/// Rounding once. A CLEAN comes back to the same pixels again and again. With kOnce the list is longer, the
/// steps that a tile lacks are summed pixel by pixel in single precision before they are subtracted, and a
/// residual is rounded once per pass (subtractMerged). The peaks are chosen by the same rule from the same
/// bounds, so they are those of the plain engine as long as no two scores are within rounding of each other;
/// after that the order of the steps may differ. Residuals are those of the components up to rounding, in
/// general closer to them than the plain engine's. What is given up: the bits. They do not depend on the
/// number of threads or the instruction set, but on the tiles and on the iterations in which settle() is
/// called.
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
/// kilobytes of stack per thread. It does not grow with the iterations; their cost does only as far as peaks
/// that spread over the maps read more of the beams and spare less of the search.
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
    std::size_t applied = 0;  ///< steps of the list that it has subtracted
    bool searched = false;    ///< its candidates are to be replaced
  };

  [[nodiscard]] bool boundsHold();
  void chooseShape();
  void makeTiles();
  void pointAtMaps();
  void givePlainWay();
  void chooseRivals();
  void chooseOverdue();
  template <typename Condition>
  void chooseWhere(const Condition& condition);
  void bringUpToDate();
  void updatePieces(const std::uint32_t* tiles, std::size_t count);
  void updateParts(const std::uint32_t* tiles, std::size_t count, std::size_t part);
  [[nodiscard]] AreaRest updatePiece(std::uint32_t index, const CleanTileArea& area,
                                     std::uint32_t* offsets) const;
  [[nodiscard]] CleanTileArea partOf(std::uint32_t index, std::size_t part) const;
  [[nodiscard]] std::uint32_t* offsetsOf(std::size_t place, const CleanTileArea& part);
  void subtractLacking(const CleanTileArea& area, std::size_t applied) const;
  void takePieces(const std::uint32_t* tiles, std::size_t count);
  void thinCandidates();
  void dropSubtracted();
  void fillStep(CleanStep& step) const;

  CleanTiling tiling_;
  std::unique_ptr<ThreadTeam> team_;
  TeamPacer pacer_;
  CleanTileMaps maps_;
  TileBounds::Grid grid_;
  std::vector<Tile> tiles_;
  TileBounds bounds_;
  CleanStepList list_;
  CleanCandidates candidates_;
  double gain_ = 0.0;                  ///< of this iteration
  CandidateBest best_;                 ///< of this iteration
  double leastPart_ = 0.0;             ///< of the best score, from which on pixels are candidates
  std::vector<std::uint32_t> chosen_;  ///< tiles to bring up to date
  std::size_t tilesAtOnce_ = 1;
  // Of those that are brought up to date at once: what each part of them holds, and its candidates.
  std::vector<AreaRest> pieces_;
  std::vector<std::uint32_t> offsets_;
  std::size_t piecesPerTile_ = 1;
  bool tiled_ = false;
  std::int64_t pixelsSearched_ = 0;
};

}  // namespace lumo
