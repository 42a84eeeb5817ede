// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <string>

#include "core/TMinMax.h"
#include "view/AGraph.h"

namespace lumo {

/// A curve in an AMSD2DAxisMulti, with lines of text of its own above the plot. draw() gets a view in the
/// coordinates of the frame (axisCoordinate()).
class CurveGraph : public AGraph {
 public:
  /// Extends x and y of the frame's range, in the axes' values, so that this curve has room. What has no
  /// place on an axis does not count; where there is nothing to show the range stays as it is.
  virtual void getRange(TMinMax& range) const = 0;
  /// What getRange() makes of an unset range.
  [[nodiscard]] PlotRect extent() const final {
    TMinMax range;
    getRange(range);
    return {range.xMin, range.xMax, range.yMin, range.yMax};
  }
  /// How many lines of legend this curve has.
  [[nodiscard]] virtual int legendLines() const = 0;
  /// Draws the legend into `place`, logical pixels of the painter, beginning half a font height below its
  /// top; it has room for legendLines() lines.
  virtual void drawLegend(QPainter& painter, const QRectF& place) const = 0;
  /// A line about what this curve has at `pixel` of the view, empty for nothing.
  [[nodiscard]] virtual std::string readOutAt(const PlotPoint& pixel, const PanelView& view) const = 0;
};

}  // namespace lumo
