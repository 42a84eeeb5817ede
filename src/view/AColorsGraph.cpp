// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AColorsGraph.h"

#include <QPainter>
#include <algorithm>
#include <atomic>
#include <cmath>

#include "core/ThreadCount.h"
#include "core/ThreadTeam.h"
#include "core/Units.h"

namespace lumo {
namespace {

/// The part of `image` in whole pixels that holds `part`, as a view that shares its pixels.
QImage window(const QImage& image, const QRect& part) {
  const auto* first =
      image.constScanLine(part.top()) + static_cast<qsizetype>(part.left()) * image.depth() / 8;
  return {first, part.width(), part.height(), image.bytesPerLine(), image.format()};
}

/// A length in pixels halved so many times, rounded up each time.
int halved(int length, int times) {
  for (; times > 0; --times) length = (length + 1) / 2;
  return length;
}

/// Lines that are coloured at a time: few enough to stay in the cache until they are reduced.
constexpr int kLines = 64;

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

/// Colours the map's lines from `firstLine` on, as many as `lines` has, into it.
void AColorsGraph::colourLines(QImage& lines, int firstLine, int xDirection, int yDirection) const {
  const AMatrix<float>& values = map().map();
  const auto width = static_cast<int>(values.columns());
  const auto height = static_cast<int>(values.rows());
  for (int line = 0; line < lines.height(); ++line) {
    const int row = yDirection > 0 ? height - 1 - firstLine - line : firstLine + line;
    const float* const from = values.data() + static_cast<std::size_t>(row) * values.columns();
    auto* const pixels = reinterpret_cast<QRgb*>(lines.scanLine(line));
    for (int i = 0; i < width; ++i)
      pixels[i] = table_.colour(scaling_.position(from[xDirection < 0 ? width - 1 - i : i]));
  }
}

QImage AColorsGraph::image(int xDirection, int yDirection) const {
  const AMatrix<float>& values = map().map();
  QImage coloured(static_cast<int>(values.columns()), static_cast<int>(values.rows()), QImage::Format_RGB32);
  if (!coloured.isNull()) colourLines(coloured, 0, xDirection, yDirection);
  return coloured;
}

/// The picture in the directions of the levels, its sides halved so many times. Where it is reduced the whole
/// one is never in memory: that of a large map takes longer to get from the system than to colour.
QImage AColorsGraph::reduced(int halvings) const {
  const int width = static_cast<int>(map().map().columns());
  const int height = static_cast<int>(map().map().rows());
  QImage picture(halved(width, halvings), halved(height, halvings), QImage::Format_RGB32);
  if (picture.isNull()) return picture;
  // Lines that do not divide evenly would be reduced otherwise than those of the whole picture.
  const int lines = height % kLines == 0 && halvings <= 6 ? kLines : height;
  const int reducedLines = halved(lines, halvings);
  uchar* const target = picture.bits();
  const auto stride = static_cast<std::size_t>(picture.bytesPerLine());
  std::atomic<bool> complete = true;
  ThreadTeam team(threadCount(0));
  team.run(static_cast<std::size_t>(height / lines), [&](std::size_t part, std::size_t /*member*/) {
    QImage some(width, lines, QImage::Format_RGB32);
    if (!some.isNull()) colourLines(some, static_cast<int>(part) * lines, levelsX_, levelsY_);
    for (int i = 1; i <= halvings && !some.isNull(); ++i)
      some = some.scaled(halved(width, i), halved(lines, i), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    uchar* to = target + part * static_cast<std::size_t>(reducedLines) * stride;
    for (int line = 0; line < some.height(); ++line, to += stride)
      std::copy_n(some.constScanLine(line), 4 * static_cast<std::size_t>(some.width()), to);
    if (some.isNull()) complete = false;
  });
  return complete ? picture : QImage();
}

const QImage& AColorsGraph::level(const PanelView& view, double mapPixelsPerScreenPixel) const {
  if (levelsX_ != view.xDirection() || levelsY_ != view.yDirection()) {
    levelsX_ = view.xDirection();
    levelsY_ = view.yDirection();
    levels_.clear();
  }
  const int side = static_cast<int>(std::min(map().map().columns(), map().map().rows()));
  std::size_t wanted = 0;
  for (double ratio = mapPixelsPerScreenPixel; ratio >= 2.0 && halved(side, static_cast<int>(wanted)) > 1;
       ratio /= 2.0)
    ++wanted;
  if (levels_.size() <= wanted) levels_.resize(wanted + 1);
  if (levels_[wanted].isNull()) levels_[wanted] = reduced(static_cast<int>(wanted));
  return levels_[wanted];
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
