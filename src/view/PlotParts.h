// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <qcustomplot.h>

#include <functional>
#include <string>

#include "view/PanelView.h"
#include "view/ScalePrefix.h"

namespace lumo {

// What the panels have in common.

/// Ticks whose numbers are divided by the factor of the axis's scale prefix.
class PrefixTicker : public QCPAxisTicker {
 public:
  /// An axis whose name has no place for the prefix gives the unit of the numbers as they are.
  void setPrefix(const ScalePrefix& prefix, const std::string& axisName);

 protected:
  QString getTickLabel(double tick, const QLocale& locale, QChar format, int precision) override;

 private:
  double factor_ = 1.0;
};

/// Lets a function draw where the plot draws its data, clipped to the panel.
class DrawingLayer : public QCPAbstractPlottable {
 public:
  DrawingLayer(QCustomPlot& plot, std::function<void(QCPPainter&)> drawing);

  double selectTest(const QPointF& pos, bool onlySelectable, QVariant* details) const override;
  QCPRange getKeyRange(bool& foundRange, QCP::SignDomain inSignDomain) const override;
  QCPRange getValueRange(bool& foundRange, QCP::SignDomain inSignDomain,
                         const QCPRange& inKeyRange) const override;

 protected:
  void draw(QCPPainter* painter) override;
  void drawLegendIcon(QCPPainter* /*painter*/, const QRectF& /*rect*/) const override {}

 private:
  std::function<void(QCPPainter&)> drawing_;
};

/// The panel between the axes in logical pixels of the plot.
[[nodiscard]] QRect panelOf(const QCustomPlot& plot);

/// Calls `layOut` until the panel that comes out has the size in `view`, which takes the panel's over in
/// between; after four times it is as good as it gets.
void layOutPanel(const QCustomPlot& plot, PanelView& view, const std::function<void()>& layOut);

/// Draws everything on a device of the plot's logical size.
void drawPlotOn(QCustomPlot& plot, QPaintDevice& device);
/// Draws everything into a rectangle of the pixels that the painter draws in.
void drawPlotInto(QCustomPlot& plot, QCPPainter& painter, const QRect& rectangle);

/// The font with its size in pixels: on paper too, where everything is scaled together, it keeps its
/// proportion to the rest.
[[nodiscard]] QFont pixelFont(QFont font);

}  // namespace lumo
