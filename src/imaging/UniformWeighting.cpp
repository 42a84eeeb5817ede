// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UniformWeighting.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

/// Cells from (row, column) on, `rows` by `columns` of them.
struct Block {
  std::uint32_t row, column, rows, columns;
};

std::uint32_t blockLength(double box, std::uint32_t size) {
  if (!(box > 0)) return size;
  // At most the grid; at least one cell, though boxes above 2 are refused long before.
  return static_cast<std::uint32_t>(std::clamp(std::trunc(1 / box + 0.5), 1.0, static_cast<double>(size)));
}

template <typename T>
T blockSum(const AMatrix<T>& grid, const Block& block) {
  T sum{};
  for (std::uint32_t r = block.row; r < block.row + block.rows; ++r)
    for (std::uint32_t c = block.column; c < block.column + block.columns; ++c) sum += grid(r, c);
  return sum;
}

void flatten(AMatrix<Complex>& grid, const Block& block, double kernelSum) {
  const Complex value = blockSum(grid, block) / kernelSum;
  for (std::uint32_t r = block.row; r < block.row + block.rows; ++r)
    std::fill_n(&grid(r, block.column), block.columns, value);
}

}  // namespace

void applyUniformWeighting(const ABMakeParameters& parameters, const AMatrix<double>& kernelSums,
                           SpectralGridSet& grids) {
  const std::uint32_t height = blockLength(parameters.uniformBoxV, kernelSums.rows());
  const std::uint32_t width = blockLength(parameters.uniformBoxU, kernelSums.columns());
  for (std::uint32_t row = 0; row < kernelSums.rows(); row += height) {
    for (std::uint32_t column = 0; column < kernelSums.columns(); column += width) {
      const Block block{row, column, std::min(height, kernelSums.rows() - row),
                        std::min(width, kernelSums.columns() - column)};
      const double kernelSum = blockSum(kernelSums, block);
      if (!(kernelSum > 0)) continue;
      for (auto& grid : grids.beams) flatten(grid, block, kernelSum);
      for (auto& grid : grids.dirty) flatten(grid, block, kernelSum);
    }
  }
}

}  // namespace lumo
