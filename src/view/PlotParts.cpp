// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PlotParts.h"

#include <utility>

namespace lumo {

void PrefixTicker::setPrefix(const ScalePrefix& prefix, const std::string& axisName) {
  factor_ = axisName.find("%s") != std::string::npos ? prefix.factor : 1.0;
}

QString PrefixTicker::getTickLabel(double tick, const QLocale& locale, QChar /*format*/, int /*precision*/) {
  return locale.toString(tick / factor_, 'g', 8);
}

DrawingLayer::DrawingLayer(QCustomPlot& plot, std::function<void(QCPPainter&)> drawing)
    : QCPAbstractPlottable(plot.xAxis, plot.yAxis), drawing_(std::move(drawing)) {}

double DrawingLayer::selectTest(const QPointF& /*pos*/, bool /*onlySelectable*/,
                                QVariant* /*details*/) const {
  return -1.0;
}

QCPRange DrawingLayer::getKeyRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/) const {
  foundRange = false;
  return {};
}

QCPRange DrawingLayer::getValueRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/,
                                     const QCPRange& /*inKeyRange*/) const {
  foundRange = false;
  return {};
}

void DrawingLayer::draw(QCPPainter* painter) {
  painter->save();
  painter->translate(panelOf(*parentPlot()).topLeft());
  drawing_(*painter);
  painter->restore();
}

QRect panelOf(const QCustomPlot& plot) {
  // QCustomPlot counts values upwards from the lowest row of pixels, not from its lower edge.
  return plot.axisRect()->rect().translated(0, -1);
}

void layOutPanel(const QCustomPlot& plot, PanelView& view, const std::function<void()>& layOut) {
  constexpr int kMostRounds = 3;
  layOut();
  for (int round = 0; round < kMostRounds; ++round) {
    const QSize size = panelOf(plot).size();
    if (size.width() == view.panelWidth() && size.height() == view.panelHeight()) return;
    view.setPanelSize(size.width(), size.height());
    layOut();
  }
}

void drawPlotOn(QCustomPlot& plot, QPaintDevice& device) {
  QCPPainter painter;
  painter.setMode(QCPPainter::pmVectorized, device.devType() != QInternal::Image);
  painter.setMode(QCPPainter::pmNoCaching);
  painter.setMode(QCPPainter::pmNonCosmetic);
  if (!painter.begin(&device)) return;
  plot.toPainter(&painter, plot.width(), plot.height());
  painter.end();
}

void drawPlotInto(QCustomPlot& plot, QCPPainter& painter, const QRect& rectangle) {
  painter.save();
  painter.translate(rectangle.topLeft());
  painter.scale(static_cast<double>(rectangle.width()) / plot.width(),
                static_cast<double>(rectangle.height()) / plot.height());
  plot.toPainter(&painter, plot.width(), plot.height());
  painter.restore();
}

QFont pixelFont(QFont font) {
  font.setPixelSize(QFontInfo(font).pixelSize());
  return font;
}

}  // namespace lumo
