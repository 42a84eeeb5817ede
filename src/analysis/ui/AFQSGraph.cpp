// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AFQSGraph.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "core/TextForm.h"
#include "view/ClippedLine.h"
#include "view/LegendLine.h"

namespace lumo {

namespace {

constexpr double kMark = 0.25;  // of the frame's font height

QRectF panelOf(const PanelView& view, double margin) {
  return QRectF(0.0, 0.0, view.panelWidth(), view.panelHeight()).adjusted(-margin, -margin, margin, margin);
}

int scaleMode(AxisScale scale) {
  return static_cast<int>(scale);
}

}  // namespace

void AFQSGraph::setData(SpectrumCurve curve) {
  curve_ = std::move(curve);
  samples_ = curve_.samples();
  clearFit();
}

void AFQSGraph::setFit(SpectrumFit fit, const QString& name) {
  fit_ = std::move(fit);
  fitName_ = name;
  fitSamples_ = fit_.samples(curve_);
}

void AFQSGraph::clearFit() {
  setFit({}, {});
}

std::vector<QString> AFQSGraph::legend() const {
  std::vector<QString> lines{QString::fromStdString(curve_.legend())};
  if (!fitName_.isEmpty()) lines.push_back(fitName_ + ": " + QString::fromStdString(fit_.text()));
  return lines;
}

void AFQSGraph::getRange(TMinMax& range) const {
  curve_.getRange(range, scaleMode(frame_.scaleX()), scaleMode(frame_.scaleY()));
}

QPointF AFQSGraph::place(double freq, double flux, const PanelView& view) const {
  return {frame_.RPXtoGPX(freq, view), frame_.RPYtoGPY(flux, view)};
}

void AFQSGraph::draw(const GraphPainter& target) const {
  const double h = frame_.fontHeight();
  const QColor colour = frame_.curveColour(number_);
  target.painter.save();
  target.painter.setRenderHint(QPainter::Antialiasing);
  drawLine(target, samples_, QPen(colour, h * kMark, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  drawLine(target, fitSamples_,
           QPen(frame_.overlayColour(number_), h * kMark / 2.0, Qt::DashLine, Qt::FlatCap));
  for (std::size_t i = 0; i < curve_.count(); ++i) drawPoint(target, i);
  target.painter.restore();
}

void AFQSGraph::drawLine(const GraphPainter& target, const std::vector<SpectrumSample>& samples,
                         const QPen& pen) const {
  std::vector<QPointF> points;
  points.reserve(samples.size());
  for (const SpectrumSample& sample : samples) points.push_back(place(sample.freq, sample.flux, target.view));
  target.painter.setPen(pen);
  for (const QPolygonF& part : clippedLine(points, panelOf(target.view, 2.0 * pen.widthF())))
    target.painter.drawPolyline(part);
}

void AFQSGraph::drawPoint(const GraphPainter& target, std::size_t i) const {
  if (curve_.hasErrorBar(i)) drawErrorBar(target, i);
  const double radius = frame_.fontHeight() * kMark;
  const QPointF centre = place(curve_.freqs()[i], curve_.fluxes()[i], target.view);
  // What has no place on a logarithmic axis is not finite, and no rectangle would refuse it.
  if (!std::isfinite(centre.x()) || !std::isfinite(centre.y())) return;
  if (!panelOf(target.view, 2.0 * radius).contains(centre)) return;
  target.painter.setPen(QPen(frame_.curveColour(number_), 1.0));
  target.painter.setBrush(QColor(0xff, 0xff, 0x00));
  target.painter.drawEllipse(centre, radius, radius);
  target.painter.setBrush(Qt::NoBrush);
}

void AFQSGraph::drawErrorBar(const GraphPainter& target, std::size_t i) const {
  const double tick = frame_.fontHeight() * kMark;
  const double flux = curve_.fluxes()[i];
  const double error = curve_.errors()[i];
  const QPointF top = place(curve_.freqs()[i], flux + error, target.view);
  const QPointF bottom = place(curve_.freqs()[i], flux - error, target.view);
  target.painter.setPen(QPen(frame_.colour(AMSD2DAxisMulti::Slot::kErrorBar), 1.0));
  const QPointF aside(tick, 0.0);
  // Thin upright and level lines are crisp without smoothing.
  target.painter.setRenderHint(QPainter::Antialiasing, false);
  for (const auto& [from, to] : {std::pair(top, bottom), std::pair(top - aside, top + aside),
                                 std::pair(bottom - aside, bottom + aside)})
    for (const QPolygonF& part : clippedLine({from, to}, panelOf(target.view, tick)))
      target.painter.drawPolyline(part);
  target.painter.setRenderHint(QPainter::Antialiasing);
}

void AFQSGraph::drawLegend(QPainter& painter, const QRectF& place) const {
  QRectF line = place.adjusted(0.0, frame_.legendDrop(), 0.0, 0.0);
  for (const QString& text : legend()) {
    drawLegendLine(painter, line, frame_.fontHeight(), frame_.curveColour(number_), text);
    line.translate(0.0, frame_.legendPitch());
  }
}

std::string AFQSGraph::readOutAt(const PlotPoint& pixel, const PanelView& view) const {
  std::size_t nearest = curve_.count();
  double distance = frame_.fontHeight();
  for (std::size_t i = 0; i < curve_.count(); ++i) {
    const QPointF at = place(curve_.freqs()[i], curve_.fluxes()[i], view);
    const double away = std::hypot(at.x() - pixel.x, at.y() - pixel.y);
    if (!(away < distance)) continue;
    distance = away;
    nearest = i;
  }
  if (nearest == curve_.count()) return {};
  const std::string& nameY = frame_.nameOY();
  const std::string unit = nameY.find('[') != std::string::npos ? nameY.substr(nameY.find('[')) : "";
  return "Curve " + toStr(number_) + ", point " + toStr(static_cast<std::int64_t>(nearest + 1)) + ":   " +
         namedValue(frame_.nameOX(), curve_.freqs()[nearest]) + "   " +
         namedValue(nameY, curve_.fluxes()[nearest]) + "   " +
         namedValue("Error " + unit, curve_.errors()[nearest]);
}

}  // namespace lumo
