// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TiledCleanEngine.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumo {

namespace {

/// Loop gains this near to 0 or 2 make scores of rounding errors.
constexpr double kGainMargin = 1e-6;
/// Covers the rounding of S, which BeamNorm keeps below 1e-8 of it, and those of the bounds.
constexpr double kUp = 1.0 + 1e-6;
/// A tile that lacks a step this far back while the list is full is brought up to date.
constexpr std::size_t kOldest = kMaxTileUpdates / 4;
/// Rounds of the tiles with the largest bounds before all the others that may win are taken at once: after
/// that many the best score hardly rises.
constexpr int kLeaderRounds = 4;

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
  list_.clear();
  tiles_.clear();
  tiled_ = parameters().iterations > 0 && boundsHold();
  if (tiled_) makeTiles();
}

bool TiledCleanEngine::boundsHold() {
  // With the variable gain all gains lie between the one given and 1.
  if (terms() > kMaxTileTerms || residuals()[0]->size() == 0 || !usable(parameters().gain)) return false;
  for (const AMatrix<float>* map : residuals())
    if (!allFinite(*map)) return false;
  return norm_.prepare(beams(), beamMatrix(), terms());
}

void TiledCleanEngine::makeTiles() {
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const std::uint32_t tileRows = std::clamp(tiling_.rows, 1U, rows);
  const std::uint32_t tileColumns = std::clamp(tiling_.columns, 1U, columns);
  tiling_.rows = tileRows;
  tiling_.columns = tileColumns;
  for (std::uint32_t row = 0; row < rows; row += std::min(tileRows, rows - row)) {
    for (std::uint32_t column = 0; column < columns; column += std::min(tileColumns, columns - column)) {
      Tile& tile = tiles_.emplace_back();
      tile.area = {row, row + std::min(tileRows, rows - row), column,
                   column + std::min(tileColumns, columns - column)};
    }
  }
  tilesPerRow_ = (columns + tileColumns - 1) / tileColumns;
  list_.reserve(kMaxTileUpdates);
  chosen_.reserve(tiles_.size());
  reach_.prepare(beams(), norm_, tileRows, tileColumns, *team_);

  maps_ = {};
  maps_.terms = terms();
  for (std::int32_t k = 0; k < terms(); ++k) maps_.maps[k] = residuals()[k]->data();
  for (std::int32_t m = 0; m < beams().count(); ++m) maps_.beams[m] = beams()[m]->data();
  maps_.intensity = components()[0].data();
  maps_.mapColumns = columns;
  maps_.beamRows = beams()[0]->rows();
  maps_.beamColumns = beams()[0]->columns();
  maps_.inverse = beamMatrix().inverse().data();
  maps_.q = beamMatrix().q();
  maps_.nonNegative = parameters().nonNegative;
}

void TiledCleanEngine::settle() {
  if (!tiled_ || list_.empty()) return;
  chosen_.clear();
  for (std::size_t i = 0; i < tiles_.size(); ++i)
    if (tiles_[i].applied < list_.size()) chosen_.push_back(i);
  bringUpToDate(tiles_[0].gain);
  dropSubtracted();
}

void TiledCleanEngine::givePlainWay() {
  settle();
  tiled_ = false;
}

double TiledCleanEngine::bound(const Tile& tile, const Gain& gain) const {
  if (tile.unknown) return std::numeric_limits<double>::infinity();
  if (!maps_.nonNegative) return kUp * gain.scale * tile.normBound * tile.normBound;
  const double x = tile.normBound;
  const double c = mostNegative_;
  double root = tile.scoreBound;
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

bool TiledCleanEngine::upToDate(const Tile& tile, const Gain& gain) const {
  return !tile.unknown && tile.applied == list_.size() && tile.gain == gain.gain;
}

bool TiledCleanEngine::search(double gainValue, CleanStep& step) {
  if (tiled_ && !usable(gainValue)) givePlainWay();
  if (!tiled_) return PlainCleanEngine::search(gainValue, step);
  const Gain gain(gainValue);
  for (int round = 0; round < kLeaderRounds && chooseLeaders(gain); ++round) bringUpToDate(gainValue);
  chooseRest(gain);
  bringUpToDate(gainValue);
  dropSubtracted();
  const Tile* const best = winner(gain);
  if (best == nullptr) return false;
  fillStep(best->best, gainValue, step);
  return true;
}

bool TiledCleanEngine::chooseLeaders(const Gain& gain) {
  // One for every thread: their scores let most other tiles rest.
  const Tile* const leader = winner(gain);
  const double best = leader != nullptr ? leader->best.score : 0.0;
  const auto count = static_cast<std::size_t>(team_->size());
  chosen_.clear();
  double least = -1.0;
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    const double value = bound(tiles_[i], gain);
    if (value < best || (chosen_.size() == count && value <= least) || upToDate(tiles_[i], gain)) continue;
    if (chosen_.size() == count) chosen_.pop_back();
    const auto place = std::find_if(chosen_.begin(), chosen_.end(),
                                    [&](std::size_t other) { return bound(tiles_[other], gain) < value; });
    chosen_.insert(place, i);
    least = bound(tiles_[chosen_.back()], gain);
  }
  return !chosen_.empty();
}

