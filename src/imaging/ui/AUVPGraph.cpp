// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/AUVPGraph.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPainter>
#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <utility>

#include "core/TextForm.h"
#include "core/Units.h"
#include "imaging/UvPlanePoints.h"
#include "view/ScalePrefix.h"

namespace lumo {

namespace {

constexpr QRgb kMarkColour = 0xff1d4e9e;  // a dark blue
constexpr int kVectorPixels = 4;          // pixels of a picture in a vector file, for each logical one

/// Where a picture of the whole panel belongs: the plot counts pixels by their middles, so the panel's edges
/// run through the middles of the outermost ones.
QRectF panelPlace(const PanelView& view) {
  return {-0.5, -0.5, view.panelWidth() + 1.0, view.panelHeight() + 1.0};
}

UvFrame frameOf(const PanelView& view, double scale) {
  const QRectF place = panelPlace(view);
  const PlotPoint a = view.toPlot({place.left(), place.top()});
  const PlotPoint b = view.toPlot({place.right(), place.bottom()});
  UvFrame frame;
  frame.visible = {std::min(a.x, b.x), std::max(a.x, b.x), std::min(a.y, b.y), std::max(a.y, b.y)};
  frame.width = qRound(place.width() * scale);
  frame.height = qRound(place.height() * scale);
  frame.uDirection = view.xDirection();
  frame.vDirection = view.yDirection();
  frame.pixelsPerUnit = std::max(1, qRound(scale));
  return frame;
}

/// Where a frame's picture belongs in the panel.
QRectF placeOf(const UvFrame& frame, const PanelView& view) {
  const PlotPoint a = view.toPixel({frame.visible.uMin, frame.visible.vMin});
  const PlotPoint b = view.toPixel({frame.visible.uMax, frame.visible.vMax});
  return QRectF(QPointF(a.x, a.y), QPointF(b.x, b.y)).normalized();
}

/// Draws a picture of the whole panel, pixel by pixel where it has `scale` of them for each logical one:
/// fitted into a rectangle it would be resampled because of a rounding. With `scale` 0 it is fitted.
void drawOverPanel(const GraphPainter& target, QImage image, double scale) {
  const QRectF place = panelPlace(target.view);
  if (scale == 0.0) return target.painter.drawImage(place, image);
  image.setDevicePixelRatio(scale);
  target.painter.drawImage(place.topLeft(), image);
}

bool hasPixels(const QPaintDevice& device) {
  return device.devType() == QInternal::Image || device.devType() == QInternal::Pixmap ||
         device.devType() == QInternal::Widget;
}

/// Fills columns first .. last of a line as far as they exist.
void fillLine(QImage& image, int line, int first, int last, QRgb colour) {
  if (line < 0 || line >= image.height()) return;
  auto* const pixels = reinterpret_cast<QRgb*>(image.scanLine(line));
  for (int column = std::max(first, 0); column <= std::min(last, image.width() - 1); ++column)
    pixels[column] = std::max(pixels[column], colour);  // the darker of dots that overlap
}

std::string lengthText(double wavelengths) {
  const ScalePrefix prefix = scalePrefixFor(wavelengths);
  return nValToStr(wavelengths / prefix.factor, 6) + ' ' + prefix.symbol + "\u03bb";
}

}  // namespace

QImage uvImage(const UvHitGrid& grid, const QColor& colour) {
  constexpr double kFaintest = 0.6;
  const UvFrame& frame = grid.frame();
  QImage image(frame.width, frame.height, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return image;
  image.fill(Qt::transparent);
  const int size = grid.markSize();
  const int unit = frame.pixelsPerUnit * (size < kUvSmallestCross ? size : 1);  // width of lines and dots
  const int before = (unit - 1) / 2;
  const int arm = size >= kUvSmallestCross ? size * unit / 2 : 0;
  const double full = std::log1p(grid.largest());
  for (int row = 0; row < frame.height; ++row) {
    for (int column = 0; column < frame.width; ++column) {
      const std::uint32_t hits = grid(row, column);
      if (hits == 0) continue;
      QColor mark = colour;
      if (arm == 0) mark.setAlphaF(kFaintest + (1.0 - kFaintest) * std::log1p(hits) / full);
      const QRgb pixel = qPremultiply(mark.rgba());
      for (int i = -before; i < unit - before; ++i)
        fillLine(image, row + i, column - before - arm, column + unit - 1 - before + arm, pixel);
      for (int i = -before - arm; arm > 0 && i < unit - before + arm; ++i)
        fillLine(image, row + i, column - before, column + unit - 1 - before, pixel);
    }
  }
  return image;
}

AUVPGraph::AUVPGraph(std::function<void()> changed) : changed_(std::move(changed)) {
  SetData({});
}

void AUVPGraph::SetData(UvPlaneData data) {
  shown_.reset();
  worker_ = std::make_unique<UvPlaneWorker>(std::move(data), changed_);
}

PlotRect AUVPGraph::extent() const {
  const UvRange range = data().range();
  return {range.uMin, range.uMax, range.vMin, range.vMax};
}

void AUVPGraph::draw(const GraphPainter& target) const {
  const double scale = target.painter.device()->devicePixelRatioF();
  const UvFrame frame = frameOf(target.view, scale);
  worker_->show(frame);
  const UvPicture picture = worker_->latest();
  isShown_ = picture.grid != nullptr && picture.grid->frame() == frame;
  if (picture.grid == nullptr) return;
  if (picture.grid != shown_) {
    image_ = uvImage(*picture.grid, QColor::fromRgba(kMarkColour));
    shown_ = picture.grid;
  }
  if (isShown_) {
    drawOverPanel(target, image_, scale);
  } else {
    target.painter.drawImage(placeOf(shown_->frame(), target.view), image_);
  }
}

void AUVPGraph::drawToKeep(const GraphPainter& target) const {
  const QPainter& painter = target.painter;
  const double scale = std::abs(painter.deviceTransform().m11());
  const int pixels = hasPixels(*painter.device()) ? std::max(1, qRound(scale)) : kVectorPixels;
  const UvFrame frame = frameOf(target.view, pixels);
  const std::shared_ptr<const UvHitGrid> grid = gridToKeep(frame);
  // A frame that was cut has fewer pixels than the panel.
  const bool fitsPixels = pixels == scale && grid->frame() == frame;
  drawOverPanel(target, uvImage(*grid, QColor::fromRgba(kMarkColour)), fitsPixels ? scale : 0.0);
}

std::shared_ptr<const UvHitGrid> AUVPGraph::gridToKeep(const UvFrame& frame) const {
  if (const UvPicture picture = worker_->latest(); picture.complete && picture.grid->frame() == frame) {
    keptStatus_ = picture.status;
    return picture.grid;
  }
  // Printing has a window of its own that tells it takes time.
  const bool waits = !isAborted_;
  if (waits) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  const auto arrow = qScopeGuard([waits] {
    if (waits) QGuiApplication::restoreOverrideCursor();
  });
  auto grid = std::make_shared<UvHitGrid>(frame);
  CancelFlag cancel{0};
  keptStatus_ = readUvPoints(
      data(), frame.visible.mirrored(),
      [&](std::span<const UvPoint> points) {
        for (const UvPoint& point : points) grid->add(point);
        if (isAborted_ && isAborted_()) cancel = 1;
      },
      &cancel);
  return grid;
}

std::string AUVPGraph::readOut(double u, double v) const {
  // From north through east: v points to the north, u to the east.
  const double angle = std::atan2(u, v) * kDegreePerRadian;
  return "U " + lengthText(u) + "   V " + lengthText(v) + "\nBaseline " + lengthText(std::hypot(u, v)) +
         ", position angle " + nValToStr(angle < 0.0 ? angle + 180.0 : angle, 4) + "\u00b0";
}

}  // namespace lumo
