// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamMatrix.h"

#include <cmath>

namespace lumo {

namespace {

AMatrix<double> centreValues(const APtrArray<AMatrix<float>*>& beams, std::uint32_t terms) {
  const std::uint32_t row = beams[0]->rows() / 2;
  const std::uint32_t column = beams[0]->columns() / 2;
  AMatrix<double> m(terms, terms);
  for (std::uint32_t i = 0; i < terms; ++i)
    for (std::uint32_t j = 0; j < terms; ++j)
      m(i, j) = static_cast<double>((*beams[static_cast<std::int32_t>(i + j)])(row, column));
  return m;
}

/// Replaces the lower triangle of a symmetric matrix by its Cholesky factor L, M = L L^T.
void factor(AMatrix<double>& m) {
  for (std::uint32_t j = 0; j < m.rows(); ++j) {
    for (std::uint32_t i = j; i < m.rows(); ++i) {
      double sum = m(i, j);
      for (std::uint32_t k = 0; k < j; ++k) sum -= m(i, k) * m(j, k);
      m(i, j) = i == j ? std::sqrt(sum) : sum / m(j, j);
    }
  }
}

/// Replaces the lower triangle L by L^-1. Column by column, so that what is still needed of L is still there.
void invertTriangle(AMatrix<double>& l) {
  for (std::uint32_t i = 0; i < l.rows(); ++i) l(i, i) = 1.0 / l(i, i);
  for (std::uint32_t j = 0; j < l.rows(); ++j) {
    for (std::uint32_t i = j + 1; i < l.rows(); ++i) {
      double sum = 0.0;
      for (std::uint32_t k = j; k < i; ++k) sum -= l(i, k) * l(k, j);
      l(i, j) = sum * l(i, i);
    }
  }
}

/// L^-T L^-1 from the lower triangle L^-1.
AMatrix<double> timesTranspose(const AMatrix<double>& l) {
  AMatrix<double> w(l.rows(), l.rows());
  for (std::uint32_t i = 0; i < l.rows(); ++i) {
    for (std::uint32_t j = i; j < l.rows(); ++j) {
      double sum = 0.0;
      for (std::uint32_t k = j; k < l.rows(); ++k) sum += l(k, i) * l(k, j);
      w(i, j) = sum;
      w(j, i) = sum;
    }
  }
  return w;
}

double largestDefect(const AMatrix<double>& w, const AMatrix<double>& m) {
  double largest = 0.0;
  for (std::uint32_t i = 0; i < m.rows(); ++i) {
    for (std::uint32_t j = 0; j < m.rows(); ++j) {
      double sum = 0.0;
      for (std::uint32_t k = 0; k < m.rows(); ++k) sum += w(i, k) * m(k, j);
      const double defect = std::fabs(i == j ? sum - 1.0 : sum);
      if (defect > largest || std::isnan(defect)) largest = defect;
    }
  }
  return largest;
}

}  // namespace

double BeamMatrix::prepare(const APtrArray<AMatrix<float>*>& beams, std::int32_t terms) {
  const AMatrix<double> m = centreValues(beams, static_cast<std::uint32_t>(terms));
  AMatrix<double> triangle = m;
  factor(triangle);
  invertTriangle(triangle);
  inverse_ = timesTranspose(triangle);

  q_ = 1.0 / inverse_(0, 0);
  constraint_ = AArray<double>(terms);
  constraint_[0] = 1.0;
  for (std::int32_t j = 1; j < terms; ++j) constraint_[j] = inverse_(0, static_cast<std::uint32_t>(j)) * q_;
  return largestDefect(inverse_, m);
}

}  // namespace lumo
