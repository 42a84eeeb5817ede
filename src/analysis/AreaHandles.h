// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <vector>

#include "analysis/AreaShape.h"

namespace lumo {

// What of an area can be pulled with the mouse, and what becomes of the area then.

enum class HandleKind {
  kBox,     ///< side or corner of a rectangle or of the box about an ellipse: the opposite one stays
  kRadius,  ///< of a circle
  kRotate,  ///< turns a rectangle or ellipse about its centre, a polygon about the middle of its box
  kVertex,  ///< of a polygon
  kInsert   ///< middle of a polygon's side: becomes a new vertex
};

struct AreaHandle {
  HandleKind kind = HandleKind::kVertex;
  AreaPoint at;
  int x = 0;               ///< kBox: -1, 0 or 1 along the area's own first axis
  int y = 0;               ///< the same along its second
  std::size_t vertex = 0;  ///< kVertex: its index; kInsert: the index that the new vertex gets

  bool operator==(const AreaHandle&) const = default;
};

/// The handles of an area; that for turning stands `reach` arcseconds outside its upper side.
[[nodiscard]] std::vector<AreaHandle> areaHandles(const AreaShape& area, double reach);

/// The area after a handle of areaHandles() has been pulled from one place to another. A pull that would
/// leave no size along an axis does not change that size.
[[nodiscard]] AreaShape pulledArea(const AreaShape& area, const AreaHandle& handle, AreaPoint from,
                                   AreaPoint to);
[[nodiscard]] AreaShape movedArea(const AreaShape& area, AreaPoint by);
/// Turned by so many degrees from x towards y about centre or, a polygon, the middle of its box.
[[nodiscard]] AreaShape turnedArea(const AreaShape& area, double degrees);

/// The corners of a line around the area, which closes by itself; curves have some hundred.
[[nodiscard]] std::vector<AreaPoint> areaOutline(const AreaShape& area);
/// Where a line comes nearest to a point.
struct OutlinePlace {
  double distance = 0.0;
  std::size_t side = 0;  ///< from corner `side` to the next
  AreaPoint at;
};
/// Of the closed line through `corners`, of which there is one or more.
[[nodiscard]] OutlinePlace nearestPlace(const std::vector<AreaPoint>& corners, AreaPoint point);

}  // namespace lumo
