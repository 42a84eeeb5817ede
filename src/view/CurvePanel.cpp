// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/CurvePanel.h"

#include <algorithm>
#include <cmath>

#include "view/LogTicks.h"
#include "view/PlotParts.h"
#include "view/ScalePrefix.h"

namespace lumo {

/// Ticks with prefix on either scale.
class ScaleTicker : public PrefixTicker {
 public:
  void setScale(AxisScale scale) { scale_ = scale; }

 protected:
  QVector<double> createTickVector(double step, const QCPRange& range) override {
    ticks_ = scale_ == AxisScale::kLogarithmic ? logTicks(range.lower, range.upper) : LogTicks();
    if (ticks_.major.empty()) return PrefixTicker::createTickVector(step, range);
    return {ticks_.major.begin(), ticks_.major.end()};
  }
  QVector<double> createSubTickVector(int count, const QVector<double>& ticks) override {
    if (ticks_.major.empty()) return PrefixTicker::createSubTickVector(count, ticks);
    return {ticks_.minor.begin(), ticks_.minor.end()};
  }

 private:
  AxisScale scale_ = AxisScale::kLinear;
  LogTicks ticks_;
};

/// The legends of the curves, one below the other.
class LegendRows : public QCPLayoutElement {
 public:
  explicit LegendRows(QCustomPlot& plot) : QCPLayoutElement(&plot) {}

  void setFrame(const AMSD2DAxisMulti* frame) { frame_ = frame; }

  /// Takes what the curves need, but no more than a third of the plot.
  void fitInto(int plotHeight) {
    int wanted = 0;
    if (frame_ != nullptr)
      for (const auto& graph : frame_->graphs()) wanted += graph->legendLines();
    lines_ = wanted;
    const double room = plotHeight / 3.0;
    if (wanted > 0) lines_ = std::clamp(static_cast<int>(room / frame_->legendPitch()), 1, wanted);
    isCut_ = lines_ < wanted;
    const int height = wanted > 0 ? static_cast<int>(std::ceil(place(0, lines_).height())) : 0;
    setMinimumSize(0, height);
    setMaximumSize(QWIDGETSIZE_MAX, height);
  }

 protected:
  void applyDefaultAntialiasingHint(QCPPainter* /*painter*/) const override {}
  void draw(QCPPainter* painter) override {
    if (frame_ == nullptr) return;
    painter->save();
    painter->setClipRect(rect());
    int line = 0;
    std::size_t drawn = 0;
    for (const auto& graph : frame_->graphs()) {
      const int height = graph->legendLines();
      if (line + height > lines_ - (isCut_ ? 1 : 0)) break;
      graph->drawLegend(*painter, place(line, height));
      line += height;
      ++drawn;
    }
    if (isCut_) {
      painter->setPen(frame_->colour(AMSD2DAxisMulti::Slot::kAxes));
      painter->drawText(place(line, 1).adjusted(0.0, frame_->legendDrop(), 0.0, 0.0),
                        Qt::AlignHCenter | Qt::AlignTop,
                        QObject::tr("and %1 more").arg(frame_->graphs().size() - drawn));
    }
    painter->restore();
  }

 private:
  /// The rectangle of `count` lines from `line` on.
  [[nodiscard]] QRectF place(int line, int count) const {
    return {static_cast<double>(rect().left()), rect().top() + line * frame_->legendPitch(),
            static_cast<double>(rect().width()), count * frame_->legendPitch() + frame_->legendDrop()};
  }

