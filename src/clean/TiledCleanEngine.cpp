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
/// Covers the rounding of S, which BeamNorm keeps below 1e-8 of it, and those of the bounds.
constexpr double kUp = 1.0 + 1e-6;
/// Steps that the list holds for the exact engine: few tiles ever lack more.
constexpr std::size_t kExactSteps = 128;
/// A full list has this part of it, the oldest, subtracted everywhere.
constexpr std::size_t kOldestPart = 4;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Tiles of the largest bounds that are taken at once, and how often, before all the others that may win are:
/// after that many the best score hardly rises, and several threads meet after every time. Not as many as
/// there are threads: rounding once, the bits depend on which tiles are brought up to date.
constexpr std::size_t kLeaders = 4;
constexpr int kLeaderRounds = 3;
/// A list that merges takes this part of the memory of maps and beams.
constexpr std::size_t kListPart = 100;

bool usable(double gain) {
  return gain >= kGainMargin && gain <= 2.0 - kGainMargin;
}

/// L of the constrained score's bound.
double slopeOf(double gain) {
  return kUp * std::sqrt(gain <= 1.0 ? gain * (2.0 - gain) : gain / (2.0 - gain));
}

bool allFinite(const AMatrix<float>& map) {
  bool finite = true;
  for (std::size_t i = 0; i < map.size(); ++i) finite = finite && std::isfinite(map.data()[i]);
  return finite;
}

double secondsNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::size_t wrapped(std::int64_t index, std::int64_t period) {
  return static_cast<std::size_t>(index < 0 ? index + period : index >= period ? index - period : index);
}

}  // namespace

/// What the bounds need of the loop gain of an iteration.
struct TiledCleanEngine::Gain {
  explicit Gain(double value) : gain(value), scale((2.0 - value) * value) {}
  double gain;
  double scale;
};

TiledCleanEngine::TiledCleanEngine(APtrArray<AMatrix<float>*>& residuals,
                                   const APtrArray<AMatrix<float>*>& beams, const CleanParameters& parameters,
                                   const CleanTiling& tiling)
    : PlainCleanEngine(residuals, beams, parameters), tiling_(tiling) {}

TiledCleanEngine::~TiledCleanEngine() = default;

void TiledCleanEngine::prepare() {
  PlainCleanEngine::prepare();
  team_ = std::make_unique<ThreadTeam>(tiling_.threads);
  pixelsSearched_ = 0;
  mostNegative_ = 0.0;
  tiles_.clear();
  tiled_ = parameters().iterations > 0 && boundsHold();
  if (!tiled_) return;
  chooseShape();
  makeTiles();
  pointAtMaps();
  reach_.prepare(beams(), norm_, tiling_.rows, tiling_.columns, *team_);
}

bool TiledCleanEngine::boundsHold() {
  // With the variable gain all gains lie between the one given and 1.
  if (terms() > kMaxTileTerms || residuals()[0]->size() == 0 || !usable(parameters().gain)) return false;
  for (const AMatrix<float>* map : residuals())
    if (!allFinite(*map)) return false;
  return norm_.prepare(beams(), beamMatrix(), terms());
}

void TiledCleanEngine::chooseShape() {
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const bool once = tiling_.rounding == CleanRounding::kOnce;
  // Measured. Merging, more is left to merge where tiles have few columns.
  if (tiling_.rows == 0) tiling_.rows = once ? 16 : 8;
  if (tiling_.columns == 0) tiling_.columns = !once ? 512 : terms() > 1 ? 64 : 128;
  tiling_.rows = std::min(tiling_.rows, rows);
  tiling_.columns = std::min(tiling_.columns, columns);
  // The more steps are merged the fewer are left, but the list must stay small beside maps and beams.
  const std::size_t held = sizeof(float) * (2 * residuals()[0]->size() * static_cast<std::size_t>(terms()) +
                                            beams()[0]->size() * static_cast<std::size_t>(beams().count()));
  const std::size_t most = held / kListPart / CleanStepList::kBytesPerStep;
  partialSums_ = once ? static_cast<double>(kMaxTileUpdates) : 1.0;
  list_.prepare(once ? std::clamp(most, kExactSteps, CleanStepList::kMostSteps) : kExactSteps, once);
}

