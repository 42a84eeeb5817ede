// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "analysis/AreaShape.h"
#include "core/SkyProjection.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "io/MapForm.h"

namespace lumo {

/// Where a map's coordinates lie in the pixels of its FITS file and on the sky.
///
/// Pixels count from 1, along and across the file's lines as the header's pixel order says: in the files of
/// this program to the west and to the north. The sky is the projection of core/SkyProjection.h about the
/// position in the header, at x = y = 0.
class RegionFrame {
 public:
  /// A map of the given size with its header and coordinate range.
  RegionFrame(const AMapHeader& header, const TMinMax& range, std::uint32_t rows, std::uint32_t columns);

  /// Arcseconds a pixel along x and y, both positive.
  [[nodiscard]] double stepX() const { return std::abs(x_.step); }
  [[nodiscard]] double stepY() const { return std::abs(y_.step); }
  /// True when a pixel is as wide as it is high, to a millionth.
  [[nodiscard]] bool squarePixels() const;
  [[nodiscard]] AreaPoint ofPixel(AreaPoint pixel) const;
  /// The same for a distance in pixels.
  [[nodiscard]] AreaPoint ofPixelStep(AreaPoint step) const;
  [[nodiscard]] AreaPoint pixelOf(AreaPoint point) const;
  /// The rotation of an area (degrees, from east towards north) whose first axis lies `angle` degrees in the
  /// file, from the direction of its lines towards that of its columns, where pixels are square. It is its
  /// own inverse but for half a turn, which areas do not see.
  [[nodiscard]] double rotationOf(double angle) const;

  /// True when the header has a position on the sky.
  [[nodiscard]] bool hasSky() const;
  /// "FK5", "ICRS" or "FK4"; empty when the header does not tell.
  [[nodiscard]] const std::string& skyName() const { return skyName_; }
  /// The place of a direction (x right ascension, y declination, degrees); nothing behind the horizon.
  [[nodiscard]] std::optional<AreaPoint> ofSky(AreaPoint direction) const;
  /// The direction of a place, right ascension in [0, 360); nothing beyond the horizon.
  [[nodiscard]] std::optional<AreaPoint> skyOf(AreaPoint point) const;

 private:
  PixelAxis x_;  ///< as the file counts, so a step is negative where its pixels run west or south
  PixelAxis y_;
  bool linesAlongX_;
  SkyPosition centre_;
  std::string skyName_;
};

}  // namespace lumo