  const AMSD2DAxisMulti* frame_ = nullptr;
  int lines_ = 0;
  bool isCut_ = false;
};

CurvePanel::CurvePanel(QWidget* parent)
    : QCustomPlot(parent),
      xTicker_(QSharedPointer<ScaleTicker>::create()),
      yTicker_(QSharedPointer<ScaleTicker>::create()),
      legend_(new LegendRows(*this)) {
  setLocale(QLocale::c());
  plotLayout()->insertRow(0);
  plotLayout()->addElement(0, 0, legend_);
  plotLayout()->setRowSpacing(0);
  // Registers itself with the plot, which owns it.
  new DrawingLayer(*this, [this](QCPPainter& painter) {
    if (frame_ == nullptr) return;
    for (const auto& graph : frame_->graphs()) graph->draw({painter, view_});
  });
  axisRect()->setupFullAxesBox();
  for (QCPAxis* axis : {xAxis2, yAxis2}) axis->setTicks(false);
  for (QCPAxis* axis : {xAxis, yAxis}) {
    axis->setTickLength(0, 6);
    axis->setSubTickLength(0, 3);
    axis->setTickLabelFont(pixelFont(font()));
    axis->setLabelFont(pixelFont(font()));
    axis->setNumberFormat("gb");  // powers of ten as such, where a number needs one
  }
  xAxis->setTicker(xTicker_);
  yAxis->setTicker(yTicker_);
  const int em = fontMetrics().height();
  axisRect()->setMinimumMargins(QMargins(em, em / 2, em, em));
  setInteractions(QCP::iNone);
}

void CurvePanel::setFrame(const AMSD2DAxisMulti* frame) {
  frame_ = frame;
  legend_->setFrame(frame);
  showEverything();
}

void CurvePanel::showEverything() {
  if (frame_ != nullptr) view_.setFull(frame_->extent());
  refresh();
}

void CurvePanel::followCurves() {
  if (frame_ != nullptr) view_.growFull(frame_->extent());
  redraw();
}

void CurvePanel::refresh() {
  showColours();
  redraw();
}

void CurvePanel::redraw() {
  replot(rpQueuedReplot);
}

void CurvePanel::showColours() {
  if (frame_ == nullptr) return;
  using Slot = AMSD2DAxisMulti::Slot;
  const QColor lines = frame_->colour(Slot::kAxes);
  setBackground(QBrush(frame_->colour(Slot::kBackground)));
  for (QCPAxis* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
    axis->setBasePen(QPen(lines));
    axis->setTickPen(QPen(lines));
    axis->setSubTickPen(QPen(lines));
    axis->setTickLabelColor(lines);
    axis->setLabelColor(lines);
    axis->grid()->setPen(QPen(frame_->colour(Slot::kGrid)));
    axis->grid()->setZeroLinePen(Qt::NoPen);
  }
}

void CurvePanel::showRanges() {
  if (frame_ == nullptr) return;
  const PlotRect shown = view_.visible();
  showAxis(*xAxis, *xTicker_, frame_->scaleX(), shown.xMin, shown.xMax, frame_->nameOX());
  showAxis(*yAxis, *yTicker_, frame_->scaleY(), shown.yMin, shown.yMax, frame_->nameOY());
}

void CurvePanel::showAxis(QCPAxis& axis, ScaleTicker& ticker, AxisScale scale, double low, double high,
                          const std::string& name) {
  const double min = axisValue(low, scale);
  const double max = axisValue(high, scale);
  const ScalePrefix prefix = scalePrefixFor(std::max(std::abs(min), std::abs(max)));
  ticker.setPrefix(prefix, name);
  ticker.setScale(scale);
  axis.setScaleType(scale == AxisScale::kLogarithmic ? QCPAxis::stLogarithmic : QCPAxis::stLinear);
  axis.setRange(min, max);
  axis.setLabel(QString::fromStdString(axisTitle(name, prefix)));
}

void CurvePanel::updateLayout() {
  legend_->fitInto(height());
  layOutPanel(*this, view_, [this] {
    showRanges();
    QCustomPlot::updateLayout();
  });
}

QRect CurvePanel::panelRect() const {
  return panelOf(*this);
}

void CurvePanel::drawOn(QPaintDevice& device) {
  drawPlotOn(*this, device);
}

void CurvePanel::drawInto(QCPPainter& painter, const QRect& rectangle) {
  drawPlotInto(*this, painter, rectangle);
}

}  // namespace lumo
