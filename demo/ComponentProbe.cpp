// SPDX-License-Identifier: GPL-3.0-or-later
#include "ComponentProbe.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "core/Units.h"

namespace lumo {

namespace {

constexpr double kSumRadius = 1.25;  // in full widths: wide enough for the flux, narrow enough for neighbours

// Second moments of a Gaussian in units of squared full widths at half maximum.
struct Moments {
  double east = 0, north = 0, cross = 0;
};

Moments momentsOf(const GaussianShape& shape) {
  const double s = std::sin(shape.pa * kRadianPerDegree), c = std::cos(shape.pa * kRadianPerDegree);
  const double a = shape.major * shape.major, b = shape.minor * shape.minor;
  return {a * s * s + b * c * c, a * c * c + b * s * s, (a - b) * s * c};
}

// The best parabola f = a + b·i + c·j + d·i² + e·j² + g·i·j through a 3 × 3 neighbourhood, i and j in -1..1.
struct Parabola {
  double a = 0, b = 0, c = 0, d = 0, e = 0, g = 0;

  explicit Parabola(const std::array<double, 9>& f) {
    double sum = 0, columns = 0, rows = 0;
    for (int k = 0; k < 9; ++k) {
      const int row = k / 3;
      const double i = k % 3 - 1, j = row - 1, value = f[static_cast<std::size_t>(k)];
      sum += value;
      columns += i * i * value;
      rows += j * j * value;
      b += i * value / 6;
      c += j * value / 6;
      g += i * j * value / 4;
    }
    d = columns / 2 - sum / 3;
    e = rows / 2 - sum / 3;
    a = (sum - 6 * (d + e)) / 9;
  }
};

}  // namespace

MapPlane::MapPlane(const AMatrix<float>& map, const TMinMax& range) : map_(map), range_(range) {}

bool MapPlane::usable() const {
  return map_.rows() > 1 && map_.columns() > 1 && range_.xMax > range_.xMin && range_.yMax > range_.yMin;
}

double MapPlane::nearest(double x, double y) const {
  const double column = std::floor((x - range_.xMin) / stepX() + 0.5);
  const double row = std::floor((y - range_.yMin) / stepY() + 0.5);
  if (!(column >= 0 && column < map_.columns() && row >= 0 && row < map_.rows()))
    return std::numeric_limits<double>::quiet_NaN();
  return map_(static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column));
}

std::optional<FittedPeak> fitPeak(const MapPlane& plane, double x, double y, double radius) {
  const AMatrix<float>& map = plane.map();
  std::optional<FittedPeak> best;
  std::uint32_t bestRow = 0, bestColumn = 0;
  for (std::uint32_t row = 0; row < map.rows(); ++row) {
    for (std::uint32_t column = 0; column < map.columns(); ++column) {
      const double value = map(row, column);
      if (!std::isfinite(value) || std::hypot(plane.x(column) - x, plane.y(row) - y) > radius) continue;
      if (best && value <= best->value) continue;
      best = {value, plane.x(column), plane.y(row)};
      bestRow = row;
      bestColumn = column;
    }
  }
  if (!best || bestRow == 0 || bestColumn == 0 || bestRow + 1 == map.rows() ||
      bestColumn + 1 == map.columns())
    return best;
  std::array<double, 9> values{};
  for (std::uint32_t k = 0; k < 9; ++k) values[k] = map(bestRow + k / 3 - 1, bestColumn + k % 3 - 1);
  const bool positive = std::all_of(values.begin(), values.end(), [](double v) { return v > 0; });
  if (positive)
    for (double& value : values) value = std::log(value);
  const Parabola p(values);
  const double determinant = 4 * p.d * p.e - p.g * p.g;
  if (!(p.d < 0 && determinant > 0)) return best;
  const double i = (p.g * p.c - 2 * p.e * p.b) / determinant;
  const double j = (p.g * p.b - 2 * p.d * p.c) / determinant;
  if (!(std::abs(i) <= 1 && std::abs(j) <= 1)) return best;
  const double top = p.a + (p.b * i + p.c * j) / 2;
  return FittedPeak{positive ? std::exp(top) : top, plane.x(bestColumn + i), plane.y(bestRow + j)};
}

GaussianShape GaussianShape::convolved(const GaussianShape& other) const {
  const Moments p = momentsOf(*this), q = momentsOf(other);
  const double east = p.east + q.east, north = p.north + q.north, cross = p.cross + q.cross;
  const double mean = (east + north) / 2;
  const double half = std::hypot((north - east) / 2, cross);
  return {std::sqrt(mean + half), std::sqrt(std::max(0.0, mean - half)),
          std::atan2(2 * cross, north - east) / 2 * kDegreePerRadian};
}

double GaussianShape::area() const {
  return kPi / (4 * std::log(2.0)) * major * minor;
}

std::optional<double> sumFlux(const MapPlane& plane, double x, double y, const GaussianShape& shape,
                              const GaussianShape& beam) {
  const double s = std::sin(shape.pa * kRadianPerDegree), c = std::cos(shape.pa * kRadianPerDegree);
  double sum = 0;
  bool any = false;
  for (std::uint32_t row = 0; row < plane.map().rows(); ++row) {
    for (std::uint32_t column = 0; column < plane.map().columns(); ++column) {
      const double east = plane.x(column) - x, north = plane.y(row) - y;
      const double along = (east * s + north * c) / (kSumRadius * shape.major);
      const double across = (east * c - north * s) / (kSumRadius * shape.minor);
      const double value = plane.map()(row, column);
      if (!(along * along + across * across <= 1) || !std::isfinite(value)) continue;
      sum += value;
      any = true;
    }
  }
  if (!any) return std::nullopt;
  const double share = 1 - std::exp2(-4 * kSumRadius * kSumRadius);
  return sum * plane.stepX() * plane.stepY() / beam.area() / share;
}

}  // namespace lumo
