// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/EarthGeometry.h"

#include <cmath>

namespace lumo {

namespace {

// WGS 84: equatorial radius in metres and squared eccentricity.
constexpr double kEquatorialRadius = 6378137.0;
constexpr double kEccentricitySquared = 6.69437999014e-3;

}  // namespace

SourceDirection::SourceDirection(double greenwichHourAngle, double declination)
    : sinHour_(std::sin(greenwichHourAngle)),
      cosHour_(std::cos(greenwichHourAngle)),
      sinDec_(std::sin(declination)),
      cosDec_(std::cos(declination)) {}

Uvw SourceDirection::uvw(const EarthVector& baseline) const {
  const auto [x, y, z] = baseline;
  return {sinHour_ * x + cosHour_ * y, -sinDec_ * cosHour_ * x + sinDec_ * sinHour_ * y + cosDec_ * z,
          cosDec_ * cosHour_ * x - cosDec_ * sinHour_ * y + sinDec_ * z};
}

double SourceDirection::sinElevation(const EarthVector& position) const {
  return uvw(zenith(position)).w;
}

EarthVector zenith(const EarthVector& position) {
  const double z = position.z / (1 - kEccentricitySquared);
  const double length = std::sqrt(position.x * position.x + position.y * position.y + z * z);
  return {position.x / length, position.y / length, z / length};
}

EarthVector fromGeodetic(double latitude, double longitude, double height) {
  const double sinLat = std::sin(latitude), cosLat = std::cos(latitude);
  const double normal = kEquatorialRadius / std::sqrt(1 - kEccentricitySquared * sinLat * sinLat);
  return {(normal + height) * cosLat * std::cos(longitude), (normal + height) * cosLat * std::sin(longitude),
          (normal * (1 - kEccentricitySquared) + height) * sinLat};
}

}  // namespace lumo
