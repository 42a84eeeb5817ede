// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// Part of a matrix, all four bounds inclusive. The whole of R × C is (0, 0, R-1, C-1).
struct AMatrixRect {
  AMatrixRect(std::int32_t firstRowIndex, std::int32_t firstColumnIndex, std::int32_t lastRowIndex,
              std::int32_t lastColumnIndex)
      : firstRow(firstRowIndex),
        firstColumn(firstColumnIndex),
        lastRow(lastRowIndex),
        lastColumn(lastColumnIndex) {}

  std::int32_t firstRow;
  std::int32_t firstColumn;
  std::int32_t lastRow;
  std::int32_t lastColumn;
};

}  // namespace lumo
