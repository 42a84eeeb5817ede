// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <vector>

namespace lumo {

/// The parts of the line through `points` that lie in `area`, one polygon for each unbroken part. A point
/// that is not finite breaks the line. Far outside the panel of a deep zoom, painters run out of digits; what
/// comes from here does not reach there.
[[nodiscard]] std::vector<QPolygonF> clippedLine(const std::vector<QPointF>& points, const QRectF& area);

}  // namespace lumo
