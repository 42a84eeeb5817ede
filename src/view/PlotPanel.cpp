// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PlotPanel.h"

#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <utility>

#include "view/PlotParts.h"
#include "view/ScalePrefix.h"

namespace lumo {

namespace {

QCPColorGradient gradientOf(const ColourTable& table) {
  constexpr int kStops = 256;
  QMap<double, QColor> stops;
  for (int i = 0; i <= kStops; ++i) {
    const double t = static_cast<double>(i) / kStops;
    stops.insert(t, QColor::fromRgb(table.colour(t)));
  }
  QCPColorGradient gradient;
  gradient.setColorStops(stops);
  return gradient;
}

QString titleText(const std::string& pattern, const ScalePrefix& prefix) {
  return QString::fromStdString(axisTitle(pattern, prefix));
}

}  // namespace

PlotPanel::PlotPanel(QWidget* parent)
    : QCustomPlot(parent),
      xTicker_(QSharedPointer<PrefixTicker>::create()),
      yTicker_(QSharedPointer<PrefixTicker>::create()),
      colourScale_(new QCPColorScale(this)) {
  setLocale(QLocale::c());
  view_.setSquare(true);
  // Registers itself with the plot, which owns it.
  new DrawingLayer(*this, [this](QCPPainter& painter) {
    // A graph may turn the event loop, and the screen may be drawn in there.
    const bool keeps = std::exchange(keepsNext_, false);
    if (axis_ == nullptr) return;
    for (const auto& graph : axis_->graphs()) {
      if (keeps)
        graph->drawToKeep({painter, view_});
      else
        graph->draw({painter, view_});
    }
  });

  axisRect()->setBackground(QColor(0xe8, 0xea, 0xed));
  axisRect()->setupFullAxesBox();
  for (QCPAxis* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
    axis->grid()->setVisible(false);
    axis->setSubTicks(false);
  }
  for (QCPAxis* axis : {xAxis2, yAxis2}) axis->setTicks(false);
  for (QCPAxis* axis : {xAxis, yAxis}) {
    axis->setTickLength(0, 5);
    axis->setTickLabelFont(pixelFont(font()));
    axis->setLabelFont(pixelFont(font()));
  }
  xAxis->setTicker(xTicker_);
  yAxis->setTicker(yTicker_);

  const int em = fontMetrics().height();
  // At the top, half a tick number of the colour scale must fit.
  axisRect()->setMinimumMargins(QMargins(em, em, em / 2, em));
  colourScale_->setBarWidth(em);
  colourScale_->axis()->setTickLabelFont(pixelFont(font()));
  colourScale_->axis()->setLabelFont(pixelFont(font()));
  colourScale_->axis()->setSubTicks(false);
  colourScale_->setRangeDrag(false);
  colourScale_->setRangeZoom(false);
  auto* sides = new QCPMarginGroup(this);
  axisRect()->setMarginGroup(QCP::msTop | QCP::msBottom, sides);
  colourScale_->setMarginGroup(QCP::msTop | QCP::msBottom, sides);
  plotLayout()->addElement(0, 1, colourScale_);
  setInteractions(QCP::iNone);
}

void PlotPanel::setAxis(const A2_3DAxis* axis) {
  axis_ = axis;
  if (axis_ != nullptr) {
    view_.setDirections(axis_->xDirection(), axis_->yDirection());
    view_.setFull(axis_->extent());
  }
  refresh();
}

void PlotPanel::refresh() {
  if (putOff()) return;
  showColourScale();
  redraw();
}

void PlotPanel::redraw() {
  if (putOff()) return;
  replot(rpQueuedReplot);
}

void PlotPanel::showRanges() {
  const PlotRect shown = view_.visible();
  // Both axes have the same unit, so they share the prefix.
  const ScalePrefix prefix = scalePrefixFor(
      std::max({std::abs(shown.xMin), std::abs(shown.xMax), std::abs(shown.yMin), std::abs(shown.yMax)}));
  if (axis_ != nullptr) {
    xTicker_->setPrefix(prefix, axis_->nameOX());
    yTicker_->setPrefix(prefix, axis_->nameOY());
  }
  xAxis->setRange(shown.xMin, shown.xMax);
  yAxis->setRange(shown.yMin, shown.yMax);
  xAxis->setRangeReversed(view_.xDirection() < 0);
  yAxis->setRangeReversed(view_.yDirection() < 0);
  xAxis->setLabel(axis_ != nullptr ? titleText(axis_->nameOX(), prefix) : QString());
  yAxis->setLabel(axis_ != nullptr ? titleText(axis_->nameOY(), prefix) : QString());
}

void PlotPanel::showColourScale() {
  const AColorsGraph* colours = axis_ != nullptr ? axis_->colours() : nullptr;
  colourScale_->setVisible(colours != nullptr);
  if (colours == nullptr) return;
  const auto& limits = colours->scaling().limits();
  const ScalePrefix prefix = scalePrefixFor(std::max(std::abs(limits.low), std::abs(limits.high)));
  const auto ticker = QSharedPointer<QCPAxisTickerText>::create();
  for (const ScaleTick& tick : colourScaleTicks(colours->scaling(), prefix)) {
    ticker->addTick(tick.position, QString::fromStdString(tick.label));
  }
  colourScale_->axis()->setTicker(ticker);
  colourScale_->setDataRange(QCPRange(0.0, 1.0));
  colourScale_->setGradient(gradientOf(colours->table()));
  colourScale_->setLabel(titleText(axis_->nameOZ(), prefix));
}

void PlotPanel::updateLayout() {
  layOutPanel(*this, view_, [this] {
    showRanges();
    QCustomPlot::updateLayout();
  });
}

QRect PlotPanel::panelRect() const {
  return panelOf(*this);
}

void PlotPanel::drawOn(QPaintDevice& device) {
  keep([&] { drawPlotOn(*this, device); });
}

void PlotPanel::drawInto(QCPPainter& painter, const QRect& rectangle) {
  keep([&] { drawPlotInto(*this, painter, rectangle); });
}

bool PlotPanel::putOff() {
  if (isKeeping_) isPutOff_ = true;
  return isKeeping_;
}

template <typename Drawing>
void PlotPanel::keep(Drawing drawing) {
  {
    const auto end = qScopeGuard([this, wasKeeping = isKeeping_] {
      isKeeping_ = wasKeeping;
      keepsNext_ = false;
    });
    isKeeping_ = keepsNext_ = true;
    drawing();
  }
  if (std::exchange(isPutOff_, false)) refresh();
}

}  // namespace lumo
