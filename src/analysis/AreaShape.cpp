// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/AreaShape.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "analysis/AreaHandles.h"
#include "core/Units.h"
#include "io/MapForm.h"

namespace lumo {

namespace {

// Whole quarter turns are exact, so that an upright rectangle keeps the pixels on its outline.
AreaPoint direction(double degrees) {
  const double quarters = degrees / 90.0;
  if (quarters == std::floor(quarters) && std::abs(quarters) < 1e9) {
    static constexpr AreaPoint kQuarters[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    return kQuarters[static_cast<std::size_t>(((static_cast<long long>(quarters) % 4) + 4) % 4)];
  }
  return {std::cos(degrees * kRadianPerDegree), std::sin(degrees * kRadianPerDegree)};
}

bool onEdge(AreaPoint a, AreaPoint b, AreaPoint p) {
  const double cross = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
  return cross == 0.0 && p.x >= std::min(a.x, b.x) && p.x <= std::max(a.x, b.x) &&
         p.y >= std::min(a.y, b.y) && p.y <= std::max(a.y, b.y);
}

bool insidePolygon(const std::vector<AreaPoint>& vertices, AreaPoint p) {
  bool inside = false;
  for (std::size_t i = 0, last = vertices.size() - 1; i < vertices.size(); last = i++) {
    const AreaPoint& a = vertices[i];
    const AreaPoint& b = vertices[last];
    if (onEdge(a, b, p)) return true;
    const bool crosses = (a.y > p.y) != (b.y > p.y);
    if (crosses && p.x < a.x + (b.x - a.x) * ((p.y - a.y) / (b.y - a.y))) inside = !inside;
  }
  return inside;
}

TMinMax around(AreaPoint centre, double reachX, double reachY) {
  TMinMax box;
  box.xMin = centre.x - reachX;
  box.xMax = centre.x + reachX;
  box.yMin = centre.y - reachY;
  box.yMax = centre.y + reachY;
  return box;
}

}  // namespace

AreaShape AreaShape::circle(AreaPoint centre, double radius) {
  AreaShape area;
  area.centre = centre;
  area.sizeX = area.sizeY = radius;
  return area;
}

AreaShape AreaShape::ellipse(AreaPoint centre, double semiX, double semiY, double rotation) {
  AreaShape area;
  area.kind = AreaKind::kEllipse;
  area.centre = centre;
  area.sizeX = semiX;
  area.sizeY = semiY;
  area.rotation = rotation;
  return area;
}

AreaShape AreaShape::rectangle(AreaPoint centre, double width, double height, double rotation) {
  AreaShape area = ellipse(centre, width, height, rotation);
  area.kind = AreaKind::kRectangle;
  return area;
}

AreaShape AreaShape::polygon(std::vector<AreaPoint> vertices) {
  AreaShape area;
  area.kind = AreaKind::kPolygon;
  area.vertices = std::move(vertices);
  return area;
}

AreaPoint AreaShape::ownCoordinates(AreaPoint place) const {
  const AreaPoint axis = direction(rotation);
  const double x = place.x - centre.x;
  const double y = place.y - centre.y;
  return {x * axis.x + y * axis.y, y * axis.x - x * axis.y};
}

AreaPoint AreaShape::mapCoordinates(AreaPoint own) const {
  const AreaPoint axis = direction(rotation);
  return {centre.x + own.x * axis.x - own.y * axis.y, centre.y + own.x * axis.y + own.y * axis.x};
}

bool AreaShape::contains(AreaPoint point, double margin) const {
  if (kind == AreaKind::kPolygon)
    return vertices.size() > 2 &&
           (insidePolygon(vertices, point) || nearestPlace(vertices, point).distance <= margin);
  if (kind == AreaKind::kCircle) {
    const double x = point.x - centre.x;
    const double y = point.y - centre.y;
    const double reach = std::abs(sizeX) + margin;
    return x * x + y * y <= reach * reach;
  }
  const AreaPoint own = ownCoordinates(point);
  if (kind == AreaKind::kRectangle)
    return std::abs(own.x) <= sizeX / 2.0 + margin && std::abs(own.y) <= sizeY / 2.0 + margin;
  const double x = own.x / (std::abs(sizeX) + margin);
  const double y = own.y / (std::abs(sizeY) + margin);
  return x * x + y * y <= 1.0;
}

TMinMax AreaShape::bounds() const {
  switch (kind) {
    case AreaKind::kCircle:
      return around(centre, std::abs(sizeX), std::abs(sizeX));
    case AreaKind::kEllipse:
    case AreaKind::kRectangle: {
      // The circle about the corners: an outline found exactly could lose a pixel to rounding.
      const double reach = std::abs(sizeX) + std::abs(sizeY);
      return around(centre, reach, reach);
    }
    case AreaKind::kPolygon:
      break;
  }
  TMinMax box;
  for (const AreaPoint& vertex : vertices) {
    box.xMin = std::min(box.xMin, vertex.x);
    box.xMax = std::max(box.xMax, vertex.x);
    box.yMin = std::min(box.yMin, vertex.y);
    box.yMax = std::max(box.yMax, vertex.y);
  }
  return box;
}

void forEachPixel(const AreaShape& area, std::uint32_t rows, std::uint32_t columns, const TMinMax& range,
                  const std::function<void(std::uint32_t, std::uint32_t)>& take) {
  const PixelAxis xAxis = pixelAxis(range.xMin, range.xMax, columns);
  const PixelAxis yAxis = pixelAxis(range.yMin, range.yMax, rows);
  // An outline through centres of pixels holds them wherever it lies, whatever their places in arcseconds
  // were rounded to.
  constexpr double kPixels = 1e-6;
  const double margin = kPixels * std::min(std::abs(xAxis.step), std::abs(yAxis.step));
  const TMinMax box = area.bounds();
  for (std::uint32_t row = 0; row < rows; ++row) {
    const double y = (row + 1.0 - yAxis.reference) * yAxis.step;
    if (!(y >= box.yMin - margin && y <= box.yMax + margin)) continue;
    for (std::uint32_t column = 0; column < columns; ++column) {
      const double x = (column + 1.0 - xAxis.reference) * xAxis.step;
      if (x >= box.xMin - margin && x <= box.xMax + margin && area.contains({x, y}, margin))
        take(row, column);
    }
  }
}

void fillMask(const AreaShape& area, ABitMatrix& mask, const TMinMax& range) {
  forEachPixel(area, mask.rows(), mask.columns(), range,
               [&mask](std::uint32_t row, std::uint32_t column) { mask.set(row, column, 1); });
}

}  // namespace lumo
