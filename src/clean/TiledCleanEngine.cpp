// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TiledCleanEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>

#include "clean/MergedTileKernel.h"

namespace lumo {

namespace {

/// Loop gains this near to 0 or 2 make scores of rounding errors.
constexpr double kGainMargin = 1e-6;
/// Steps that the list holds for the exact engine. More of them make no difference that can be measured.
constexpr std::size_t kExactSteps = 128;
/// A full list has this part of it, the oldest, subtracted everywhere.
constexpr std::size_t kOldestPart = 4;
/// A list that merges takes this part of the memory of maps and beams.
constexpr std::size_t kListPart = 150;
/// Pixels of the maps to one candidate, as long as they are no more and no fewer than that: following them
/// takes a few per cent of the time.
constexpr std::size_t kPixelsPerCandidate = 512;
constexpr std::size_t kFewestCandidates = 64;
constexpr std::size_t kMostCandidates = 512;
/// Part of the best score from which on pixels are candidates: never less, nor so much that rounding once
/// could leave out the best, and how fast it falls.
constexpr double kLeastPart = 0.3;
constexpr double kMostPart = 0.999;
constexpr double kFall = 0.97;
/// Tiles that are brought up to date before their candidates are taken over, and the part of the memory of
/// maps and beams that these take.
constexpr std::size_t kMostTilesAtOnce = 16;
constexpr std::size_t kOffsetsPart = 400;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool usable(double gain) {
  return gain >= kGainMargin && gain <= 2.0 - kGainMargin;
}

bool allFinite(const AMatrix<float>& map) {
  bool finite = true;
  for (std::size_t i = 0; i < map.size(); ++i) finite = finite && std::isfinite(map.data()[i]);
  return finite;
}

double secondsNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

TiledCleanEngine::TiledCleanEngine(APtrArray<AMatrix<float>*>& residuals,
                                   const APtrArray<AMatrix<float>*>& beams, const CleanParameters& parameters,
                                   const CleanTiling& tiling)
    : PlainCleanEngine(residuals, beams, parameters), tiling_(tiling) {}

TiledCleanEngine::~TiledCleanEngine() = default;

void TiledCleanEngine::prepare() {
  PlainCleanEngine::prepare();
  team_ = std::make_unique<ThreadTeam>(tiling_.threads);
  pixelsSearched_ = 0;
  tiles_.clear();
  tiled_ = parameters().iterations > 0 && boundsHold();
  if (!tiled_) return;
  chooseShape();
  makeTiles();
  pointAtMaps();
  candidates_.prepare(
      maps_, std::clamp(residuals()[0]->size() / kPixelsPerCandidate, kFewestCandidates, kMostCandidates));
  gain_ = parameters().gain;
  best_ = {};
  leastPart_ = kLeastPart;
  bounds_.prepare(grid_, maps_, beams(),
                  tiling_.rounding == CleanRounding::kOnce ? double{kMaxTileUpdates} : 1.0, *team_);
}

bool TiledCleanEngine::boundsHold() {
  // With the variable gain all gains lie between the one given and 1.
  if (terms() > kMaxTileTerms || residuals()[0]->size() == 0 || !usable(parameters().gain)) return false;
  for (const AMatrix<float>* map : residuals())
    if (!allFinite(*map)) return false;
  return bounds_.measure(beams(), beamMatrix(), terms());
}

void TiledCleanEngine::chooseShape() {
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const bool once = tiling_.rounding == CleanRounding::kOnce;
  // Measured. Merging, more is left to merge where tiles have few columns.
  if (tiling_.rows == 0) tiling_.rows = once ? 16 : 8;
  if (tiling_.columns == 0) tiling_.columns = !once ? 1024 : terms() > 1 ? 64 : 128;
  tiling_.rows = std::min(tiling_.rows, rows);
  tiling_.columns = std::min(tiling_.columns, columns);
  // The more steps are merged the fewer are left, but the list must stay small beside maps and beams.
  const std::size_t held = sizeof(float) * (2 * residuals()[0]->size() * static_cast<std::size_t>(terms()) +
                                            beams()[0]->size() * static_cast<std::size_t>(beams().count()));
  const std::size_t most = held / kListPart / CleanStepList::kBytesPerStep;
  list_.prepare(once ? std::clamp(most, kExactSteps, CleanStepList::kMostSteps) : kExactSteps, once);
  const std::size_t offsets = tiling_.rows * kCandidatesPerRow;
  tilesAtOnce_ =
      std::clamp<std::size_t>(held / kOffsetsPart / (offsets * sizeof(std::uint32_t)), 1, kMostTilesAtOnce);
  offsets_.resize(tilesAtOnce_ * offsets);
  pieces_.reserve(tilesAtOnce_ * static_cast<std::size_t>(team_->size()));
}

void TiledCleanEngine::makeTiles() {
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const std::uint32_t height = tiling_.rows;
  const std::uint32_t width = tiling_.columns;
  grid_ = {height, width, rows / height + (rows % height != 0 ? 1 : 0),
           columns / width + (columns % width != 0 ? 1 : 0)};
  tiles_.reserve(grid_.tiles());
  for (std::uint32_t row = 0; row < rows; row += std::min(height, rows - row)) {
    for (std::uint32_t column = 0; column < columns; column += std::min(width, columns - column))
      tiles_.emplace_back().area = {row, row + std::min(height, rows - row), column,
                                    column + std::min(width, columns - column)};
  }
  chosen_.reserve(tiles_.size());
}

void TiledCleanEngine::pointAtMaps() {
  maps_ = {};
  maps_.terms = terms();
  for (std::int32_t k = 0; k < terms(); ++k) maps_.maps[k] = residuals()[k]->data();
  for (std::int32_t m = 0; m < beams().count(); ++m) maps_.beams[m] = beams()[m]->data();
  maps_.smallestBeam = bounds_.smallestBeam();
  maps_.intensity = components()[0].data();
  maps_.mapColumns = residuals()[0]->columns();
  maps_.beamRows = beams()[0]->rows();
  maps_.beamColumns = beams()[0]->columns();
  maps_.inverse = beamMatrix().inverse().data();
  maps_.q = beamMatrix().q();
  maps_.nonNegative = parameters().nonNegative;
}

std::size_t TiledCleanEngine::workingBytes() const {
  return list_.bytes() + bounds_.bytes() + candidates_.bytes() + tiles_.capacity() * sizeof(Tile) +
         (chosen_.capacity() + offsets_.capacity()) * sizeof(std::uint32_t) +
         pieces_.capacity() * sizeof(AreaRest);
}

void TiledCleanEngine::settle() {
  if (!tiled_ || list_.size() == 0) return;
  chooseWhere([this](std::size_t i) { return tiles_[i].applied < list_.size(); });
  bringUpToDate();
  dropSubtracted();
}

void TiledCleanEngine::givePlainWay() {
  settle();
  tiled_ = false;
}

bool TiledCleanEngine::search(double gainValue, CleanStep& step) {
  if (tiled_ && !usable(gainValue)) givePlainWay();
  if (!tiled_) return PlainCleanEngine::search(gainValue, step);
  gain_ = gainValue;
  best_ = candidates_.best(gain_);
  bounds_.form(gain_);
  for (chooseRivals(); !chosen_.empty(); chooseRivals()) bringUpToDate();
  if (list_.size() == list_.capacity()) {
    chooseOverdue();
    bringUpToDate();
    dropSubtracted();
  }
  if (!best_.found) return false;
  fillStep(step);
  return true;
}

/// No more than fit at once, those of the largest bounds: what is found in them may spare the others.
void TiledCleanEngine::chooseRivals() {
  // Written so that a bound that is not a number is reached.
  chooseWhere([this](std::size_t i) { return !(bounds_.score(i) < best_.score); });
  if (chosen_.size() <= tilesAtOnce_) return;
  const auto end = chosen_.begin() + static_cast<std::ptrdiff_t>(tilesAtOnce_);
  std::nth_element(chosen_.begin(), end, chosen_.end(),
                   [this](std::uint32_t a, std::uint32_t b) { return bounds_.score(a) > bounds_.score(b); });
  chosen_.erase(end, chosen_.end());
}

void TiledCleanEngine::chooseOverdue() {
  chooseWhere([&](std::size_t i) { return tiles_[i].applied < list_.capacity() / kOldestPart; });
}

/// Column by column, as they are brought up to date unless there are too many rivals: tiles above each other
/// lie on nearly the same beam rows, which stay in the cache.
template <typename Condition>
void TiledCleanEngine::chooseWhere(const Condition& condition) {
  chosen_.clear();
  for (std::size_t column = 0; column < grid_.tileColumns; ++column)
    for (std::size_t i = column; i < tiles_.size(); i += grid_.tileColumns)
      if (condition(i)) chosen_.push_back(static_cast<std::uint32_t>(i));
}

/// Subtracts what they lack from the chosen tiles and searches them for candidates.
void TiledCleanEngine::bringUpToDate() {
  for (std::size_t first = 0; first < chosen_.size(); first += tilesAtOnce_) {
    const std::uint32_t* const tiles = chosen_.data() + first;
    const std::size_t count = std::min(tilesAtOnce_, chosen_.size() - first);
    updatePieces(tiles, count);
    takePieces(tiles, count);
    best_ = candidates_.best(gain_);
  }
}

/// All parts of `count` tiles.
void TiledCleanEngine::updatePieces(const std::uint32_t* tiles, std::size_t count) {
  for (std::size_t c = 0; c < count; ++c)
    pixelsSearched_ +=
        static_cast<std::int64_t>(tiles_[tiles[c]].area.rows() * tiles_[tiles[c]].area.columns());
  const bool shared = team_->size() > 1 && (!tiling_.paced || pacer_.together());
  piecesPerTile_ = shared ? static_cast<std::size_t>(team_->size()) : 1;
  pieces_.assign(count * piecesPerTile_, AreaRest());
  if (team_->size() == 1) return updateParts(tiles, count, 0);
  const double start = secondsNow();
  if (!shared) {
    updateParts(tiles, count, 0);
    return pacer_.alone(secondsNow() - start);
  }
  // What this thread did itself.
  double from = start;
  double to = start;
  std::size_t parts = 0;
  const auto share = [&](std::size_t part, std::size_t member) {
    if (member == 0 && parts == 0) from = secondsNow();
    updateParts(tiles, count, part);
    if (member != 0) return;
    to = secondsNow();
    ++parts;
  };
  team_->run(piecesPerTile_, std::ref(share));
  pacer_.shared(secondsNow() - start, to - from, parts, piecesPerTile_);
}

/// One part of each of the tiles.
void TiledCleanEngine::updateParts(const std::uint32_t* tiles, std::size_t count, std::size_t part) {
  for (std::size_t c = 0; c < count; ++c) {
    const CleanTileArea area = partOf(tiles[c], part);
    if (area.firstRow != area.lastRow)
      pieces_[c * piecesPerTile_ + part] = updatePiece(tiles[c], area, offsetsOf(c, area));
  }
}

/// A part of a tile.
AreaRest TiledCleanEngine::updatePiece(std::uint32_t index, const CleanTileArea& area,
                                       std::uint32_t* offsets) const {
  const std::size_t applied = tiles_[index].applied;
  if (tiling_.rounding == CleanRounding::kOnce)
    subtractLacking(area, applied);
  else
    subtractExactly(maps_, area, list_.data() + applied, list_.size() - applied);
  const CandidateContest contest{gain_, leastPart_ * best_.score, bounds_.singleError(index, gain_)};
  return findCandidates(maps_, area, contest, offsets);
}

/// One part of a tile's rows: always the same ones, so that they stay in the cache of a member's processor.
/// The longer parts of tiles whose rows do not divide evenly fall to the members in turn.
CleanTileArea TiledCleanEngine::partOf(std::uint32_t index, std::size_t part) const {
  CleanTileArea area = tiles_[index].area;
  const std::size_t rows = area.rows();
  const auto rowOf = [&](std::size_t n) {
    return static_cast<std::uint32_t>((rows * n + index % piecesPerTile_) / piecesPerTile_);
  };
  area.lastRow = area.firstRow + rowOf(part + 1);
  area.firstRow += rowOf(part);
  return area;
}

/// Where the candidates of a part stand, of the tile that is brought up to date as number `place`.
std::uint32_t* TiledCleanEngine::offsetsOf(std::size_t place, const CleanTileArea& part) {
  return offsets_.data() + (place * grid_.rows + part.firstRow % grid_.rows) * kCandidatesPerRow;
}

/// Subtracts the steps from `applied` on, merged.
void TiledCleanEngine::subtractLacking(const CleanTileArea& area, std::size_t applied) const {
  CleanUpdate merged[kMaxTileUpdates];
  for (std::size_t next = applied; next < list_.size();) {
    std::size_t count = 0;
    next = list_.merge(next, merged, count);
    subtractMerged(maps_, area, merged, count);
  }
}

/// Takes over the bounds and candidates of the tiles just searched.
void TiledCleanEngine::takePieces(const std::uint32_t* tiles, std::size_t count) {
  for (std::size_t c = 0; c < count; ++c) {
    AreaRest rest;
    for (std::size_t p = c * piecesPerTile_; p < (c + 1) * piecesPerTile_; ++p) {
      rest.score = std::max(rest.score, pieces_[p].score);
      rest.norm = std::max(rest.norm, pieces_[p].norm);
    }
    bounds_.setSearched(tiles[c], rest, gain_);
    tiles_[tiles[c]].applied = list_.size();
    tiles_[tiles[c]].searched = true;
  }
  candidates_.removeWhere([this](std::uint32_t tile) { return tiles_[tile].searched; });
  for (std::size_t c = 0; c < count; ++c) {
    tiles_[tiles[c]].searched = false;
    for (std::size_t part = 0; part < piecesPerTile_; ++part) {
      const std::uint32_t* const offsets = offsetsOf(c, partOf(tiles[c], part));
      for (std::size_t n = 0; n < pieces_[c * piecesPerTile_ + part].candidates; ++n) {
        if (candidates_.size() == candidates_.capacity()) thinCandidates();
        candidates_.add(tiles[c], offsets[n]);
      }
    }
  }
  if (candidates_.size() < candidates_.capacity() / 2) leastPart_ = std::max(kLeastPart, kFall * leastPart_);
}

/// Makes room for a quarter: what was a candidate is bounded as the rest of its tile from now on.
void TiledCleanEngine::thinCandidates() {
  double largest = 0.0;
  candidates_.keepBest(candidates_.capacity() * 3 / 4, gain_, [&](std::uint32_t tile, double score) {
    bounds_.include(tile, score, gain_);
    largest = std::max(largest, score);
  });
  best_ = candidates_.best(gain_);
  if (best_.found) leastPart_ = std::min(kMostPart, std::max(leastPart_, largest / best_.score));
}

void TiledCleanEngine::dropSubtracted() {
  std::size_t everywhere = list_.size();
  for (const Tile& tile : tiles_) everywhere = std::min(everywhere, tile.applied);
  list_.drop(everywhere);
  for (Tile& tile : tiles_) tile.applied -= everywhere;
}

void TiledCleanEngine::fillStep(CleanStep& step) const {
  const std::size_t offset = best_.offset;
  const std::int32_t count = terms();
  double r[kMaxTileTerms];
  candidates_.residuals(best_.index, r);
  double a[kMaxTileTerms];
  for (std::int32_t j = 0; j < count; ++j) {
    a[j] = 0.0;
    for (std::int32_t k = 0; k < count; ++k) a[j] += r[k] * maps_.inverse[j * count + k];
  }
  const double tentative = a[0] * gain_ + static_cast<double>(maps_.intensity[offset]);
  const double factor = maps_.nonNegative && tentative < 0.0 ? tentative : 0.0;
  step.row = static_cast<std::uint32_t>(offset / maps_.mapColumns);
  step.column = static_cast<std::uint32_t>(offset % maps_.mapColumns);
  step.score = best_.score;
  step.residual = r[0];
  for (std::int32_t j = 0; j < count; ++j)
    step.increments[static_cast<std::size_t>(j)] = gain_ * a[j] - factor * beamMatrix().constraint()[j];
}

void TiledCleanEngine::subtract(const CleanStep& step) {
  if (!tiled_) return PlainCleanEngine::subtract(step);
  const float component = components()[0](step.row, step.column);
  if (!bounds_.raise(step) || !std::isfinite(component)) {
    givePlainWay();
    return PlainCleanEngine::subtract(step);
  }
  bounds_.noteComponent(static_cast<double>(component));
  // No pixel was chosen, and the one of the step before gets its increments again.
  if (!best_.found)
    bounds_.include(step.row / grid_.rows * grid_.tileColumns + step.column / grid_.columns, kInfinity,
                    gain_);
  list_.append(step);
  candidates_.follow(list_.data()[list_.size() - 1]);
}

}  // namespace lumo