void TiledCleanEngine::makeTiles() {
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const std::uint32_t height = tiling_.rows;
  const std::uint32_t width = tiling_.columns;
  tileRows_ = rows / height + (rows % height != 0 ? 1 : 0);
  tileColumns_ = columns / width + (columns % width != 0 ? 1 : 0);
  tiles_.reserve(tileRows_ * tileColumns_);
  for (std::uint32_t row = 0; row < rows; row += std::min(height, rows - row)) {
    for (std::uint32_t column = 0; column < columns; column += std::min(width, columns - column))
      tiles_.emplace_back().area = {row, row + std::min(height, rows - row), column,
                                    column + std::min(width, columns - column)};
  }
  normBound_.assign(tiles_.size(), kInfinity);
  scoreBound_.assign(tiles_.size(), kInfinity);
  bound_.assign(tiles_.size(), kInfinity);
  chosen_.reserve(tiles_.size());
  pieces_.reserve(tiles_.size() * static_cast<std::size_t>(team_->size()));
}

void TiledCleanEngine::pointAtMaps() {
  maps_ = {};
  maps_.terms = terms();
  for (std::int32_t k = 0; k < terms(); ++k) maps_.maps[k] = residuals()[k]->data();
  for (std::int32_t m = 0; m < beams().count(); ++m) maps_.beams[m] = beams()[m]->data();
  maps_.smallestBeam = norm_.smallestBeam();
  maps_.intensity = components()[0].data();
  maps_.mapColumns = residuals()[0]->columns();
  maps_.beamRows = beams()[0]->rows();
  maps_.beamColumns = beams()[0]->columns();
  maps_.inverse = beamMatrix().inverse().data();
  maps_.q = beamMatrix().q();
  maps_.nonNegative = parameters().nonNegative;
}

std::size_t TiledCleanEngine::workingBytes() const {
  return list_.bytes() + reach_.bytes() + tiles_.capacity() * sizeof(Tile) +
         (normBound_.capacity() + scoreBound_.capacity() + bound_.capacity()) * sizeof(double) +
         chosen_.capacity() * sizeof(std::uint32_t) + pieces_.capacity() * sizeof(CleanTileBest);
}

void TiledCleanEngine::settle() {
  if (!tiled_ || list_.size() == 0) return;
  best_ = nullptr;  // of a search before the last step
  chosen_.clear();
  for (std::size_t i = 0; i < tiles_.size(); ++i)
    if (tiles_[i].applied < list_.size()) chosen_.push_back(static_cast<std::uint32_t>(i));
  bringUpToDate(tiles_[0].gain);
  dropSubtracted();
}

void TiledCleanEngine::givePlainWay() {
  settle();
  tiled_ = false;
}

double TiledCleanEngine::constrainedBound(std::size_t i, const Gain& gain) const {
  const Tile& tile = tiles_[i];
  const double x = normBound_[i];
  const double c = mostNegative_;
  double root = scoreBound_[i];
  if (tile.gain != gain.gain)
    root += x * std::sqrt(kUp * std::fabs(gain.scale - Gain(tile.gain).scale) + 1e-15);
  if (c > 0.0) {
    const double least = std::min(gain.gain, tile.gain);
    const double ratio = (2.0 - least) / least;
    root += c * std::sqrt(ratio) + std::sqrt(2.0 * c * x + c * c * (1.0 + ratio));
  }
  // The score is rounded when it is searched and when it is compared.
  root += 2.0 * std::sqrt(64.0 * 0x1p-53 * norm_.condition()) * (4.0 * x + c);
  return kUp * root * root;
}

