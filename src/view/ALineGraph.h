// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "view/AMSD2DAxisMulti.h"
#include "view/CurveGraph.h"

namespace lumo {

/// A line through many points, without marks, and a line of legend in its colour. What is not finite, or has
/// no place on a logarithmic axis, breaks the line.
class ALineGraph final : public CurveGraph {
 public:
  /// `frame` outlives this graph. `number`, from 1, is the curve's place in the frame, which its colour
  /// follows. `name` begins what the read-out says.
  ALineGraph(const AMSD2DAxisMulti& frame, int number, std::string name)
      : frame_(frame), number_(number), name_(std::move(name)) {}

  /// Points in the order of growing x; both of one length.
  void setData(std::vector<double> x, std::vector<double> y);
  void setLegend(const QString& legend) { legend_ = legend; }
  [[nodiscard]] const QString& legend() const { return legend_; }
  [[nodiscard]] const std::vector<double>& x() const { return x_; }
  [[nodiscard]] const std::vector<double>& y() const { return y_; }

  /// By the points that are drawn.
  void getRange(TMinMax& range) const override;
  void draw(const GraphPainter& target) const override;
  [[nodiscard]] int legendLines() const override { return 1; }
  void drawLegend(QPainter& painter, const QRectF& place) const override;
  /// The point nearest to the cursor's column, where the line passes close to the cursor there.
  [[nodiscard]] std::string readOutAt(const PlotPoint& pixel, const PanelView& view) const override;

 private:
  [[nodiscard]] bool hasPlace(std::size_t i) const;

  const AMSD2DAxisMulti& frame_;
  int number_;
  std::string name_;
  QString legend_;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace lumo
