// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PanelNavigation.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <cmath>

#include "view/PanelView.h"

namespace lumo {
namespace {

constexpr double kKeyZoom = 1.25;
constexpr double kWheelZoom = 1.2;     // for one notch
constexpr double kWheelNotch = 120.0;  // eighths of a degree
constexpr double kKeyPan = 0.1;        // of the panel

}  // namespace

void PanelNavigation::press(const QMouseEvent& event, const QRect& panel) {
  const bool takes = event.button() == Qt::LeftButton || event.button() == Qt::MiddleButton;
  isDragging_ = takes && panel.contains(event.position().toPoint());
  lastDrag_ = event.position();
}

bool PanelNavigation::move(const QMouseEvent& event, PanelView& view) {
  if (!isDragging_) return false;
  const QPointF by = event.position() - lastDrag_;
  lastDrag_ = event.position();
  view.pan(by.x(), by.y());
  return true;
}

void PanelNavigation::wheel(const QWheelEvent& event, const QRect& panel, PanelView& view) {
  const QPointF at = event.position() - panel.topLeft();
  view.zoomAbout({at.x(), at.y()}, std::pow(kWheelZoom, event.angleDelta().y() / kWheelNotch));
}

bool PanelNavigation::key(const QKeyEvent& event, PanelView& view) {
  const double stepX = kKeyPan * view.panelWidth();
  const double stepY = kKeyPan * view.panelHeight();
  switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      zoom(view, kKeyZoom);
      return true;
    case Qt::Key_Minus:
      zoom(view, 1.0 / kKeyZoom);
      return true;
    case Qt::Key_Home:
      view.fit();
      return true;
    // An arrow moves the look, so the picture goes the other way.
    case Qt::Key_Left:
      view.pan(stepX, 0.0);
      return true;
    case Qt::Key_Right:
      view.pan(-stepX, 0.0);
      return true;
    case Qt::Key_Up:
      view.pan(0.0, stepY);
      return true;
    case Qt::Key_Down:
      view.pan(0.0, -stepY);
      return true;
    default:
      return false;
  }
}

void PanelNavigation::zoom(PanelView& view, double factor) {
  view.zoomAbout({view.panelWidth() / 2.0, view.panelHeight() / 2.0}, factor);
}

}  // namespace lumo
