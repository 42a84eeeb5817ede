// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/AreaHandles.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/Units.h"

namespace lumo {

namespace {

constexpr int kCurvePoints = 120;

// Half the box along the own axes.
AreaPoint halfBox(const AreaShape& area) {
  const double share = area.kind == AreaKind::kRectangle ? 0.5 : 1.0;
  return {share * area.sizeX, share * area.sizeY};
}

AreaPoint middleOf(const AreaShape& area) {
  if (area.kind != AreaKind::kPolygon) return area.centre;
  const TMinMax box = area.bounds();
  return {(box.xMin + box.xMax) / 2.0, (box.yMin + box.yMax) / 2.0};
}

void addBoxHandles(const AreaShape& area, double reach, std::vector<AreaHandle>& handles) {
  const AreaPoint half = halfBox(area);
  for (int y = -1; y <= 1; ++y)
    for (int x = -1; x <= 1; ++x)
      if (x != 0 || y != 0)
        handles.push_back({HandleKind::kBox, area.mapCoordinates({x * half.x, y * half.y}), x, y, 0});
  handles.push_back({HandleKind::kRotate, area.mapCoordinates({0.0, half.y + reach}), 0, 0, 0});
}

void addPolygonHandles(const AreaShape& area, double reach, std::vector<AreaHandle>& handles) {
  const std::vector<AreaPoint>& corners = area.vertices;
  for (std::size_t i = 0; i < corners.size(); ++i)
    handles.push_back({HandleKind::kVertex, corners[i], 0, 0, i});
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const AreaPoint& next = corners[(i + 1) % corners.size()];
    const AreaPoint middle{(corners[i].x + next.x) / 2.0, (corners[i].y + next.y) / 2.0};
    handles.push_back({HandleKind::kInsert, middle, 0, 0, i + 1});
  }
  handles.push_back({HandleKind::kRotate, {middleOf(area).x, area.bounds().yMax + reach}, 0, 0, 0});
}

AreaShape pulledBox(const AreaShape& area, const AreaHandle& handle, AreaPoint to) {
  const AreaPoint half = halfBox(area);
  const AreaPoint own = area.ownCoordinates(to);
  AreaPoint middle;
  AreaShape result = area;
  const auto pull = [](int side, double halfSize, double pulledTo, double& size, double& centre) {
    const double fixed = -side * halfSize;
    const double length = std::abs(pulledTo - fixed);
    if (side == 0 || !(length > 0.0) || !(halfSize > 0.0)) return;
    size *= length / (2.0 * halfSize);
    centre = (pulledTo + fixed) / 2.0;
  };
  pull(handle.x, half.x, own.x, result.sizeX, middle.x);
  pull(handle.y, half.y, own.y, result.sizeY, middle.y);
  result.centre = area.mapCoordinates(middle);
  return result;
}

double angleFrom(AreaPoint centre, AreaPoint point) {
  return std::atan2(point.y - centre.y, point.x - centre.x) * kDegreePerRadian;
}

}  // namespace

std::vector<AreaHandle> areaHandles(const AreaShape& area, double reach) {
  std::vector<AreaHandle> handles;
  switch (area.kind) {
    case AreaKind::kCircle:
      for (const auto& [x, y] : {AreaPoint{1, 0}, {0, 1}, {-1, 0}, {0, -1}})
        handles.push_back({HandleKind::kRadius,
                           {area.centre.x + x * area.sizeX, area.centre.y + y * area.sizeX},
                           static_cast<int>(x),
                           static_cast<int>(y),
                           0});
      break;
    case AreaKind::kEllipse:
    case AreaKind::kRectangle:
      addBoxHandles(area, reach, handles);
      break;
    case AreaKind::kPolygon:
      addPolygonHandles(area, reach, handles);
      break;
  }
  return handles;
}

AreaShape pulledArea(const AreaShape& area, const AreaHandle& handle, AreaPoint from, AreaPoint to) {
  if (handle.kind == HandleKind::kRotate)
    return turnedArea(area, angleFrom(middleOf(area), to) - angleFrom(middleOf(area), from));
  // The handle keeps its distance from the pointer, which seldom takes it in its very middle.
  const AreaPoint place{handle.at.x + (to.x - from.x), handle.at.y + (to.y - from.y)};
  AreaShape result = area;
  switch (handle.kind) {
    case HandleKind::kBox:
      return pulledBox(area, handle, place);
    case HandleKind::kRadius: {
      const double radius = std::hypot(place.x - area.centre.x, place.y - area.centre.y);
      if (radius > 0.0) result.sizeX = result.sizeY = radius;
      break;
    }
    case HandleKind::kInsert:
      result.vertices.insert(result.vertices.begin() + static_cast<std::ptrdiff_t>(handle.vertex), place);
      break;
    case HandleKind::kVertex:
      result.vertices[handle.vertex] = place;
      break;
    case HandleKind::kRotate:
      break;
  }
  return result;
}

AreaShape movedArea(const AreaShape& area, AreaPoint by) {
  AreaShape result = area;
  if (area.kind != AreaKind::kPolygon) result.centre = {area.centre.x + by.x, area.centre.y + by.y};
  for (AreaPoint& vertex : result.vertices) vertex = {vertex.x + by.x, vertex.y + by.y};
  return result;
}

AreaShape turnedArea(const AreaShape& area, double degrees) {
  AreaShape result = area;
  if (area.kind == AreaKind::kCircle) return result;
  if (area.kind != AreaKind::kPolygon) {
    result.rotation = std::remainder(area.rotation + degrees, 360.0);
    return result;
  }
  AreaShape turn;
  turn.centre = middleOf(area);
  turn.rotation = degrees;
  for (AreaPoint& vertex : result.vertices)
    vertex = turn.mapCoordinates({vertex.x - turn.centre.x, vertex.y - turn.centre.y});
  return result;
}

std::vector<AreaPoint> areaOutline(const AreaShape& area) {
  if (area.kind == AreaKind::kPolygon) return area.vertices;
  std::vector<AreaPoint> corners;
  const AreaPoint half = halfBox(area);
  if (area.kind == AreaKind::kRectangle) {
    for (const auto& [x, y] : {AreaPoint{-1, -1}, {1, -1}, {1, 1}, {-1, 1}})
      corners.push_back(area.mapCoordinates({x * half.x, y * half.y}));
    return corners;
  }
  const double semiY = area.kind == AreaKind::kCircle ? half.x : half.y;
  for (int i = 0; i < kCurvePoints; ++i) {
    const double angle = kTwoPi * i / kCurvePoints;
    corners.push_back(area.mapCoordinates({half.x * std::cos(angle), semiY * std::sin(angle)}));
  }
  return corners;
}

OutlinePlace nearestPlace(const std::vector<AreaPoint>& corners, AreaPoint point) {
  OutlinePlace nearest;
  nearest.distance = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const AreaPoint& a = corners[i];
    const AreaPoint& b = corners[(i + 1) % corners.size()];
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double along =
        square > 0.0 ? std::clamp(((point.x - a.x) * dx + (point.y - a.y) * dy) / square, 0.0, 1.0) : 0.0;
    const AreaPoint at{a.x + along * dx, a.y + along * dy};
    const double distance = std::hypot(point.x - at.x, point.y - at.y);
    if (distance < nearest.distance) nearest = {distance, i, at};
  }
  return nearest;
}

}  // namespace lumo
