// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/SkyProjection.h"

#include <cmath>

#include "core/Units.h"

namespace lumo {

namespace {

constexpr double kTurn = 360.0;

// Degrees in [0, 360).
double withinTurn(double degrees) {
  double result = std::fmod(degrees, kTurn);
  if (result < 0) result += kTurn;
  return result == kTurn ? 0.0 : result + 0.0;  // no negative zero
}

}  // namespace

std::optional<SkyPosition> skyAtOffset(const SkyPosition& centre, double xArcsec, double yArcsec) {
  const double l = xArcsec * kRadianPerArcsec;
  const double m = yArcsec * kRadianPerArcsec;
  const double square = l * l + m * m;
  if (!(square <= 1.0)) return std::nullopt;
  const double n = std::sqrt(1.0 - square);
  const double dec0 = centre.decDeg * kRadianPerDegree;
  const double north = m * std::cos(dec0) + n * std::sin(dec0);
  const double away = n * std::cos(dec0) - m * std::sin(dec0);
  // The declination by its tangent: the sine alone loses half of the digits near the poles.
  const double dec = std::atan2(north, std::hypot(l, away));
  // Added in degrees: the turn into radians and back would cost the centre's last digits.
  return SkyPosition{withinTurn(centre.raDeg + std::atan2(l, away) * kDegreePerRadian),
                     dec * kDegreePerRadian};
}

std::optional<SkyOffset> offsetOfSky(const SkyPosition& centre, const SkyPosition& direction) {
  const double ra = std::remainder(direction.raDeg - centre.raDeg, kTurn) * kRadianPerDegree;
  const double north = (direction.decDeg - centre.decDeg) * kRadianPerDegree;
  const double dec = direction.decDeg * kRadianPerDegree;
  const double dec0 = centre.decDeg * kRadianPerDegree;
  // sin d cos d0 - cos d sin d0 cos a and its like, written so that small offsets keep their digits.
  const double half = std::sin(ra / 2.0);
  const double versed = 2.0 * half * half;
  const double l = std::cos(dec) * std::sin(ra);
  const double m = std::sin(north) + std::cos(dec) * std::sin(dec0) * versed;
  const double n = std::cos(north) - std::cos(dec) * std::cos(dec0) * versed;
  if (!(n >= 0.0)) return std::nullopt;
  return SkyOffset{l * kArcsecPerRadian, m * kArcsecPerRadian};
}

}  // namespace lumo