void TiledCleanEngine::formBounds(const Gain& gain) {
  if (!constrained()) {
    for (std::size_t i = 0; i < tiles_.size(); ++i)
      bound_[i] = kUp * gain.scale * normBound_[i] * normBound_[i];
    return;
  }
  for (std::size_t i = 0; i < tiles_.size(); ++i)
    bound_[i] = scoreBound_[i] < kInfinity ? constrainedBound(i, gain) : kInfinity;
}

bool TiledCleanEngine::search(double gainValue, CleanStep& step) {
  if (tiled_ && !usable(gainValue)) givePlainWay();
  if (!tiled_) return PlainCleanEngine::search(gainValue, step);
  best_ = nullptr;
  formBounds(Gain(gainValue));
  for (int round = 0; round < kLeaderRounds; ++round) {
    chooseLeaders();
    bringUpToDate(gainValue);
  }
  chooseRivals();
  bringUpToDate(gainValue);
  if (list_.size() == list_.capacity()) {
    chooseOverdue();
    bringUpToDate(gainValue);
    dropSubtracted();
  }
  if (best_ == nullptr) return false;
  fillStep(*best_, gainValue, step);
  return true;
}

void TiledCleanEngine::chooseLeaders() {
  const auto larger = [this](std::uint32_t a, std::uint32_t b) { return bound_[a] > bound_[b]; };
  const double best = bestScore();
  chosen_.clear();
  for (std::uint32_t i = 0; i < tiles_.size(); ++i) {
    if (!(bound_[i] >= best)) continue;
    if (chosen_.size() == kLeaders && !(bound_[i] > bound_[chosen_.back()])) continue;
    if (chosen_.size() == kLeaders) chosen_.pop_back();
    chosen_.insert(std::upper_bound(chosen_.begin(), chosen_.end(), i, larger), i);
  }
}

void TiledCleanEngine::chooseRivals() {
  const double best = bestScore();
  // Written so that a bound that is not a number is reached.
  chooseWhere([&](std::size_t i) { return !(bound_[i] < best); });
}

void TiledCleanEngine::chooseOverdue() {
  chooseWhere([&](std::size_t i) { return tiles_[i].applied < list_.capacity() / kOldestPart; });
}

/// Column by column: tiles above each other lie on nearly the same beam rows, which stay in the cache.
template <typename Condition>
void TiledCleanEngine::chooseWhere(const Condition& condition) {
  chosen_.clear();
  for (std::size_t column = 0; column < tileColumns_; ++column)
    for (std::size_t i = column; i < tiles_.size(); i += tileColumns_)
      if (condition(i)) chosen_.push_back(static_cast<std::uint32_t>(i));
}

void TiledCleanEngine::bringUpToDate(double gain) {
  if (chosen_.empty()) return;
  updatePieces(gain);
  for (const std::uint32_t i : chosen_) tiles_[i].best = {};
  for (std::size_t p = 0; p < pieces_.size(); ++p) {
    const CleanTileBest& piece = pieces_[p];
    CleanTileBest& best = tiles_[chosen_[p / piecesPerTile_]].best;
    best.norm = std::max(best.norm, piece.norm);
    if (!piece.found || (best.found && piece.score < best.score)) continue;
    best.found = true;  // the pieces of a tile follow each other in scan order
    best.score = piece.score;
    best.offset = piece.offset;
  }
  for (const std::uint32_t i : chosen_) {
    Tile& tile = tiles_[i];
    tile.applied = list_.size();
    tile.gain = gain;
    tile.slope = slopeOf(gain);
    normBound_[i] = kUp * std::sqrt(tile.best.norm);
    scoreBound_[i] = tile.best.found ? kUp * std::sqrt(std::max(tile.best.score, 0.0)) : 0.0;
    bound_[i] = -1.0;  // no rival any more
    if (!tile.best.found) continue;
    if (best_ == nullptr || tile.best.score > best_->score ||
        (tile.best.score == best_->score && tile.best.offset > best_->offset))
      best_ = &tile.best;
  }
}

