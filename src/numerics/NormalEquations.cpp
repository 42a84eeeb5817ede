// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/NormalEquations.h"

#include <cmath>
#include <utility>

namespace lumo {

namespace {

constexpr double kSingular = 1e-15;

double magnitude(float element) {
  return std::fabs(static_cast<double>(element));
}

}  // namespace

NormalEquations::NormalEquations(std::uint32_t termCount) : normal_(termCount, termCount), rhs_(termCount) {}

void NormalEquations::add(const float* basis, float y) {
  const std::uint32_t terms = normal_.rows();
  for (std::uint32_t j = 0; j < terms; ++j) {
    rhs_[j] += basis[j] * y;
    for (std::uint32_t k = j; k < terms; ++k) {
      const float product = basis[j] * basis[k];
      normal_(j, k) += product;
      if (k != j) normal_(k, j) += product;
    }
  }
}

bool NormalEquations::solve(float* coef) {
  const std::uint32_t terms = normal_.rows();
  if (terms == 1) {
    // Written this way round, so that a sum that is not a number counts as singular.
    if (!(magnitude(normal_(0, 0)) >= kSingular)) return false;
    coef[0] = rhs_[0] / normal_(0, 0);
    return true;
  }
  for (std::uint32_t column = 0; column + 1 < terms; ++column) {
    const std::uint32_t row = pivotRow(column);
    if (row != column) swapRows(row, column);
    if (magnitude(normal_(column, column)) < kSingular) return false;
    eliminateBelow(column);
  }
  if (magnitude(normal_(terms - 1, terms - 1)) < kSingular) return false;
  substituteBack(coef);
  return true;
}

std::uint32_t NormalEquations::pivotRow(std::uint32_t column) const {
  std::uint32_t best = column;
  for (std::uint32_t row = column + 1; row < normal_.rows(); ++row)
    if (magnitude(normal_(row, column)) > magnitude(normal_(best, column))) best = row;
  return best;
}

void NormalEquations::swapRows(std::uint32_t a, std::uint32_t b) {
  for (std::uint32_t k = 0; k < normal_.columns(); ++k) std::swap(normal_(a, k), normal_(b, k));
  std::swap(rhs_[a], rhs_[b]);
}

void NormalEquations::eliminateBelow(std::uint32_t pivot) {
  for (std::uint32_t row = pivot + 1; row < normal_.rows(); ++row) {
    if (!(magnitude(normal_(row, pivot)) > kSingular)) continue;
    const float factor = -normal_(row, pivot) / normal_(pivot, pivot);
    for (std::uint32_t k = pivot; k < normal_.columns(); ++k) normal_(row, k) += factor * normal_(pivot, k);
    rhs_[row] += factor * rhs_[pivot];
  }
}

void NormalEquations::substituteBack(float* coef) const {
  const std::uint32_t terms = normal_.rows();
  for (std::uint32_t i = terms; i-- > 0;) {
    double sum = 0.0;
    for (std::uint32_t k = i + 1; k < terms; ++k) sum += static_cast<double>(normal_(i, k)) * coef[k];
    coef[i] = static_cast<float>((rhs_[i] - sum) / normal_(i, i));
  }
}

}  // namespace lumo
