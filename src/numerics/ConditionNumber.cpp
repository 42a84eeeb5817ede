// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/ConditionNumber.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace lumo {

double conditionNumber(std::vector<double> matrix, std::size_t n) {
  const auto at = [&matrix, n](std::size_t i, std::size_t j) -> double& { return matrix[i * n + j]; };
  for (const double element : matrix)
    if (!std::isfinite(element)) return std::numeric_limits<double>::quiet_NaN();
  constexpr int kSweeps = 30;  // some six are enough
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    for (std::size_t p = 0; p < n; ++p) {
      for (std::size_t q = p + 1; q < n; ++q) {
        if (at(p, q) == 0) continue;
        const double theta = (at(q, q) - at(p, p)) / (2 * at(p, q));
        const double t = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::hypot(theta, 1.0));
        const double c = 1 / std::hypot(t, 1.0);
        const double s = t * c;
        for (std::size_t k = 0; k < n; ++k) {
          const double kp = at(k, p), kq = at(k, q);
          at(k, p) = c * kp - s * kq;
          at(k, q) = s * kp + c * kq;
        }
        for (std::size_t k = 0; k < n; ++k) {
          const double pk = at(p, k), qk = at(q, k);
          at(p, k) = c * pk - s * qk;
          at(q, k) = s * pk + c * qk;
        }
        at(p, q) = at(q, p) = 0;
      }
    }
  }
  double smallest = std::numeric_limits<double>::infinity();
  double largest = 0;
  for (std::size_t i = 0; i < n; ++i) {
    smallest = std::min(smallest, std::abs(at(i, i)));
    largest = std::max(largest, std::abs(at(i, i)));
  }
  // Below the rounding of the largest one an eigenvalue is 0.
  const double rounding = largest * static_cast<double>(n) * std::numeric_limits<double>::epsilon();
  return smallest <= rounding ? std::numeric_limits<double>::infinity() : largest / smallest;
}

}  // namespace lumo
