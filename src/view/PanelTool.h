// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Qt>

#include "view/PanelView.h"

class QKeyEvent;

namespace lumo {

/// The pointer over the panel of a plot.
struct PanelPointer {
  PlotPoint pixel;  ///< from the panel's upper left corner
  PlotPoint point;  ///< in the plot's values
};

/// Something that the user does on a plot besides looking at it, such as marking areas.
///
/// The window asks its tool first; what the tool returns true for, the window leaves alone. Only the left
/// button comes here, and presses within the panel. On the user-interface thread.
class PanelTool {
 public:
  virtual ~PanelTool() = default;

  virtual bool press(const PanelPointer& pointer) = 0;
  /// With or without the button down, inside the panel or outside.
  virtual bool move(const PanelPointer& pointer) = 0;
  virtual void release(const PanelPointer& pointer) = 0;
  virtual bool doubleClick(const PanelPointer& pointer) = 0;
  virtual bool key(const QKeyEvent& event) = 0;
};

}  // namespace lumo
