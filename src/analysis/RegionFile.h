// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/AreaShape.h"
#include "analysis/RegionFrame.h"
#include "core/Status.h"

namespace lumo {

// DS9 region files, so that areas can be exchanged with the viewers of the field.
//
// Read are circle, ellipse, box and polygon, with or without parentheses, in image coordinates (FITS pixels
// from 1; physical ones count as these, and so does a file that names no frame) and in fk5 and icrs (or, on a
// map of that equinox, fk4). FK5 and ICRS differ by some hundredths of an arcsecond and count as one.
// Positions may be decimal or sexagesimal, sizes carry " ' d r i p, by default degrees on the sky and pixels
// in the image. Angles run counter-clockwise from the image's x axis, on the sky from the west, where that
// axis points in the usual image. What would be measured wrongly if it were ignored is refused with its line:
// excluded regions, other shapes and other frames.

enum class RegionSystem { kSky, kImage };

inline constexpr std::size_t kMostRegions = 1000;

/// The areas of the text of a region file on a map. On failure `shapes` is empty.
[[nodiscard]] Status parseRegions(std::string_view text, const RegionFrame& frame,
                                  std::vector<AreaShape>& shapes);
/// The same from a file of at most 16 MiB.
[[nodiscard]] Status readRegions(const std::string& path, const RegionFrame& frame,
                                 std::vector<AreaShape>& shapes);

/// The text of a region file that holds the areas. Fails when the map has no position on the sky, or an area
/// lies beyond the horizon, and sky coordinates are asked for.
[[nodiscard]] Status formatRegions(const std::vector<AreaShape>& shapes, const RegionFrame& frame,
                                   RegionSystem system, std::string& text);
/// The same into a file.
[[nodiscard]] Status writeRegions(const std::string& path, const std::vector<AreaShape>& shapes,
                                  const RegionFrame& frame, RegionSystem system);

}  // namespace lumo