/// Subtracts what they lack from the chosen tiles and searches them.
void TiledCleanEngine::updatePieces(double gain) {
  for (const std::uint32_t i : chosen_)
    pixelsSearched_ += static_cast<std::int64_t>(tiles_[i].area.rows() * tiles_[i].area.columns());
  const bool shared = team_->size() > 1 && (!tiling_.paced || pacer_.together());
  piecesPerTile_ = shared ? static_cast<std::size_t>(team_->size()) : 1;
  pieces_.assign(chosen_.size() * piecesPerTile_, CleanTileBest());
  const auto updateParts = [&](std::size_t part) {
    for (std::size_t c = 0; c < chosen_.size(); ++c)
      pieces_[c * piecesPerTile_ + part] = updatePiece(chosen_[c], part, gain);
  };
  if (team_->size() == 1) return updateParts(0);
  const double start = secondsNow();
  if (!shared) {
    updateParts(0);
    return pacer_.alone(secondsNow() - start);
  }
  // What this thread did itself.
  double from = start;
  double to = start;
  std::size_t parts = 0;
  const auto share = [&](std::size_t part, std::size_t member) {
    if (member == 0 && parts == 0) from = secondsNow();
    updateParts(part);
    if (member != 0) return;
    to = secondsNow();
    ++parts;
  };
  team_->run(piecesPerTile_, std::ref(share));
  pacer_.shared(secondsNow() - start, to - from, parts, piecesPerTile_);
}

/// One part of a tile's rows: always the same ones, so that they stay in the cache of a member's processor.
/// The longer parts of tiles whose rows do not divide evenly fall to the members in turn.
CleanTileBest TiledCleanEngine::updatePiece(std::uint32_t index, std::size_t part, double gain) const {
  const Tile& tile = tiles_[index];
  const std::size_t rows = tile.area.rows();
  const auto rowOf = [&](std::size_t n) {
    return tile.area.firstRow +
           static_cast<std::uint32_t>((rows * n + index % piecesPerTile_) / piecesPerTile_);
  };
  CleanTileArea area = tile.area;
  area.firstRow = rowOf(part);
  area.lastRow = rowOf(part + 1);
  if (area.firstRow == area.lastRow) return {};
  const CleanContest contest{gain, bestScore(), norm_.singleError(normBound_[index])};
  if (tiling_.rounding == CleanRounding::kOnce) return updateMerged(area, tile.applied, contest);
  return updateCleanTile(maps_, area, list_.data() + tile.applied, list_.size() - tile.applied, contest);
}

/// Subtracts the steps from `applied` on, merged.
/// @return the largest S, formed in single precision.
double TiledCleanEngine::subtractLacking(const CleanTileArea& area, std::size_t applied) const {
  CleanUpdate merged[kMaxTileUpdates];
  double formed = 0.0;
  std::size_t next = applied;
  do {
    std::size_t count = 0;
    next = list_.merge(next, merged, count);
    formed = subtractMerged(maps_, area, merged, count);
  } while (next < list_.size());
  return formed;
}

/// The same rounding once. Without the constraint an area that cannot reach the score gets a bound only, and
/// all bounds come from single precision: however many parts a tile has, their largest is the same.
CleanTileBest TiledCleanEngine::updateMerged(const CleanTileArea& area, std::size_t applied,
                                             const CleanContest& contest) const {
  const double bound = kUp * (subtractLacking(area, applied) + contest.singleError);
  const bool loses = !constrained() && kUp * (2.0 - contest.gain) * contest.gain * bound < contest.score;
  CleanTileBest best = loses ? CleanTileBest() : updateCleanTile(maps_, area, nullptr, 0, contest);
  if (!constrained() && std::isfinite(bound)) best.norm = bound;
  return best;
}

