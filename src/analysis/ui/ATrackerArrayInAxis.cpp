// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/ATrackerArrayInAxis.h"

#include <QCursor>
#include <QKeyEvent>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

#include "analysis/ui/AreaOverlay.h"

namespace lumo {

namespace {

/// The cursor that points along a direction of the screen, x to the right and y down.
Qt::CursorShape shapeAlong(double x, double y) {
  const double eighths = std::atan2(y, x) / (std::numbers::pi / 4.0);
  switch (((static_cast<int>(std::lround(eighths)) % 4) + 4) % 4) {
    case 0:
      return Qt::SizeHorCursor;
    case 1:
      return Qt::SizeFDiagCursor;
    case 2:
      return Qt::SizeVerCursor;
    default:
      return Qt::SizeBDiagCursor;
  }
}

Qt::CursorShape shapeOf(const AreaHandle& handle, const AreaShape& shape, const PanelView& view) {
  switch (handle.kind) {
    case HandleKind::kBox:
    case HandleKind::kRadius: {
      const PlotPoint at = view.toPixel({handle.at.x, handle.at.y});
      const PlotPoint centre = view.toPixel({shape.centre.x, shape.centre.y});
      return shapeAlong(at.x - centre.x, at.y - centre.y);
    }
    case HandleKind::kRotate:
      return Qt::PointingHandCursor;
    case HandleKind::kInsert:
      return Qt::DragCopyCursor;
    case HandleKind::kVertex:
      break;
  }
  return Qt::SizeAllCursor;
}

}  // namespace

ATrackerArrayInAxis::ATrackerArrayInAxis(AreaList areas, QObject* parent)
    : QObject(parent), ARPTrackerArray(std::move(areas)) {}

ATrackerArrayInAxis::~ATrackerArrayInAxis() {
  if (!window_) return;
  // The overlay looks at this object's areas.
  window_->setTool(nullptr);
  window_->SetAxis(nullptr);
}

void ATrackerArrayInAxis::attach(AAxisWnd& window, bool editable) {
  window_ = &window;
  A2_3DAxis& axis = *window.axis();
  cell_ = {axis.colours()->map().cellX(), axis.colours()->map().cellY()};
  axis.addGraph(std::make_unique<AreaOverlay>(editor(), axis.extent()));
  if (editable) window.setTool(this);
  window.redraw();
}

AreaPointer ATrackerArrayInAxis::areaPointer(const PanelPointer& pointer) const {
  return {{pointer.point.x, pointer.point.y}, 1.0 / window_->view().pixelsPerX()};
}

void ATrackerArrayInAxis::show() {
  if (window_) window_->redraw();
  emit changed();
}

void ATrackerArrayInAxis::EndWorking() {
  ARPTrackerArray::EndWorking();
  show();
}

void ATrackerArrayInAxis::setTool(AreaTool tool) {
  editor().setTool(tool);
  if (window_ && tool == AreaTool::kMoveMap) window_->setPanelCursor(Qt::OpenHandCursor);
  show();
}

void ATrackerArrayInAxis::undo() {
  if (editor().undo()) show();
}

void ATrackerArrayInAxis::redo() {
  if (editor().redo()) show();
}

void ATrackerArrayInAxis::remove() {
  if (editor().remove()) show();
}

bool ATrackerArrayInAxis::replaceAll(AreaList areas) {
  if (!editor().replaceAll(std::move(areas))) return false;
  show();
  return true;
}

bool ATrackerArrayInAxis::press(const PanelPointer& pointer) {
  const bool taken = editor().press(areaPointer(pointer));
  show();
  return taken;
}

bool ATrackerArrayInAxis::move(const PanelPointer& pointer) {
  const bool wasBusy = editor().busy();
  editor().move(areaPointer(pointer));
  showCursor(areaPointer(pointer));
  if (wasBusy) show();
  return wasBusy;
}

void ATrackerArrayInAxis::release(const PanelPointer& pointer) {
  const bool wasBusy = editor().busy();
  editor().release(areaPointer(pointer));
  if (wasBusy) show();
}

bool ATrackerArrayInAxis::doubleClick(const PanelPointer& pointer) {
  if (!editor().doubleClick(areaPointer(pointer))) return false;
  show();
  return true;
}

void ATrackerArrayInAxis::showCursor(const AreaPointer& pointer) {
  const AreaHit hit = editor().hit(pointer);
  const AreaTool tool = editor().tool();
  if (tool == AreaTool::kMoveMap)
    window_->setPanelCursor(Qt::OpenHandCursor);
  else if (hit.handle && !editor().draft())
    window_->setPanelCursor(shapeOf(*hit.handle, areas().shapes()[*hit.area], window_->view()));
  else if (tool == AreaTool::kSelect)
    window_->setPanelCursor(hit.area ? Qt::SizeAllCursor : Qt::ArrowCursor);
  else
    window_->setPanelCursor(Qt::CrossCursor);
}

bool ATrackerArrayInAxis::key(const QKeyEvent& event) {
  if (!command(event)) return false;
  show();
  return true;
}

bool ATrackerArrayInAxis::command(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
  if (modifiers.testFlag(Qt::ControlModifier)) {
    const bool shift = modifiers.testFlag(Qt::ShiftModifier);
    // Taken even with nothing to go back to, so that the key means one thing only.
    if (event.key() == Qt::Key_Y || (event.key() == Qt::Key_Z && shift))
      editor().redo();
    else if (event.key() == Qt::Key_Z)
      editor().undo();
    else
      return false;
    return true;
  }
  switch (event.key()) {
    case Qt::Key_Delete:
      return editor().remove();
    case Qt::Key_Backspace:
      return editor().takeBackVertex();
    case Qt::Key_Return:
    case Qt::Key_Enter: {
      const bool drawing = editor().draft().has_value();
      return editor().closePolygon() || drawing;
    }
    case Qt::Key_Escape:
      return editor().abandon();
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      editor().selectNext(event.key() == Qt::Key_PageDown);
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
      return nudge(event.key(), modifiers.testFlag(Qt::ShiftModifier));
    default:
      return modifiers == Qt::NoModifier && chooseTool(event.key());
  }
}

bool ATrackerArrayInAxis::nudge(int key, bool far) {
  if (!window_) return false;
  const double pixels = far ? 10.0 : 1.0;
  const double right = pixels * window_->view().xDirection() * cell_.x;
  const double up = pixels * window_->view().yDirection() * cell_.y;
  switch (key) {
    case Qt::Key_Left:
      return editor().nudge({-right, 0.0});
    case Qt::Key_Right:
      return editor().nudge({right, 0.0});
    case Qt::Key_Up:
      return editor().nudge({0.0, up});
    default:
      return editor().nudge({0.0, -up});
  }
}

bool ATrackerArrayInAxis::chooseTool(int key) {
  static constexpr std::pair<Qt::Key, AreaTool> kKeys[] = {
      {Qt::Key_S, AreaTool::kSelect},  {Qt::Key_M, AreaTool::kMoveMap}, {Qt::Key_R, AreaTool::kRectangle},
      {Qt::Key_E, AreaTool::kEllipse}, {Qt::Key_C, AreaTool::kCircle},  {Qt::Key_P, AreaTool::kPolygon}};
  for (const auto& [letter, tool] : kKeys) {
    if (letter != key) continue;
    editor().setTool(tool);
    return true;
  }
  return false;
}

}  // namespace lumo
