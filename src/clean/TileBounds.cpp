// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TileBounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "clean/PeriodicIndex.h"

namespace lumo {

namespace {

/// Covers the rounding of S, which BeamNorm keeps below 1e-8 of it, and those of the bounds.
constexpr double kUp = 1.0 + 1e-6;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// g h
double scaleOf(double gain) {
  return (2.0 - gain) * gain;
}

/// L of the constrained score's bound.
double slopeOf(double gain) {
  return kUp * std::sqrt(gain <= 1.0 ? gain * (2.0 - gain) : gain / (2.0 - gain));
}

}  // namespace

bool TileBounds::measure(const APtrArray<AMatrix<float>*>& beams, const BeamMatrix& matrix,
                         std::int32_t terms) {
  return norm_.prepare(beams, matrix, terms);
}

void TileBounds::prepare(const Grid& grid, const CleanTileMaps& maps, const APtrArray<AMatrix<float>*>& beams,
                         double partialSums, ThreadTeam& team) {
  grid_ = grid;
  maps_ = &maps;
  partialSums_ = partialSums;
  mostNegative_ = 0.0;
  normBound_.assign(grid.tiles(), kInfinity);
  scoreBound_.assign(grid.tiles(), kInfinity);
  gain_.assign(grid.tiles(), 0.0);
  slope_.assign(grid.tiles(), 1.0);
  bound_.assign(grid.tiles(), kInfinity);
  reach_.prepare(beams, norm_, grid.rows, grid.columns, team);
}

std::size_t TileBounds::bytes() const {
  return reach_.bytes() + (normBound_.capacity() + scoreBound_.capacity() + gain_.capacity() +
                           slope_.capacity() + bound_.capacity()) *
                              sizeof(double);
}

/// How far the root of a score can be wrong, being formed in double.
double TileBounds::scoreRounding(double x) const {
  return std::sqrt(64.0 * 0x1p-53 * norm_.condition()) * (4.0 * x + mostNegative_);
}

double TileBounds::constrainedBound(std::size_t tile, double gain) const {
  const double x = normBound_[tile];
  const double c = mostNegative_;
  double root = scoreBound_[tile];
  if (gain_[tile] != gain)
    root += x * std::sqrt(kUp * std::fabs(scaleOf(gain) - scaleOf(gain_[tile])) + 1e-15);
  if (c > 0.0) {
    const double least = std::min(gain, gain_[tile]);
    const double ratio = (2.0 - least) / least;
    root += c * std::sqrt(ratio) + std::sqrt(2.0 * c * x + c * c * (1.0 + ratio));
  }
  // The score is rounded when it is searched and when it is compared.
  root += 2.0 * scoreRounding(x);
  return kUp * root * root;
}

void TileBounds::form(double gain) {
  if (!constrained()) {
    for (std::size_t i = 0; i < bound_.size(); ++i)
      bound_[i] = kUp * scaleOf(gain) * scoreBound_[i] * scoreBound_[i];
    return;
  }
  for (std::size_t i = 0; i < bound_.size(); ++i)
    bound_[i] = scoreBound_[i] < kInfinity ? constrainedBound(i, gain) : kInfinity;
}

/// With the constraint E / (g h) stands for S. Where t < 0, E is g h |z|^2 - (h s + c) (g s + c). For g <= 1
/// that product is not negative where c >= 0, and not below -c^2 (1 - g)^2 / (g h) elsewhere: E / (g h)
/// exceeds S by c^2 / g^2 at most.
double TileBounds::singleError(std::size_t tile, double gain) const {
  const double x = normBound_[tile];
  if (!constrained()) return norm_.singleError(x);
  if (gain > 1.0) return kInfinity;
  const double excess = mostNegative_ / gain;
  const double rounding = scoreRounding(x);
  return norm_.singleError(x) + kUp * (excess * excess + rounding * rounding / scaleOf(gain));
}

/// Y of a score.
double TileBounds::rootOf(double score, double gain) const {
  return kUp * std::sqrt(std::max(score, 0.0) / (constrained() ? 1.0 : scaleOf(gain)));
}

void TileBounds::setSearched(std::size_t tile, const AreaRest& rest, double gain) {
  normBound_[tile] = kUp * std::sqrt(rest.norm);
  scoreBound_[tile] = rootOf(rest.score, gain);
  gain_[tile] = gain;
  slope_[tile] = constrained() ? slopeOf(gain) : 1.0;
  bound_[tile] = -1.0;
}

void TileBounds::include(std::size_t tile, double score, double gain) {
  // A bound of scores of another gain cannot be compared: search the tile again.
  const bool comparable = !constrained() || gain_[tile] == gain;
  scoreBound_[tile] = comparable ? std::max(scoreBound_[tile], rootOf(score, gain)) : kInfinity;
}

bool TileBounds::raise(const CleanStep& step) {
  const double size = norm_.stepNorm(step.increments.data());
  const double rounding = partialSums_ * (norm_.stepRounding() * size + norm_.absoluteRounding());
  const std::int64_t firstRow = static_cast<std::int64_t>(maps_->beamRows / 2) - step.row;
  const std::int64_t firstColumn = static_cast<std::int64_t>(maps_->beamColumns / 2) - step.column;
  double largest = 0.0;
  std::size_t i = 0;
  for (std::size_t tileRow = 0; tileRow < grid_.tileRows; ++tileRow) {
    const std::size_t row =
        periodicIndex(firstRow + static_cast<std::int64_t>(tileRow * grid_.rows), maps_->beamRows);
    for (std::size_t tileColumn = 0; tileColumn < grid_.tileColumns; ++tileColumn, ++i) {
      const std::size_t column = periodicIndex(
          firstColumn + static_cast<std::int64_t>(tileColumn * grid_.columns), maps_->beamColumns);
      const double growth =
          norm_.relativeRounding() * normBound_[i] + reach_.below(row, column) * size + rounding;
      normBound_[i] += growth;
      scoreBound_[i] += slope_[i] * growth;
      largest = std::max(largest, normBound_[i]);
    }
  }
  return largest < norm_.limit() && size < norm_.limit();
}

void TileBounds::noteComponent(double component) {
  // |c| = |C_0| sqrt(q)
  if (constrained()) mostNegative_ = std::max(mostNegative_, kUp * std::sqrt(maps_->q) * -component);
}

}  // namespace lumo
