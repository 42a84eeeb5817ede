// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRect>

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

namespace lumo {

class PanelView;

/// What mouse and keys do to the part of a plot that a panel shows: the wheel zooms about the cursor,
/// dragging with the left or middle button moves the picture; the arrows move the look, + and - zoom, Home
/// shows everything. The window hands the events on and draws the view when it has changed.
class PanelNavigation {
 public:
  /// `panel` is where the view lies in the coordinates of the events.
  void press(const QMouseEvent& event, const QRect& panel);
  void release() { isDragging_ = false; }
  /// @return whether the view has changed.
  bool move(const QMouseEvent& event, PanelView& view);
  static void wheel(const QWheelEvent& event, const QRect& panel, PanelView& view);
  /// @return whether the key means something here.
  static bool key(const QKeyEvent& event, PanelView& view);
  /// Enlarges by `factor` about the middle of the panel.
  static void zoom(PanelView& view, double factor);

 private:
  bool isDragging_ = false;
  QPointF lastDrag_;
};

}  // namespace lumo
