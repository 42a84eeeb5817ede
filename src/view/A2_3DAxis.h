// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "view/AColorsGraph.h"
#include "view/AGraph.h"

namespace lumo {

/// The axes of a plot: their names and directions, and the graphs drawn on them, first added first drawn.
///
/// In a name "%s" stands for the scale prefix ("Right ascent [%sas]"), which follows the range shown.
class A2_3DAxis {
 public:
  /// `xDirection` -1: x grows from right to left, as the sky is drawn with east to the left; `yDirection` 1:
  /// y grows upwards. One unit of x is drawn as long as one of y.
  explicit A2_3DAxis(int xDirection = -1, int yDirection = 1);

  void setNameOX(std::string name) { nameX_ = std::move(name); }
  void setNameOY(std::string name) { nameY_ = std::move(name); }
  /// Name of the values, shown beside the colour scale, e.g. "[%sJy/beam]". While empty, the unit of the
  /// colour graph stands for it.
  void setNameOZ(std::string name) { nameZ_ = std::move(name); }
  /// Takes the graph over and returns it.
  template <typename Graph>
  Graph& addGraph(std::unique_ptr<Graph> graph) {
    Graph& added = *graph;
    keep(std::move(graph));
    return added;
  }

  [[nodiscard]] const std::string& nameOX() const { return nameX_; }
  [[nodiscard]] const std::string& nameOY() const { return nameY_; }
  [[nodiscard]] std::string nameOZ() const;
  [[nodiscard]] int xDirection() const { return xDirection_; }
  [[nodiscard]] int yDirection() const { return yDirection_; }
  [[nodiscard]] const std::vector<std::unique_ptr<AGraph>>& graphs() const { return graphs_; }
  /// The first colour graph, which the colour scale belongs to; null if there is none.
  [[nodiscard]] AColorsGraph* colours() const { return colours_; }
  /// What holds the extents of all graphs; 0..1 without any.
  [[nodiscard]] PlotRect extent() const;

 private:
  void keep(std::unique_ptr<AGraph> graph);

  std::string nameX_;
  std::string nameY_;
  std::string nameZ_;
  int xDirection_;
  int yDirection_;
  std::vector<std::unique_ptr<AGraph>> graphs_;
  AColorsGraph* colours_ = nullptr;
};

}  // namespace lumo
