// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace lumo {

// The orthographic (SIN) projection of every map: an offset x east and y north of the map's centre, in
// radians, is the direction cosines l and m. Source: Thompson, Moran & Swenson, "Interferometry and Synthesis
// in Radio Astronomy", direction cosines.

/// A direction on the sky in degrees.
struct SkyPosition {
  double raDeg = 0.0;   ///< [0, 360)
  double decDeg = 0.0;  ///< [-90, 90]
};

/// A place in the tangent plane.
struct SkyOffset {
  double xArcsec = 0.0;  ///< to the east
  double yArcsec = 0.0;  ///< to the north
};

/// The direction of an offset from `centre`. Nothing beyond the horizon (l² + m² > 1) or for NaN. As exact as
/// degrees in double precision are, near the poles too.
[[nodiscard]] std::optional<SkyPosition> skyAtOffset(const SkyPosition& centre, double xArcsec,
                                                     double yArcsec);
/// The offset of a direction from `centre`; right ascensions may be whole turns apart. Nothing behind the
/// horizon or for NaN. Small offsets keep the digits that the degrees have.
[[nodiscard]] std::optional<SkyOffset> offsetOfSky(const SkyPosition& centre, const SkyPosition& direction);

}  // namespace lumo
