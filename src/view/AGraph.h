// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "view/PanelView.h"

class QPainter;

namespace lumo {

/// What a graph draws on: logical pixels with the origin at the panel's upper left corner, clipped to the
/// panel.
struct GraphPainter {
  QPainter& painter;
  const PanelView& view;
};

/// One kind of data drawn on an axis.
class AGraph {
 public:
  virtual ~AGraph() = default;
  /// Everything this graph has to show, in the axis's values.
  [[nodiscard]] virtual PlotRect extent() const = 0;
  /// Draws what view.visible() holds. Called for every frame, so what can be prepared should be.
  virtual void draw(const GraphPainter& target) const = 0;
  /// Draws for a picture that is kept: a file, the clipboard, paper. A graph that fills up little by little
  /// on the screen draws all of it here.
  virtual void drawToKeep(const GraphPainter& target) const { draw(target); }
  /// Up to two lines about the data at a position, empty for none.
  [[nodiscard]] virtual std::string readOut(double /*x*/, double /*y*/) const { return {}; }
};

}  // namespace lumo
