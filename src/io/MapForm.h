// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "io/AMapHeader.h"

namespace lumo {

// How the values of a map's record look in the standard FITS keywords. The writer writes these; the reader
// trusts an exact L-keyword only while the standard keywords beside it still say the same.

/// One axis of a map in the tangent plane: pixel p (from 1) lies at (p - reference) * step arcseconds.
struct PixelAxis {
  double reference = 1;
  double step = 1;

  /// The same axis counted from the other end of `count` pixels.
  [[nodiscard]] PixelAxis mirrored(std::uint32_t count) const { return {count + 1.0 - reference, -step}; }
};

/// The axis of `count` pixels whose first and last centres lie at `min` and `max`. A range that gives no
/// usable step (unset, one pixel, not finite) gets steps of one arcsecond, about the middle if it has no
/// place.
[[nodiscard]] PixelAxis pixelAxis(double min, double max, std::uint32_t count);

struct FitsBeam {
  double major;  ///< arcseconds, >= minor > 0
  double minor;
  double pa;  ///< degrees, of the major axis
};
/// Nothing when the widths are not positive.
[[nodiscard]] std::optional<FitsBeam> fitsBeam(const AMapHeader& header);
/// BUNIT: "Jy/beam" for "Jy/Beam" in any case, empty for "Sp. Index", anything else as it stands.
[[nodiscard]] std::string fitsUnit(const std::string& unit);
/// The unit text of a BUNIT: "Jy/Beam" for the spellings of Jy per beam, anything else as it stands.
[[nodiscard]] std::string unitOfFits(const std::string& bunit);
/// BTYPE.
[[nodiscard]] const char* fitsKind(MapKind kind);
/// RADESYS; empty when neither frame nor epoch tells.
[[nodiscard]] std::string fitsFrame(UvxFrame frame, double epoch);
/// Degrees in [0, 360), NaN for what is not finite.
[[nodiscard]] double fitsLongitude(double degrees);
/// CDELT3 in Hz.
[[nodiscard]] double fitsBandwidth(double bandwidth);
/// CRVAL4; 1 (I) for a mix that FITS has no code for.
[[nodiscard]] int fitsStokes(const std::string& name);
/// Name of a FITS Stokes code, empty for an unknown one.
[[nodiscard]] std::string stokesOfFits(int code);
/// DATE: the given one, or the day (UTC) of the moment. A set SOURCE_DATE_EPOCH (seconds since 1970) is taken
/// for the moment, so that a build or test run can be repeated to the byte.
[[nodiscard]] std::string fitsDate(const std::string& given);

/// LFRAME and back; an unknown name means by epoch.
[[nodiscard]] const char* frameName(UvxFrame frame);
[[nodiscard]] UvxFrame frameOfName(const std::string& name);

}  // namespace lumo
