// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/RegionFrame.h"

#include <cmath>

#include "core/Units.h"

namespace lumo {

RegionFrame::RegionFrame(const AMapHeader& header, const TMinMax& range, std::uint32_t rows,
                         std::uint32_t columns)
    : x_(pixelAxis(range.xMin, range.xMax, columns).mirrored(columns)),
      y_(pixelAxis(range.yMin, range.yMax, rows)),
      raDeg_(header.rightAscension),
      decDeg_(header.declination),
      skyName_(fitsFrame(header.frame, header.epoch)) {}

bool RegionFrame::squarePixels() const {
  constexpr double kTolerance = 1e-6;
  return std::abs(stepX() - stepY()) <= kTolerance * stepY();
}

AreaPoint RegionFrame::ofPixel(AreaPoint pixel) const {
  return {(pixel.x - x_.reference) * x_.step, (pixel.y - y_.reference) * y_.step};
}

AreaPoint RegionFrame::pixelOf(AreaPoint point) const {
  return {point.x / x_.step + x_.reference, point.y / y_.step + y_.reference};
}

bool RegionFrame::hasSky() const {
  return std::isfinite(raDeg_) && std::isfinite(decDeg_);
}

std::optional<AreaPoint> RegionFrame::ofSky(AreaPoint direction) const {
  const double ra = std::remainder(direction.x - raDeg_, 360.0) * kRadianPerDegree;
  const double dec = direction.y * kRadianPerDegree;
  const double dec0 = decDeg_ * kRadianPerDegree;
  // sin d cos d0 - cos d sin d0 cos a and its like, written so that small offsets keep their digits.
  const double half = std::sin(ra / 2.0);
  const double versed = 2.0 * half * half;
  const double l = std::cos(dec) * std::sin(ra);
  const double m =
      std::sin((direction.y - decDeg_) * kRadianPerDegree) + std::cos(dec) * std::sin(dec0) * versed;
  const double n =
      std::cos((direction.y - decDeg_) * kRadianPerDegree) - std::cos(dec) * std::cos(dec0) * versed;
  if (!(n >= 0.0)) return std::nullopt;
  return AreaPoint{l * kArcsecPerRadian, m * kArcsecPerRadian};
}

std::optional<AreaPoint> RegionFrame::skyOf(AreaPoint point) const {
  const double l = point.x * kRadianPerArcsec;
  const double m = point.y * kRadianPerArcsec;
  const double square = l * l + m * m;
  if (!(square <= 1.0)) return std::nullopt;
  const double n = std::sqrt(1.0 - square);
  const double dec0 = decDeg_ * kRadianPerDegree;
  const double north = m * std::cos(dec0) + n * std::sin(dec0);
  const double away = n * std::cos(dec0) - m * std::sin(dec0);
  const double dec = std::atan2(north, std::hypot(l, away));
  return AreaPoint{fitsLongitude(raDeg_ + std::atan2(l, away) * kDegreePerRadian), dec * kDegreePerRadian};
}

}  // namespace lumo
