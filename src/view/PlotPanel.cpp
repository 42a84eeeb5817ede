// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PlotPanel.h"

#include <algorithm>
#include <cmath>

#include "view/ScalePrefix.h"

namespace lumo {

/// Ticks whose numbers are divided by the factor of the axis's scale prefix.
class PrefixTicker : public QCPAxisTicker {
 public:
  void setFactor(double factor) { factor_ = factor; }

 protected:
  QString getTickLabel(double tick, const QLocale& locale, QChar /*format*/, int /*precision*/) override {
    return locale.toString(tick / factor_, 'g', 8);
  }

 private:
  double factor_ = 1.0;
};

namespace {

/// Draws the graphs of the axis where the plot draws its data.
class GraphLayer : public QCPAbstractPlottable {
 public:
  explicit GraphLayer(PlotPanel* panel) : QCPAbstractPlottable(panel->xAxis, panel->yAxis), panel_(panel) {}

  double selectTest(const QPointF& /*pos*/, bool /*onlySelectable*/, QVariant* /*details*/) const override {
    return -1.0;
  }
  QCPRange getKeyRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/) const override {
    foundRange = false;
    return {};
  }
  QCPRange getValueRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/,
                         const QCPRange& /*inKeyRange*/) const override {
    foundRange = false;
    return {};
  }

 protected:
  void draw(QCPPainter* painter) override {
    if (panel_->axis() == nullptr) return;
    painter->save();
    painter->translate(panel_->panelRect().topLeft());
    for (const auto& graph : panel_->axis()->graphs()) graph->draw({*painter, panel_->view()});
    painter->restore();
  }
  void drawLegendIcon(QCPPainter* /*painter*/, const QRectF& /*rect*/) const override {}

 private:
  const PlotPanel* panel_;
};

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
  new GraphLayer(this);  // registers itself with the plot, which owns it

  axisRect()->setBackground(QColor(0xe8, 0xea, 0xed));
  axisRect()->setupFullAxesBox();
  for (QCPAxis* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
    axis->grid()->setVisible(false);
    axis->setSubTicks(false);
  }
  for (QCPAxis* axis : {xAxis2, yAxis2}) axis->setTicks(false);
  for (QCPAxis* axis : {xAxis, yAxis}) {
    axis->setTickLength(0, 5);
    axis->setTickLabelFont(font());
    axis->setLabelFont(font());
  }
  xAxis->setTicker(xTicker_);
  yAxis->setTicker(yTicker_);

  const int em = fontMetrics().height();
  // At the top, half a tick number of the colour scale must fit.
  axisRect()->setMinimumMargins(QMargins(em, em, em / 2, em));
  colourScale_->setBarWidth(em);
  colourScale_->axis()->setTickLabelFont(font());
  colourScale_->axis()->setLabelFont(font());
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
  showColourScale();
  redraw();
}

void PlotPanel::redraw() {
  replot(rpQueuedReplot);
}

void PlotPanel::showRanges() {
  const PlotRect shown = view_.visible();
  // Both axes have the same unit, so they share the prefix.
  const ScalePrefix prefix = scalePrefixFor(
      std::max({std::abs(shown.xMin), std::abs(shown.xMax), std::abs(shown.yMin), std::abs(shown.yMax)}));
  xTicker_->setFactor(prefix.factor);
  yTicker_->setFactor(prefix.factor);
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
  showRanges();
  QCustomPlot::updateLayout();
  constexpr int kMostRounds = 3;
  for (int round = 0; round < kMostRounds; ++round) {
    const QSize size = panelRect().size();
    if (size.width() == view_.panelWidth() && size.height() == view_.panelHeight()) return;
    view_.setPanelSize(size.width(), size.height());
    showRanges();
    QCustomPlot::updateLayout();
  }
}

void PlotPanel::drawOn(QPaintDevice& device) {
  QCPPainter painter;
  painter.setMode(QCPPainter::pmVectorized, device.devType() != QInternal::Image);
  painter.setMode(QCPPainter::pmNoCaching);
  painter.setMode(QCPPainter::pmNonCosmetic);
  if (!painter.begin(&device)) return;
  toPainter(&painter, width(), height());
  painter.end();
}

}  // namespace lumo
