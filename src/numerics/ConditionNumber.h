// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <vector>

namespace lumo {

/// 2-norm condition of a symmetric matrix [n][n], row by row: the ratio of its largest to its smallest
/// eigenvalue by magnitude. Infinite for a singular matrix, NaN when an element is not finite. For small n:
/// the cost grows with its cube.
/// Source: Golub & Van Loan, "Matrix Computations", Jacobi methods.
[[nodiscard]] double conditionNumber(std::vector<double> matrix, std::size_t n);

}  // namespace lumo
