// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ClippedLine.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace lumo {
namespace {

bool isFinite(const QPointF& point) {
  return std::isfinite(point.x()) && std::isfinite(point.y());
}

/// The part [from, to] of 0..1 of a way from `start` by `step` that lies within [low, high].
struct Part {
  double from = 0.0;
  double to = 1.0;

  void keepWithin(double start, double step, double low, double high) {
    if (step == 0.0) {
      if (start < low || start > high) to = -1.0;
      return;
    }
    const auto [first, last] = std::minmax({(low - start) / step, (high - start) / step});
    from = std::max(from, first);
    to = std::min(to, last);
  }
};

/// Liang & Barsky (1984): a line's parameters at the edges, axis by axis.
std::optional<std::pair<QPointF, QPointF>> clipped(const QPointF& a, const QPointF& b, const QRectF& area) {
  if (!isFinite(a) || !isFinite(b)) return std::nullopt;
  const QPointF step = b - a;
  Part part;
  part.keepWithin(a.x(), step.x(), area.left(), area.right());
  part.keepWithin(a.y(), step.y(), area.top(), area.bottom());
  if (!(part.from <= part.to)) return std::nullopt;
  // Exact ends where nothing is cut off, so that neighbouring segments join.
  return std::pair(part.from > 0.0 ? a + part.from * step : a, part.to < 1.0 ? a + part.to * step : b);
}

}  // namespace

std::vector<QPolygonF> clippedLine(const std::vector<QPointF>& points, const QRectF& area) {
  std::vector<QPolygonF> parts;
  bool isBroken = true;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const auto segment = clipped(points[i - 1], points[i], area);
    if (!segment) {
      isBroken = true;
      continue;
    }
    if (isBroken || parts.back().last() != segment->first) parts.push_back(QPolygonF{segment->first});
    parts.back() << segment->second;
    isBroken = false;
  }
  return parts;
}

}  // namespace lumo
