// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "analysis/AreaShape.h"

namespace lumo {

/// The areas that are measured on a map. Without any, the whole map is the one area.
class AreaList {
 public:
  AreaList() = default;
  explicit AreaList(std::vector<AreaShape> shapes) : shapes_(std::move(shapes)) {}

  /// How many areas are measured: that of the shapes, at least 1.
  [[nodiscard]] std::size_t areaCount() const { return shapes_.empty() ? 1 : shapes_.size(); }
  /// The mask of area `k` (from 0, below areaCount()) of a map of the mask's size. Clears the mask first.
  void makeMask(std::size_t k, ABitMatrix& mask, const TMinMax& range) const {
    mask = shapes_.empty() ? 1 : 0;
    if (!shapes_.empty()) fillMask(shapes_[k], mask, range);
  }

  /// Calls `take(row, column)` for the pixels of area `k` of a map of rows x columns, row by row: those of
  /// makeMask(), at the cost of the rows that the area reaches.
  template <typename Take>
  void visitPixels(std::size_t k, std::uint32_t rows, std::uint32_t columns, const TMinMax& range,
                   Take take) const {
    if (!shapes_.empty()) return forEachPixel(shapes_[k], rows, columns, range, take);
    for (std::uint32_t row = 0; row < rows; ++row)
      for (std::uint32_t column = 0; column < columns; ++column) take(row, column);
  }

  [[nodiscard]] const std::vector<AreaShape>& shapes() const { return shapes_; }
  void add(AreaShape shape) { shapes_.push_back(std::move(shape)); }
  /// Puts another shape in the place of shape `k`, which is below the number of shapes.
  void replace(std::size_t k, AreaShape shape) { shapes_[k] = std::move(shape); }
  void remove(std::size_t k) { shapes_.erase(shapes_.begin() + static_cast<std::ptrdiff_t>(k)); }
  void clear() { shapes_.clear(); }

 private:
  std::vector<AreaShape> shapes_;
};

}  // namespace lumo
