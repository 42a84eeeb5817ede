// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ALineGraph.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "view/ClippedLine.h"
#include "view/LegendLine.h"

namespace lumo {

namespace {

constexpr double kLineWidth = 0.125;  // of the frame's font height
constexpr double kReach = 1.5;        // of the read-out, the same

}  // namespace

void ALineGraph::setData(std::vector<double> x, std::vector<double> y) {
  x_ = std::move(x);
  y_ = std::move(y);
}

bool ALineGraph::hasPlace(std::size_t i) const {
  return std::isfinite(axisCoordinate(x_[i], frame_.scaleX())) &&
         std::isfinite(axisCoordinate(y_[i], frame_.scaleY()));
}

void ALineGraph::getRange(TMinMax& range) const {
  for (std::size_t i = 0; i < x_.size(); ++i) {
    if (!hasPlace(i)) continue;
    range.xMin = std::min(range.xMin, x_[i]);
    range.xMax = std::max(range.xMax, x_[i]);
    range.yMin = std::min(range.yMin, y_[i]);
    range.yMax = std::max(range.yMax, y_[i]);
  }
}

void ALineGraph::draw(const GraphPainter& target) const {
  const double width = std::max(1.0, kLineWidth * frame_.fontHeight());
  std::vector<QPointF> points;
  points.reserve(x_.size());
  for (std::size_t i = 0; i < x_.size(); ++i)
    points.emplace_back(frame_.RPXtoGPX(x_[i], target.view), frame_.RPYtoGPY(y_[i], target.view));
  const QRectF panel(0.0, 0.0, target.view.panelWidth(), target.view.panelHeight());
  target.painter.save();
  target.painter.setRenderHint(QPainter::Antialiasing);
  target.painter.setPen(QPen(frame_.curveColour(number_), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  // A line of one point is a dot.
  if (points.size() == 1) points.push_back(points.front() + QPointF(width, 0.0));
  for (const QPolygonF& part : clippedLine(points, panel.adjusted(-width, -width, width, width)))
    target.painter.drawPolyline(part);
  target.painter.restore();
}

void ALineGraph::drawLegend(QPainter& painter, const QRectF& place) const {
  drawLegendLine(painter, place.adjusted(0.0, frame_.legendDrop(), 0.0, 0.0), frame_.fontHeight(),
                 frame_.curveColour(number_), legend_);
}

std::string ALineGraph::readOutAt(const PlotPoint& pixel, const PanelView& view) const {
  if (x_.empty()) return {};
  const double wanted = axisValue(view.toPlot(pixel).x, frame_.scaleX());
  auto nearest = static_cast<std::size_t>(std::lower_bound(x_.begin(), x_.end(), wanted) - x_.begin());
  if (nearest == x_.size() || (nearest > 0 && wanted - x_[nearest - 1] < x_[nearest] - wanted)) --nearest;
  if (!hasPlace(nearest)) return {};
  const double away =
      std::hypot(frame_.RPXtoGPX(x_[nearest], view) - pixel.x, frame_.RPYtoGPY(y_[nearest], view) - pixel.y);
  if (!(away <= kReach * frame_.fontHeight())) return {};
  return name_ + ":   " + namedValue(frame_.nameOX(), x_[nearest]) + "   " +
         namedValue(frame_.nameOY(), y_[nearest]);
}

}  // namespace lumo
