// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "analysis/AreaEditor.h"
#include "view/AGraph.h"

namespace lumo {

/// Draws the areas over a map: numbered outlines that stand out on light and dark ground, and the handles of
/// the selected one.
class AreaOverlay final : public AGraph {
 public:
  /// `editor` must stay while this graph is drawn. `extent` is that of the map below.
  AreaOverlay(const AreaEditor& editor, const PlotRect& extent) : editor_(&editor), extent_(extent) {}

  [[nodiscard]] PlotRect extent() const override { return extent_; }
  void draw(const GraphPainter& target) const override;
  /// Without what is only for editing.
  void drawToKeep(const GraphPainter& target) const override;

 private:
  void drawAreas(const GraphPainter& target, bool forEditing) const;
  /// The box that an ellipse is pulled by, and what its handle for turning hangs on.
  static void drawFrame(const GraphPainter& target, const AreaShape& shape,
                        const std::vector<AreaHandle>& handles);
  void drawHandles(const GraphPainter& target) const;

  const AreaEditor* editor_;
  PlotRect extent_;
};

}  // namespace lumo
