// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace lumo {

/// A direction on the sky in degrees.
struct SkyPosition {
  double raDeg = 0.0;   ///< [0, 360)
  double decDeg = 0.0;  ///< [-90, 90]
};

/// The direction `xArcsec` east and `yArcsec` north of `centre` on the tangent plane of the orthographic
/// (SIN) projection: direction cosines l = x, m = y in radians. Nothing beyond the horizon (l² + m² > 1) or
/// for NaN. Source: Thompson, Moran & Swenson, "Interferometry and Synthesis in Radio Astronomy", direction
/// cosines.
[[nodiscard]] std::optional<SkyPosition> skyAtOffset(const SkyPosition& centre, double xArcsec,
                                                     double yArcsec);

/// Decimals of a second of arc with which a tenth of a cell can be told apart, 0..9; 1 where the cell is not
/// a positive number.
[[nodiscard]] int arcsecDecimals(double cellArcsec);

/// `decimals` digits (0..9) after a decimal point, whatever the locale; a zero has no minus sign.
[[nodiscard]] std::string fixedText(double value, int decimals);
/// "hh:mm:ss.s" with `decimals` decimals (0..9) of a second of time; rounds over to 00:00:00 at 24 h.
[[nodiscard]] std::string raText(double raDeg, int decimals);
/// "+dd:mm:ss.s" with `decimals` decimals (0..9) of a second of arc, always with its sign.
[[nodiscard]] std::string decText(double decDeg, int decimals);

}  // namespace lumo
