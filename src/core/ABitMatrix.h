// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AMatrix.h"

namespace lumo {

/// rows × columns bit mask; marks the pixels of a selected area.
class ABitMatrix {
 public:
  ABitMatrix(std::uint32_t rows, std::uint32_t columns) : bits_(rows, columns) {}

  /// Sets every bit to (value != 0).
  ABitMatrix& operator=(int value) {
    for (std::size_t i = 0; i < bits_.size(); ++i) bits_.data()[i] = value != 0;
    return *this;
  }
  /// Non-zero when the bit is set.
  int operator()(std::uint32_t row, std::uint32_t column) const { return bits_(row, column); }
  void set(std::uint32_t row, std::uint32_t column, int value) { bits_(row, column) = value != 0; }
  [[nodiscard]] std::uint32_t rows() const { return bits_.rows(); }
  [[nodiscard]] std::uint32_t columns() const { return bits_.columns(); }

 private:
  // A byte a bit: masks are read pixel by pixel beside the maps, and this keeps the addressing the same.
  AMatrix<unsigned char> bits_;
};

}  // namespace lumo
