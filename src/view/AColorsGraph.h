// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <optional>
#include <variant>
#include <vector>

#include "view/ABMapGraph.h"
#include "view/ColourScaling.h"
#include "view/ColourTable.h"

namespace lumo {

/// The value range that SetParameters was given.
struct GivenLimits {
  bool operator==(const GivenLimits&) const = default;
};
/// The central `percent` of the finite pixels.
struct PercentLimits {
  double percent = 100.0;
  bool operator==(const PercentLimits&) const = default;
};
/// Where the colour limits come from; ValueLimits are the user's own.
using LimitChoice = std::variant<GivenLimits, PercentLimits, ValueLimits>;

/// A map drawn in colours, with its beam in the lower left corner.
///
/// The picture is coloured once per change of map, colours or scaling, in the size that is looked at: smaller
/// by powers of two for a zoomed-out view. A frame only scales the visible part. Use from the user-interface
/// thread.
class AColorsGraph : public ABMapGraph {
 public:
  AColorsGraph();

  void setColourMap(ColourMap map);
  void setScaling(ScalingKind kind);
  void setLimits(const LimitChoice& choice);

  [[nodiscard]] ColourMap colourMap() const { return colourMap_; }
  [[nodiscard]] const LimitChoice& limitChoice() const { return choice_; }
  [[nodiscard]] const ColourTable& table() const { return table_; }
  [[nodiscard]] const ColourScaling& scaling() const { return scaling_; }
  /// The coloured map, one pixel each, turned as a panel with these directions shows it (-1, 1: north up,
  /// east left).
  [[nodiscard]] QImage image(int xDirection, int yDirection) const;

  void draw(const GraphPainter& target) const override;

 protected:
  void mapChanged() override;

 private:
  [[nodiscard]] ValueLimits chosenLimits() const;
  void colourLines(QImage& lines, int firstLine, int xDirection, int yDirection) const;
  [[nodiscard]] QImage reduced(int halvings) const;
  [[nodiscard]] const QImage& level(const PanelView& view, double mapPixelsPerScreenPixel) const;
  void drawBeam(const GraphPainter& target) const;

  ColourMap colourMap_ = ColourMap::kInferno;
  LimitChoice choice_;
  ColourTable table_;
  ColourScaling scaling_;
  mutable std::vector<QImage> levels_;  // each half the size of the one before; null until it is looked at
  mutable int levelsX_ = -1;            // the directions the levels were made for
  mutable int levelsY_ = 1;
};

}  // namespace lumo
