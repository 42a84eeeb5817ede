// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/A3DBFunc.h"

namespace lumo {

namespace {

/// trunc(extent / step + 0.5) within 0 .. limit. Compared before it is converted: a beam of a damaged header
/// may be of any size, and a map of one pixel has no step.
std::uint32_t pixels(double extent, double step, std::uint32_t limit) {
  const double count = extent / step + 0.5;
  if (!(count >= 1.0)) return 0;
  return count >= static_cast<double>(limit) ? limit : static_cast<std::uint32_t>(count);
}

std::uint32_t oddCount(std::uint32_t full) {
  return (full & ~std::uint32_t{1}) + 1;
}

}  // namespace

double A3DBFunc::Value(double /*x*/, double /*y*/) const {
  return 1.0;
}

double A3DBFunc::FourierValue(double /*u*/, double /*v*/) const {
  return 1.0;
}

std::unique_ptr<AMatrix<float>> A3DBFunc::MakeMatrix(double dx, double dy) const {
  return MakeMatrix(dx, dy, kMaxHalfSize, kMaxHalfSize);
}

std::unique_ptr<AMatrix<float>> A3DBFunc::MakeMatrix(double dx, double dy, std::uint32_t maxHalfRows,
                                                     std::uint32_t maxHalfColumns) const {
  return sample(dx, dy, 2 * pixels(GetSizeY(), dy, maxHalfRows) + 1,
                2 * pixels(GetSizeX(), dx, maxHalfColumns) + 1);
}

std::unique_ptr<AMatrix<float>> A3DBFunc::MakeMatrixFull(double dx, double dy) const {
  return sample(dx, dy, oddCount(pixels(GetSizeY(), dy, 2 * kMaxHalfSize)),
                oddCount(pixels(GetSizeX(), dx, 2 * kMaxHalfSize)));
}

std::unique_ptr<AMatrix<float>> A3DBFunc::sample(double dx, double dy, std::uint32_t rows,
                                                 std::uint32_t columns) const {
  auto matrix = std::make_unique<AMatrix<float>>(rows, columns);
  const std::int64_t middleRow = rows / 2;
  const std::int64_t middleColumn = columns / 2;
  for (std::uint32_t row = 0; row < rows; ++row) {
    const double y = static_cast<double>(row - middleRow) * dy;
    for (std::uint32_t column = 0; column < columns; ++column)
      (*matrix)(row, column) = static_cast<float>(Value(static_cast<double>(column - middleColumn) * dx, y));
  }
  return matrix;
}

}  // namespace lumo
