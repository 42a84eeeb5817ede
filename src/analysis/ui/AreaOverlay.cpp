// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AreaOverlay.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <utility>

#include "view/ClippedLine.h"

namespace lumo {

namespace {

const QColor kInk(0, 0, 0);
const QColor kPaper(255, 255, 255);
const QColor kChosen(255, 176, 0);
constexpr double kLine = 1.5;
constexpr double kHandle = 4.0;  // half a side

QPointF onScreen(const GraphPainter& target, AreaPoint point) {
  const PlotPoint pixel = target.view.toPixel({point.x, point.y});
  return {pixel.x, pixel.y};
}

QPolygonF onScreen(const GraphPainter& target, const std::vector<AreaPoint>& corners) {
  QPolygonF polygon;
  for (const AreaPoint& corner : corners) polygon.append(onScreen(target, corner));
  return polygon;
}

/// The panel with room for what reaches `margin` pixels beyond its place.
QRectF panelOf(const GraphPainter& target, double margin) {
  return QRectF(0.0, 0.0, target.view.panelWidth(), target.view.panelHeight())
      .adjusted(-margin, -margin, margin, margin);
}

/// What of a line can be seen.
QPainterPath seenPath(const GraphPainter& target, QPolygonF line, bool closed) {
  if (closed) line.append(line.first());
  QPainterPath path;
  for (const QPolygonF& part : clippedLine({line.begin(), line.end()}, panelOf(target, 2.0 * kHandle))) {
    path.addPolygon(part);
    if (part.isClosed()) path.closeSubpath();
  }
  return path;
}

/// A light line with a dark edge on both sides, so that one of them differs from whatever is below.
void strokePath(QPainter& painter, const QPainterPath& path, const QColor& colour, Qt::PenStyle style) {
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(kInk, kLine + 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(path);
  // Flat, so that the gaps of a broken line stay open; round where a clipped outline meets its own start.
  const Qt::PenCapStyle cap = style == Qt::SolidLine ? Qt::RoundCap : Qt::FlatCap;
  painter.setPen(QPen(colour, kLine, style, cap, Qt::RoundJoin));
  painter.drawPath(path);
}

QString labelOf(const AreaShape& shape, std::size_t k) {
  const QString name = QString::fromStdString(shape.name);
  return QString::number(k + 1) + (name.isEmpty() ? QString() : " " + name);
}

/// The number to the left of the outline, within the panel as long as the outline is.
void drawLabel(const GraphPainter& target, const QPolygonF& outline, const QString& text, bool chosen) {
  QPainter& painter = target.painter;
  const QFontMetricsF metrics(painter.font());
  // The upper one of several that are furthest to the left, to less than a pixel.
  const QPointF left = *std::min_element(
      outline.begin(), outline.end(),
      [](const QPointF& a, const QPointF& b) { return a.x() + 1e-3 * a.y() < b.x() + 1e-3 * b.y(); });
  QRectF box(0.0, 0.0, std::max(metrics.horizontalAdvance(text), metrics.height() * 0.6) + 8.0,
             metrics.height() + 2.0);
  box.moveCenter({left.x() - kHandle - 6.0 - box.width() / 2.0, left.y()});
  if (box.left() < 2.0 && outline.boundingRect().right() > 0.0) box.moveLeft(2.0);
  if (!box.intersects(panelOf(target, 0.0))) return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(chosen ? kChosen : QColor(0, 0, 0, 170));
  painter.drawRoundedRect(box, 3.0, 3.0);
  painter.setPen(chosen ? kInk : kPaper);
  painter.drawText(box, Qt::AlignCenter, text);
}

void drawSquare(QPainter& painter, const QPointF& at, const QColor& fill) {
  painter.setPen(QPen(kInk, 1.0));
  painter.setBrush(fill);
  painter.drawRect(QRectF(at.x() - kHandle, at.y() - kHandle, 2 * kHandle, 2 * kHandle));
}

}  // namespace

void AreaOverlay::draw(const GraphPainter& target) const {
  drawAreas(target, true);
}

void AreaOverlay::drawToKeep(const GraphPainter& target) const {
  drawAreas(target, false);
}

void AreaOverlay::drawAreas(const GraphPainter& target, bool forEditing) const {
  QPainter& painter = target.painter;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const auto& shapes = editor_->areas().shapes();
  for (std::size_t k = 0; k < shapes.size(); ++k) {
    const QPolygonF outline = onScreen(target, areaOutline(shapes[k]));
    if (outline.isEmpty()) continue;
    const bool chosen = forEditing && editor_->selected() == k;
    strokePath(painter, seenPath(target, outline, true), chosen ? kChosen : kPaper, Qt::SolidLine);
    drawLabel(target, outline, labelOf(shapes[k], k), chosen);
  }
  if (forEditing) drawHandles(target);
  if (forEditing && editor_->draft()) {
    const AreaShape& draft = *editor_->draft();
    const QPolygonF outline = onScreen(target, areaOutline(draft));
    const bool isPolygon = draft.kind == AreaKind::kPolygon;
    strokePath(painter, seenPath(target, outline, !isPolygon), kChosen, Qt::DashLine);
    // A click on the first vertex closes the polygon.
    if (isPolygon && panelOf(target, 2.0 * kHandle).contains(outline.first()))
      drawSquare(painter, outline.first(), kPaper);
  }
  painter.restore();
}

void AreaOverlay::drawFrame(const GraphPainter& target, const AreaShape& shape,
                            const std::vector<AreaHandle>& handles) {
  if (shape.kind != AreaKind::kEllipse && shape.kind != AreaKind::kRectangle) return;
  QPolygonF corners;
  for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {-1, -1}})
    for (const AreaHandle& handle : handles)
      if (handle.kind == HandleKind::kBox && handle.x == x && handle.y == y)
        corners.append(onScreen(target, handle.at));
  for (const QColor& colour : {kInk, kPaper}) {
    QPen pen(colour, 1.0, Qt::CustomDashLine);
    pen.setDashPattern({3.0, 3.0});
    pen.setDashOffset(colour == kInk ? 0.0 : 3.0);
    target.painter.setPen(pen);
    target.painter.setBrush(Qt::NoBrush);
    if (shape.kind == AreaKind::kEllipse) target.painter.drawPath(seenPath(target, corners, false));
    const AreaHandle& turn = handles.back();
    for (const AreaHandle& handle : handles)
      if (handle.kind == HandleKind::kBox && handle.x == 0 && handle.y == 1)
        target.painter.drawPath(
            seenPath(target, {onScreen(target, handle.at), onScreen(target, turn.at)}, false));
  }
}

void AreaOverlay::drawHandles(const GraphPainter& target) const {
  if (!editor_->selected()) return;
  QPainter& painter = target.painter;
  const AreaShape& shape = editor_->areas().shapes()[*editor_->selected()];
  const double reach = AreaEditor::kRotatePixels / target.view.pixelsPerX();
  const std::vector<AreaHandle> handles = areaHandles(shape, reach);
  drawFrame(target, shape, handles);
  for (const AreaHandle& handle : handles) {
    const QPointF at = onScreen(target, handle.at);
    if (!panelOf(target, 2.0 * kHandle).contains(at)) continue;
    const bool isCurrent = handle.kind == HandleKind::kVertex && editor_->currentVertex() == handle.vertex;
    painter.setPen(QPen(kInk, 1.0));
    painter.setBrush(kPaper);
    if (handle.kind == HandleKind::kRotate)
      painter.drawEllipse(at, kHandle + 1.0, kHandle + 1.0);
    else if (handle.kind == HandleKind::kInsert)
      painter.drawEllipse(at, kHandle - 1.0, kHandle - 1.0);
    else
      drawSquare(painter, at, isCurrent ? kChosen : kPaper);
  }
}

}  // namespace lumo
