// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPen>
#include <QString>
#include <string>
#include <vector>

#include "analysis/SpectrumCurve.h"
#include "analysis/SpectrumFit.h"
#include "core/TMinMax.h"
#include "view/AMSD2DAxisMulti.h"
#include "view/CurveGraph.h"

namespace lumo {

/// One spectrum in a frame: points with error bars, the smooth line through them, and the line of text that
/// says what they mean. With h the frame's font height, the line has a width of h/4, the circles a radius of
/// h/4 and the bars end in ticks of half-width h/4.
class AFQSGraph final : public CurveGraph {
 public:
  /// `frame` outlives this graph. `number`, from 1, is the curve's place in the frame, which its colour
  /// follows.
  AFQSGraph(const AMSD2DAxisMulti& frame, int number) : frame_(frame), number_(number) {}

  void setData(SpectrumCurve curve);
  /// Draws a fit as a thin broken line, and names it in a second line of legend that begins with `name`.
  void setFit(SpectrumFit fit, const QString& name);
  /// Draws no fit.
  void clearFit();
  [[nodiscard]] const SpectrumCurve& curve() const { return curve_; }
  /// The lines of legend.
  [[nodiscard]] std::vector<QString> legend() const;

  void getRange(TMinMax& range) const override;
  void draw(const GraphPainter& target) const override;
  [[nodiscard]] int legendLines() const override { return fitName_.isEmpty() ? 1 : 2; }
  void drawLegend(QPainter& painter, const QRectF& place) const override;
  [[nodiscard]] std::string readOutAt(const PlotPoint& pixel, const PanelView& view) const override;

 private:
  [[nodiscard]] QPointF place(double freq, double flux, const PanelView& view) const;
  void drawLine(const GraphPainter& target, const std::vector<SpectrumSample>& samples,
                const QPen& pen) const;
  void drawPoint(const GraphPainter& target, std::size_t i) const;
  void drawErrorBar(const GraphPainter& target, std::size_t i) const;

  const AMSD2DAxisMulti& frame_;
  int number_;
  SpectrumCurve curve_;
  std::vector<SpectrumSample> samples_;
  SpectrumFit fit_;
  std::vector<SpectrumSample> fitSamples_;
  QString fitName_;
};

}  // namespace lumo