void TiledCleanEngine::dropSubtracted() {
  std::size_t everywhere = list_.size();
  for (const Tile& tile : tiles_) everywhere = std::min(everywhere, tile.applied);
  list_.drop(everywhere);
  for (Tile& tile : tiles_) tile.applied -= everywhere;
}

std::size_t TiledCleanEngine::peakOf(const CleanTileBest& best, double gain) const {
  if (constrained()) return best.offset;
  const auto row = static_cast<std::uint32_t>(best.offset / maps_.mapColumns);
  const auto column = static_cast<std::uint32_t>(best.offset % maps_.mapColumns);
  const auto end = std::min(column + tiling_.columns, static_cast<std::uint32_t>(maps_.mapColumns));
  return findCleanPeak(maps_, {row, row + 1, column, end}, gain).offset;
}

void TiledCleanEngine::fillStep(const CleanTileBest& best, double gain, CleanStep& step) const {
  const std::size_t offset = peakOf(best, gain);
  const std::int32_t count = terms();
  double a[kMaxTileTerms];
  for (std::int32_t j = 0; j < count; ++j) {
    a[j] = 0.0;
    for (std::int32_t k = 0; k < count; ++k)
      a[j] += static_cast<double>(maps_.maps[k][offset]) * maps_.inverse[j * count + k];
  }
  const double tentative = a[0] * gain + static_cast<double>(maps_.intensity[offset]);
  const double factor = constrained() && tentative < 0.0 ? tentative : 0.0;
  step.row = static_cast<std::uint32_t>(offset / maps_.mapColumns);
  step.column = static_cast<std::uint32_t>(offset % maps_.mapColumns);
  step.score = best.score;
  step.residual = static_cast<double>(maps_.maps[0][offset]);
  for (std::int32_t j = 0; j < count; ++j)
    step.increments[static_cast<std::size_t>(j)] = gain * a[j] - factor * beamMatrix().constraint()[j];
}

bool TiledCleanEngine::raiseBounds(const CleanStep& step) {
  const double size = norm_.stepNorm(step.increments.data());
  const double rounding = partialSums_ * (norm_.stepRounding() * size + norm_.absoluteRounding());
  const auto beamRows = static_cast<std::int64_t>(maps_.beamRows);
  const auto beamColumns = static_cast<std::int64_t>(maps_.beamColumns);
  const std::int64_t firstRow = beamRows / 2 - step.row;
  const std::int64_t firstColumn = beamColumns / 2 - step.column;
  double largest = 0.0;
  std::size_t i = 0;
  for (std::size_t tileRow = 0; tileRow < tileRows_; ++tileRow) {
    const std::size_t row = wrapped(firstRow + static_cast<std::int64_t>(tileRow * tiling_.rows), beamRows);
    for (std::size_t tileColumn = 0; tileColumn < tileColumns_; ++tileColumn, ++i) {
      const std::size_t column =
          wrapped(firstColumn + static_cast<std::int64_t>(tileColumn * tiling_.columns), beamColumns);
      const double growth =
          norm_.relativeRounding() * normBound_[i] + reach_.below(row, column) * size + rounding;
      normBound_[i] += growth;
      if (constrained()) scoreBound_[i] += tiles_[i].slope * growth;
      largest = std::max(largest, normBound_[i]);
    }
  }
  return largest < norm_.limit() && size < norm_.limit();
}

void TiledCleanEngine::subtract(const CleanStep& step) {
  if (!tiled_) return PlainCleanEngine::subtract(step);
  const float component = components()[0](step.row, step.column);
  if (!raiseBounds(step) || !std::isfinite(component)) {
    givePlainWay();
    return PlainCleanEngine::subtract(step);
  }
  if (constrained()) {
    // |c| = |C_0| sqrt(q)
    mostNegative_ = std::max(mostNegative_, kUp * std::sqrt(maps_.q) * -static_cast<double>(component));
    scoreBound_[step.row / tiling_.rows * tileColumns_ + step.column / tiling_.columns] = kInfinity;
  }
  list_.append(step);
}

}  // namespace lumo
