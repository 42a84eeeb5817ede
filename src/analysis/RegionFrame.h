// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "analysis/AreaShape.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "io/MapForm.h"

namespace lumo {

/// Where a map's coordinates lie in its FITS pixels and on the sky.
///
/// Pixels count from 1 and run west as the first coordinate grows, as in the files this program writes. The
/// sky is the orthographic (SIN) projection about the position in the header, at x = y = 0: x and y in
/// radians are the direction cosines l and m (Thompson, Moran & Swenson, "Interferometry and Synthesis in
/// Radio Astronomy", direction cosines).
class RegionFrame {
 public:
  /// A map of the given size with its header and coordinate range.
  RegionFrame(const AMapHeader& header, const TMinMax& range, std::uint32_t rows, std::uint32_t columns);

  /// Arcseconds a pixel, both positive.
  [[nodiscard]] double stepX() const { return -x_.step; }
  [[nodiscard]] double stepY() const { return y_.step; }
  /// True when a pixel is as wide as it is high, to a millionth.
  [[nodiscard]] bool squarePixels() const;
  [[nodiscard]] AreaPoint ofPixel(AreaPoint pixel) const;
  [[nodiscard]] AreaPoint pixelOf(AreaPoint point) const;

  /// True when the header has a position on the sky.
  [[nodiscard]] bool hasSky() const;
  /// "FK5", "ICRS" or "FK4"; empty when the header does not tell.
  [[nodiscard]] const std::string& skyName() const { return skyName_; }
  /// The place of a direction (x right ascension, y declination, degrees); nothing behind the horizon.
  [[nodiscard]] std::optional<AreaPoint> ofSky(AreaPoint direction) const;
  /// The direction of a place, right ascension in [0, 360); nothing beyond the horizon.
  [[nodiscard]] std::optional<AreaPoint> skyOf(AreaPoint point) const;

 private:
  PixelAxis x_;  ///< as FITS counts, so its step is negative
  PixelAxis y_;
  double raDeg_;
  double decDeg_;
  std::string skyName_;
};

}  // namespace lumo
