// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// A vector in the geocentric Earth-fixed frame: x to the equator at the zero meridian, y to the equator at
/// 90 degrees east, z to the north pole; metres.
struct EarthVector {
  double x = 0, y = 0, z = 0;

  [[nodiscard]] EarthVector operator-(const EarthVector& other) const {
    return {x - other.x, y - other.y, z - other.z};
  }
};

/// A baseline seen from the source, in the unit of the vector it comes from: u to the east, v to the north, w
/// towards the source.
struct Uvw {
  double u = 0, v = 0, w = 0;
};

/// The direction of a source above the rotating Earth.
class SourceDirection {
 public:
  /// Hour angle as seen from the zero meridian and declination, both in radians.
  SourceDirection(double greenwichHourAngle, double declination);

  /// Thompson, Moran & Swenson (2017), eq. 4.1, for the right-handed Earth-fixed frame.
  [[nodiscard]] Uvw uvw(const EarthVector& baseline) const;
  /// Sine of the elevation above the horizon of the ellipsoid at a position on the Earth's surface.
  [[nodiscard]] double sinElevation(const EarthVector& position) const;

 private:
  double sinHour_, cosHour_, sinDec_, cosDec_;
};

/// Unit vector to the zenith: the ellipsoid's normal (WGS 84), exact on its surface and good to 1e-5 radians
/// a few kilometres above.
[[nodiscard]] EarthVector zenith(const EarthVector& position);

/// Geocentric position of a place given by geodetic latitude and longitude (radians, east positive) and
/// height above the WGS 84 ellipsoid (metres).
[[nodiscard]] EarthVector fromGeodetic(double latitude, double longitude, double height);

}  // namespace lumo