void TiledCleanEngine::chooseRest(const Gain& gain) {
  const Tile* const leader = winner(gain);
  const double best = leader != nullptr ? leader->best.score : 0.0;
  const bool full = list_.size() == kMaxTileUpdates;
  chosen_.clear();
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    const Tile& tile = tiles_[i];
    const bool overdue = full && tile.applied < kOldest;
    // Written so that a bound that is not a number is reached.
    if ((overdue || !(bound(tile, gain) < best)) && !upToDate(tile, gain)) chosen_.push_back(i);
  }
}

void TiledCleanEngine::bringUpToDate(double gain) {
  team_->run(chosen_.size(), [&](std::size_t i) { updateTile(tiles_[chosen_[i]], gain); });
  for (const std::size_t i : chosen_) {
    const CleanTileArea& area = tiles_[i].area;
    pixelsSearched_ +=
        static_cast<std::int64_t>(area.lastRow - area.firstRow) * (area.lastColumn - area.firstColumn);
  }
}

void TiledCleanEngine::updateTile(Tile& tile, double gain) {
  tile.best =
      updateCleanTile(maps_, tile.area, list_.data() + tile.applied, list_.size() - tile.applied, gain);
  tile.applied = list_.size();
  tile.gain = gain;
  tile.slope = slopeOf(gain);
  tile.unknown = false;
  tile.normBound = kUp * std::sqrt(tile.best.norm);
  tile.scoreBound = tile.best.found ? kUp * std::sqrt(std::max(tile.best.score, 0.0)) : 0.0;
}

const TiledCleanEngine::Tile* TiledCleanEngine::winner(const Gain& gain) const {
  const Tile* found = nullptr;
  for (const Tile& tile : tiles_) {
    if (!upToDate(tile, gain) || !tile.best.found) continue;
    if (found != nullptr && (tile.best.score < found->best.score ||
                             (tile.best.score == found->best.score && tile.best.offset < found->best.offset)))
      continue;
    found = &tile;
  }
  return found;
}

void TiledCleanEngine::dropSubtracted() {
  std::size_t everywhere = list_.size();
  for (const Tile& tile : tiles_) everywhere = std::min(everywhere, tile.applied);
  if (everywhere == 0) return;
  list_.erase(list_.begin(), list_.begin() + static_cast<std::ptrdiff_t>(everywhere));
  for (Tile& tile : tiles_) tile.applied -= everywhere;
}

void TiledCleanEngine::fillStep(const CleanTileBest& best, double gain, CleanStep& step) const {
  const std::int32_t count = terms();
  double a[kMaxTileTerms];
  for (std::int32_t j = 0; j < count; ++j) {
    a[j] = 0.0;
    for (std::int32_t k = 0; k < count; ++k)
      a[j] += static_cast<double>(maps_.maps[k][best.offset]) * maps_.inverse[j * count + k];
  }
  const double tentative = a[0] * gain + static_cast<double>(maps_.intensity[best.offset]);
  const double factor = maps_.nonNegative && tentative < 0.0 ? tentative : 0.0;
  step.row = static_cast<std::uint32_t>(best.offset / maps_.mapColumns);
  step.column = static_cast<std::uint32_t>(best.offset % maps_.mapColumns);
  step.score = best.score;
  for (std::int32_t j = 0; j < count; ++j)
    step.increments[static_cast<std::size_t>(j)] = gain * a[j] - factor * beamMatrix().constraint()[j];
}

bool TiledCleanEngine::raiseBounds(const CleanStep& step) {
  const double size = norm_.stepNorm(step.increments.data());
  const auto beamRows = static_cast<std::int64_t>(maps_.beamRows);
  const auto beamColumns = static_cast<std::int64_t>(maps_.beamColumns);
  const std::int64_t firstRow = beamRows / 2 - step.row;
  const std::int64_t firstColumn = beamColumns / 2 - step.column;
  double largest = 0.0;
  for (Tile& tile : tiles_) {
    const double reach = reach_.below(wrapped(firstRow + tile.area.firstRow, beamRows),
                                      wrapped(firstColumn + tile.area.firstColumn, beamColumns));
    const double growth = norm_.relativeRounding() * tile.normBound + (reach + norm_.stepRounding()) * size +
                          norm_.absoluteRounding();
    tile.normBound += growth;
    tile.scoreBound += tile.slope * growth;
    largest = std::max(largest, tile.normBound);
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
  if (maps_.nonNegative) {
    // |c| = |C_0| sqrt(q)
    mostNegative_ = std::max(mostNegative_, kUp * std::sqrt(maps_.q) * -static_cast<double>(component));
    tiles_[step.row / tiling_.rows * tilesPerRow_ + step.column / tiling_.columns].unknown = true;
  }
  CleanUpdate& update = list_.emplace_back();
  update.row = step.row;
  update.column = step.column;
  std::copy_n(step.increments.begin(), terms(), update.increments);
}

}  // namespace lumo
