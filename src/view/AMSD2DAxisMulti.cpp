// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AMSD2DAxisMulti.h"

#include <algorithm>
#include <array>

#include "core/TextForm.h"
#include "view/ScalePrefix.h"

namespace lumo {
namespace {

// Told apart also by those who do not see red or green: the palette of Okabe & Ito (2008) without its yellow,
// which marks the points, darkened for white and lightened for black where the contrast asks for it.
constexpr std::array<QRgb, 8> kOnWhite{0xff0072b2, 0xffd55e00, 0xff007a5a, 0xffa8437f,
                                       0xff000000, 0xff2f8fc6, 0xff8c5a00, 0xff5b3fa8};
constexpr std::array<QRgb, 8> kOnBlack{0xff56b4e9, 0xffff8a3c, 0xff2fd0a5, 0xffe79ac9,
                                       0xffffffff, 0xff7fa8ff, 0xffd9a441, 0xffb9a2ff};

struct Span {
  double min = 0.0;
  double max = 1.0;
};

/// That of a range on an axis.
Span spanOf(double min, double max, AxisScale scale) {
  constexpr double kRoom = 0.05;
  const double low = axisCoordinate(min, scale);
  const double high = axisCoordinate(max, scale);
  if (!std::isfinite(low) || !std::isfinite(high) || low > high) return {};
  if (low < high) return {low, high};
  // So that a single coordinate does not lie on the frame's edge.
  const double room = low != 0.0 ? kRoom * std::abs(low) : kRoom;
  return {low - room, low + room};
}

}  // namespace

AMSD2DAxisMulti::AMSD2DAxisMulti(AxisScale xScale, AxisScale yScale) : scaleX_(xScale), scaleY_(yScale) {}

void AMSD2DAxisMulti::setScales(AxisScale xScale, AxisScale yScale) {
  scaleX_ = xScale;
  scaleY_ = yScale;
}

QColor AMSD2DAxisMulti::colour(Slot slot) const {
  switch (slot) {
    case Slot::kBackground:
      return inverted_ ? Qt::black : Qt::white;
    case Slot::kAxes:
      return inverted_ ? Qt::white : Qt::black;
    case Slot::kGrid:
      return inverted_ ? QColor(0x38, 0x38, 0x38) : QColor(0xde, 0xde, 0xde);
    case Slot::kErrorBar:
      return inverted_ ? QColor(0xc0, 0xc0, 0xc0) : QColor(0x50, 0x50, 0x50);
    case Slot::kCurve:
      break;
  }
  return curveColour(1);
}

QColor AMSD2DAxisMulti::curveColour(int number) const {
  const auto& palette = inverted_ ? kOnBlack : kOnWhite;
  return QColor::fromRgb(palette[static_cast<std::size_t>(std::max(number, 1) - 1) % palette.size()]);
}

QColor AMSD2DAxisMulti::overlayColour(int number) const {
  const QColor curve = curveColour(number);
  const QColor axes = colour(Slot::kAxes);
  return {(curve.red() + axes.red()) / 2, (curve.green() + axes.green()) / 2,
          (curve.blue() + axes.blue()) / 2};
}

PlotRect AMSD2DAxisMulti::extent() const {
  TMinMax range;
  for (const auto& graph : graphs_) graph->getRange(range);
  const Span x = spanOf(range.xMin, range.xMax, scaleX_);
  const Span y = spanOf(range.yMin, range.yMax, scaleY_);
  return {x.min, x.max, y.min, y.max};
}

double AMSD2DAxisMulti::RPXtoGPX(double x, const PanelView& view) const {
  return view.toPixel({axisCoordinate(x, scaleX_), 0.0}).x;
}

double AMSD2DAxisMulti::RPYtoGPY(double y, const PanelView& view) const {
  return view.toPixel({0.0, axisCoordinate(y, scaleY_)}).y;
}

std::string AMSD2DAxisMulti::readOut(const PlotPoint& pixel, const PanelView& view) const {
  const PlotPoint at = view.toPlot(pixel);
  std::string text = namedValue(nameX_, axisValue(at.x, scaleX_)) + "   " +
                     namedValue(nameY_, axisValue(at.y, scaleY_)) + "\n";
  for (const auto& graph : graphs_) {
    const std::string line = graph->readOutAt(pixel, view);
    if (!line.empty()) return text + line;
  }
  return text;
}

std::string namedValue(const std::string& name, double value) {
  constexpr int kDigits = 6;
  const bool hasPrefix = name.find("%s") != std::string::npos;
  const ScalePrefix prefix = hasPrefix ? scalePrefixFor(value) : ScalePrefix();
  const std::string title = axisTitle(name.substr(0, name.find(']')), prefix);
  const char* const bracket = name.find(']') != std::string::npos ? "]" : "";
  return title + bracket + ": " + nValToStr(value / prefix.factor, kDigits);
}

}  // namespace lumo
