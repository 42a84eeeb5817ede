// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AColorsGraph.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "core/Units.h"

namespace lumo {
namespace {

/// The part of `image` in whole pixels that holds `part`, as a view that shares its pixels.
QImage window(const QImage& image, const QRect& part) {
  const auto* first =
      image.constScanLine(part.top()) + static_cast<qsizetype>(part.left()) * image.depth() / 8;
  return {first, part.width(), part.height(), image.bytesPerLine(), image.format()};
}

}  // namespace

AColorsGraph::AColorsGraph() : table_(colourMap_) {}

void AColorsGraph::setColourMap(ColourMap map) {
  colourMap_ = map;
  table_ = ColourTable(map);
  levels_.clear();
}

void AColorsGraph::setScaling(ScalingKind kind) {
  scaling_ = ColourScaling(kind, scaling_.limits());
  levels_.clear();
}

void AColorsGraph::setLimits(const LimitChoice& choice) {
  choice_ = choice;
  scaling_ = ColourScaling(scaling_.kind(), chosenLimits());
  levels_.clear();
}

void AColorsGraph::mapChanged() {
  setLimits(choice_);
}

ValueLimits AColorsGraph::chosenLimits() const {
  if (const auto* own = std::get_if<ValueLimits>(&choice_)) return *own;
  if (const auto* share = std::get_if<PercentLimits>(&choice_)) {
    return percentileLimits(map().map(), share->percent);
  }
  const TMinMax& range = map().range();
  if (std::isfinite(range.vMax - range.vMin) && range.vMin <= range.vMax) return {range.vMin, range.vMax};
  return percentileLimits(map().map(), 100.0);
}

QImage AColorsGraph::image(int xDirection, int yDirection) const {
  const AMatrix<float>& values = map().map();
  const auto width = static_cast<int>(values.columns());
  const auto height = static_cast<int>(values.rows());
  QImage coloured(width, height, QImage::Format_RGB32);
  for (int line = 0; line < height && !coloured.isNull(); ++line) {
    const int row = yDirection > 0 ? height - 1 - line : line;
    auto* pixels = reinterpret_cast<QRgb*>(coloured.scanLine(line));
    for (int i = 0; i < width; ++i) {
      const int column = xDirection < 0 ? width - 1 - i : i;
      const float value = values(static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column));
      pixels[i] = table_.colour(scaling_.position(value));
    }
  }
  return coloured;
}

const QImage& AColorsGraph::level(const PanelView& view, double mapPixelsPerScreenPixel) const {
  if (levels_.empty() || levelsX_ != view.xDirection() || levelsY_ != view.yDirection()) {
    levelsX_ = view.xDirection();
    levelsY_ = view.yDirection();
    levels_.assign(1, image(levelsX_, levelsY_));
  }
  std::size_t wanted = 0;
  for (double ratio = mapPixelsPerScreenPixel; ratio >= 2.0; ratio /= 2.0) ++wanted;
  while (levels_.size() <= wanted && std::min(levels_.back().width(), levels_.back().height()) > 1) {
    const QSize half((levels_.back().width() + 1) / 2, (levels_.back().height() + 1) / 2);
    levels_.push_back(levels_.back().scaled(half, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  }
  return levels_[std::min(wanted, levels_.size() - 1)];
}

void AColorsGraph::draw(const GraphPainter& target) const {
  const auto& [painter, view] = target;
  if (map().map().size() == 0) return;
  const double devicePerPixel = std::max(std::abs(painter.deviceTransform().m11()), 1e-6);
  const double mapPixelsPerScreenPixel = 1.0 / (map().cellX() * view.pixelsPerX() * devicePerPixel);
  const QImage& picture = level(view, mapPixelsPerScreenPixel);
  if (picture.isNull()) return;

  // Corners of the whole picture in panel pixels, and the picture's pixels that the panel shows.
  const PlotRect edges = map().edges();
  const PlotPoint a = view.toPixel({edges.xMin, edges.yMin});
  const PlotPoint b = view.toPixel({edges.xMax, edges.yMax});
  const QRectF whole(QPointF(std::min(a.x, b.x), std::min(a.y, b.y)),
                     QPointF(std::max(a.x, b.x), std::max(a.y, b.y)));
  const double stepX = whole.width() / picture.width();
  const double stepY = whole.height() / picture.height();
  const QRect shown = QRectF(-whole.left() / stepX, -whole.top() / stepY, view.panelWidth() / stepX,
                             view.panelHeight() / stepY)
                          .toAlignedRect()
                          .intersected(picture.rect());
  if (!shown.isEmpty()) {
    // Pixels that are enlarged keep their edges; smoothing would invent structure below the cell size.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, mapPixelsPerScreenPixel > 1.0);
    painter.drawImage(QRectF(whole.left() + shown.left() * stepX, whole.top() + shown.top() * stepY,
                             shown.width() * stepX, shown.height() * stepY),
                      window(picture, shown));
  }
  drawBeam(target);
}

void AColorsGraph::drawBeam(const GraphPainter& target) const {
  const auto& [painter, view] = target;
  const auto& beam = map().beam();
  if (!beam || !(beam->majorArcsec > 0.0) || !(beam->minorArcsec > 0.0)) return;
  const double major = beam->majorArcsec * view.pixelsPerY() / 2.0;
  const double minor = beam->minorArcsec * view.pixelsPerY() / 2.0;
  const double angle = beam->paDeg * kRadianPerDegree;
  const double halfWidth = std::hypot(major * std::sin(angle), minor * std::cos(angle));
  const double halfHeight = std::hypot(major * std::cos(angle), minor * std::sin(angle));
  // Zoomed in so far, the beam would hide what it is meant to be compared with.
  if (halfWidth > view.panelWidth() / 4.0 || halfHeight > view.panelHeight() / 4.0) return;

  constexpr double kGap = 8.0;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(kGap + halfWidth, view.panelHeight() - kGap - halfHeight);
  // East of north turns counter-clockwise where east is left; the painter counts clockwise.
  painter.rotate(view.xDirection() * view.yDirection() * beam->paDeg);
  painter.setPen(QPen(Qt::black, 2.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPointF(0.0, 0.0), minor, major);
  painter.setPen(QPen(Qt::white, 1.2));
  painter.setBrush(QColor(255, 255, 255, 90));
  painter.drawEllipse(QPointF(0.0, 0.0), minor, major);
  painter.restore();
}

}  // namespace lumo
