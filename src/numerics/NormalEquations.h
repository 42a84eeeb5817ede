// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "core/AMatrix.h"

namespace lumo {

/// Normal equations of an unweighted linear least-squares fit, accumulated and eliminated in single
/// precision.
///
///     add() for every point, then solve() once
class NormalEquations {
 public:
  /// All zero, for `termCount` >= 1 coefficients.
  explicit NormalEquations(std::uint32_t termCount);

  /// Adds one point: basis[j] basis[k] to the matrix, basis[j] y to the right-hand side; basis is
  /// [termCount].
  void add(const float* basis, float y);

  /// Gaussian elimination with partial pivoting: of rows with equally large elements the upper one is the
  /// pivot. Only the sums of the back substitution are double. Overwrites the equations.
  /// @param coef [termCount], written on success.
  /// @return false if a pivot is below 1e-15 in absolute value.
  [[nodiscard]] bool solve(float* coef);

 private:
  [[nodiscard]] std::uint32_t pivotRow(std::uint32_t column) const;
  void swapRows(std::uint32_t a, std::uint32_t b);
  void eliminateBelow(std::uint32_t pivot);
  void substituteBack(float* coef) const;

  AMatrix<float> normal_;  ///< [termCount][termCount], symmetric until it is eliminated
  std::vector<float> rhs_;
};

}  // namespace lumo
