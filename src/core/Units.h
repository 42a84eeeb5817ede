// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

// Conventions of the whole system: frequencies in Hz, u and v in wavelengths (seconds of light travel where a
// record stores them), map coordinates in arcseconds, x to the east and y to the north, beam widths as full
// widths at half maximum in arcseconds, position angles in degrees from north through east.

inline constexpr double kArcsecPerRadian = 206264.80624709636;
inline constexpr double kRadianPerArcsec = 4.84813681109536e-6;
inline constexpr double kDegreePerRadian = 57.29577951308232;
inline constexpr double kRadianPerDegree = 0.017453292519943295;
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
/// Phase in radians of one wavelength of u at an offset of one arcsecond: 2 pi / kArcsecPerRadian.
inline constexpr double kPhasePerArcsec = 3.0461741978670858e-5;
inline constexpr double kSpeedOfLight = 299792458.0;  // m/s
inline constexpr double kMegahertz = 1e6;             // Hz
inline constexpr double kMegahertzPerHertz = 1e-6;

}  // namespace lumo
