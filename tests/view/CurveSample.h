// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <algorithm>
#include <string>
#include <utility>

#include "view/AMSD2DAxisMulti.h"

namespace lumo::test {

/// A curve of a given extent that fills its panel with red and its legend with blue.
class CurveSample : public CurveGraph {
 public:
  explicit CurveSample(const PlotRect& extent, std::string readOut = {}, int legendLines = 1)
      : extent_(extent), readOut_(std::move(readOut)), legendLines_(legendLines) {}

  void getRange(TMinMax& range) const override {
    range.xMin = std::min(range.xMin, extent_.xMin);
    range.xMax = std::max(range.xMax, extent_.xMax);
    range.yMin = std::min(range.yMin, extent_.yMin);
    range.yMax = std::max(range.yMax, extent_.yMax);
  }
  void draw(const GraphPainter& target) const override {
    target.painter.fillRect(QRectF(0.0, 0.0, target.view.panelWidth(), target.view.panelHeight()), Qt::red);
  }
  [[nodiscard]] int legendLines() const override { return legendLines_; }
  void drawLegend(QPainter& painter, const QRectF& place) const override {
    painter.fillRect(place, Qt::blue);
  }
  [[nodiscard]] std::string readOutAt(const PlotPoint& /*pixel*/, const PanelView& /*view*/) const override {
    return readOut_;
  }

 private:
  PlotRect extent_;
  std::string readOut_;
  int legendLines_;
};

}  // namespace lumo::test
