// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/ABitMatrix.h"
#include "core/TMinMax.h"

namespace lumo {

enum class AreaKind { kCircle, kEllipse, kRectangle, kPolygon };

/// A place on a map in arcseconds, x to the east and y to the north.
struct AreaPoint {
  double x = 0.0;
  double y = 0.0;

  bool operator==(const AreaPoint&) const = default;
};

/// One area marked on a map, in map coordinates, so that it marks the same sky on maps of any pixel size.
///
/// The outline belongs to the area. A value that is not finite makes an area that holds nothing.
struct AreaShape {
  AreaKind kind = AreaKind::kCircle;
  AreaPoint centre;  ///< unused by a polygon
  /// Arcseconds: radius, semi-axis, or full width of a rectangle, before the rotation along x.
  double sizeX = 0.0;
  double sizeY = 0.0;     ///< the same along y; unused by a circle
  double rotation = 0.0;  ///< degrees from x (east) towards y (north); a position angle is 90 minus this
  std::vector<AreaPoint> vertices;  ///< of a polygon, closed by itself; where it crosses itself, even-odd
  std::string name;                 ///< what the user calls it, may be empty

  bool operator==(const AreaShape&) const = default;

  [[nodiscard]] static AreaShape circle(AreaPoint centre, double radius);
  [[nodiscard]] static AreaShape ellipse(AreaPoint centre, double semiX, double semiY, double rotation = 0.0);
  [[nodiscard]] static AreaShape rectangle(AreaPoint centre, double width, double height,
                                           double rotation = 0.0);
  [[nodiscard]] static AreaShape polygon(std::vector<AreaPoint> vertices);

  /// A place of the map as seen from the centre, along the area's own axes, and back. Rotations by whole
  /// quarter turns are exact.
  [[nodiscard]] AreaPoint ownCoordinates(AreaPoint place) const;
  [[nodiscard]] AreaPoint mapCoordinates(AreaPoint own) const;
  /// Points that lie up to `margin` arcseconds outside count too.
  [[nodiscard]] bool contains(AreaPoint point, double margin = 0.0) const;
  /// A box (x and y of the range) that no point of the area lies outside of.
  [[nodiscard]] TMinMax bounds() const;
};

/// Calls `take(row, column)` for the pixels whose centres lie inside the area or, up to a millionth of a
/// pixel, on its outline, row by row.
/// @param range  the map's, of rows × columns pixels: x of the first and last column, y of the first and last
///               row.
void forEachPixel(const AreaShape& area, std::uint32_t rows, std::uint32_t columns, const TMinMax& range,
                  const std::function<void(std::uint32_t, std::uint32_t)>& take);

/// Sets the bits of forEachPixel()'s pixels and leaves the others as they are.
/// @param mask   [rows][columns], of the map's size.
/// @param range  the map's: x of the first and last column, y of the first and last row.
void fillMask(const AreaShape& area, ABitMatrix& mask, const TMinMax& range);

}  // namespace lumo
