// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <memory>
#include <string>
#include <vector>

#include "view/AxisScale.h"
#include "view/CurveGraph.h"
#include "view/PanelView.h"

namespace lumo {

/// The frame of a plot of curves: two axes of their own units and scales, and the curves, first added first
/// drawn.
///
/// In a name "%s" stands for the scale prefix ("Frequency [%sHz]"), which follows the range shown.
class AMSD2DAxisMulti {
 public:
  /// What a colour is for.
  enum class Slot {
    kBackground,
    kAxes,  ///< axes, ticks, titles
    kGrid,
    kCurve,  ///< the first curve; the others have colours of their own
    kErrorBar
  };

  AMSD2DAxisMulti(AxisScale xScale, AxisScale yScale);

  void setNameOX(std::string name) { nameX_ = std::move(name); }
  void setNameOY(std::string name) { nameY_ = std::move(name); }
  void setScales(AxisScale xScale, AxisScale yScale);
  /// Bright curves on black instead of dark ones on white.
  void setInverted(bool inverted) { inverted_ = inverted; }
  /// Height h of the frame's font in logical pixels, which lines and marks are sized by.
  void setFontHeight(double height) { fontHeight_ = height; }
  /// Takes the curve over and returns it.
  template <typename Graph>
  Graph& addGraph(std::unique_ptr<Graph> graph) {
    Graph& added = *graph;
    graphs_.push_back(std::move(graph));
    return added;
  }

  [[nodiscard]] const std::string& nameOX() const { return nameX_; }
  [[nodiscard]] const std::string& nameOY() const { return nameY_; }
  [[nodiscard]] AxisScale scaleX() const { return scaleX_; }
  [[nodiscard]] AxisScale scaleY() const { return scaleY_; }
  [[nodiscard]] bool isInverted() const { return inverted_; }
  [[nodiscard]] double fontHeight() const { return fontHeight_; }
  [[nodiscard]] const std::vector<std::unique_ptr<CurveGraph>>& graphs() const { return graphs_; }

  [[nodiscard]] QColor colour(Slot slot) const;
  /// Colour of curve `number`, counted from 1; they repeat after eight.
  [[nodiscard]] QColor curveColour(int number) const;
  /// Half way from the curve's colour to that of the axes, for what is drawn over the curve.
  [[nodiscard]] QColor overlayColour(int number) const;
  /// From one line of legend to the next in logical pixels.
  [[nodiscard]] double legendPitch() const { return 1.4 * fontHeight_; }
  /// What a legend has more than its lines, since it begins so much below the top of its rectangle.
  [[nodiscard]] double legendDrop() const { return 0.5 * fontHeight_; }

  /// The range that the curves extend one after the other from nothing, in axis coordinates. An axis on which
  /// there is nothing has one decade from 1, or 0..1 if linear; a single coordinate has room on both sides.
  [[nodiscard]] PlotRect extent() const;
  /// Horizontal place of a value of x in logical pixels of the panel; not finite where the axis has no place
  /// for it.
  [[nodiscard]] double RPXtoGPX(double x, const PanelView& view) const;
  [[nodiscard]] double RPYtoGPY(double y, const PanelView& view) const;
  /// Two lines about a pixel of the panel: its values, and what the first curve that has something there
  /// says.
  [[nodiscard]] std::string readOut(const PlotPoint& pixel, const PanelView& view) const;

 private:
  std::string nameX_;
  std::string nameY_;
  AxisScale scaleX_;
  AxisScale scaleY_;
  bool inverted_ = false;
  double fontHeight_ = 12.0;
  std::vector<std::unique_ptr<CurveGraph>> graphs_;
};

/// A value with its axis's name and unit: "Frequency [MHz]: 1420" for "Frequency [%sHz]" and 1.42e9. Of the
/// name counts what stands up to the closing bracket.
[[nodiscard]] std::string namedValue(const std::string& name, double value);

}  // namespace lumo
