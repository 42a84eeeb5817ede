// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamNorm.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

constexpr double kFloatRounding = 0x1p-24;
/// More than the smallest positive float.
constexpr double kSmallestFloat = 0x1p-148;
/// Values of W and M outside 1 / kWidest .. kWidest are left to the plain engine.
constexpr double kWidest = 1e30;
/// Well inside the range of a float.
constexpr double kLargest = 1e36;
/// Of M and W: with values of 1 / kWidestSingle .. kWidestSingle and norms of 1 / kLargestSingle ..
/// kLargestSingle no product of S leaves the range of a float, and what underflows is far below the error
/// that is allowed for.
constexpr double kWidestSingle = 1e8;
constexpr double kLargestSingle = 1e8;
/// Of the roundings of S in single precision, N at a time: 4 + 4 sums and products, and W.
constexpr double kSingleRounding = 16.0 * kFloatRounding;
/// Largest deviation of W M from the identity, in units of its terms.
constexpr double kMaxDefect = 1e-3;
/// Covers the roundings of the bounds themselves, some hundred in double.
constexpr double kUp = 1.0 + 1e-9;
/// ||A^(2^k)||_F^(1/2^k) exceeds the spectral radius by at most N^(1/2^(k+1)): 2 % for 4 terms.
constexpr int kSquarings = 5;

bool inRange(double value) {
  return value > 1.0 / kWidest && value < kWidest;
}

}  // namespace

bool BeamNorm::prepare(const APtrArray<AMatrix<float>*>& beams, const BeamMatrix& matrix,
                       std::int32_t terms) {
  if (terms < 1 || terms > kMax) return false;
  terms_ = terms;
  const std::uint32_t row = beams[0]->rows() / 2;
  const std::uint32_t column = beams[0]->columns() / 2;
  for (int i = 0; i < terms_; ++i)
    for (int j = 0; j < terms_; ++j) m_[i][j] = static_cast<double>((*beams[i + j])(row, column));
  const AMatrix<double>& inverse = matrix.inverse();
  return factor(inverse) && measureInverse(inverse) && measureBeams(beams, inverse);
}

bool BeamNorm::factor(const AMatrix<double>& inverse) {
  for (int j = 0; j < terms_; ++j) {
    for (int i = j; i < terms_; ++i) {
      double sum = inverse(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j));
      for (int k = 0; k < j; ++k) sum -= factor_[i][k] * factor_[j][k];
      if (i == j && !(sum > 0.0 && std::isfinite(sum))) return false;
      factor_[i][j] = i == j ? std::sqrt(sum) : sum / factor_[j][j];
    }
  }
  return true;
}

bool BeamNorm::measureInverse(const AMatrix<double>& inverse) {
  double root = 0.0;
  double defect = 0.0;
  singleHolds_ = true;
  for (int i = 0; i < terms_; ++i) {
    const auto row = static_cast<std::uint32_t>(i);
    if (!inRange(m_[i][i]) || !inRange(inverse(row, row))) return false;
    for (const double value : {m_[i][i], inverse(row, row)})
      singleHolds_ = singleHolds_ && value > 1.0 / kWidestSingle && value < kWidestSingle;
    root += std::sqrt(m_[i][i] * inverse(row, row));
    for (int j = 0; j < terms_; ++j) {
      double sum = i == j ? -1.0 : 0.0;
      for (int k = 0; k < terms_; ++k) sum += inverse(row, static_cast<std::uint32_t>(k)) * m_[k][j];
      // W^1/2 M W^1/2 has the eigenvalues of W M, which scaling the terms does not change: they deviate from
      // 1 by at most N times the largest scaled element.
      defect = std::max(defect, std::fabs(sum) * std::sqrt(m_[i][i] / m_[j][j]));
    }
  }
  condition_ = root * root;
  defect *= terms_;
  if (!(condition_ <= kMaxCondition) || !(defect <= kMaxDefect)) return false;
  relativeRounding_ = kUp * 2.0 * kFloatRounding * terms_ * root;
  // D' W^-1 D <= D' M D / (1 - defect); the last term is for the rounding of D' M D.
  stepScale_ = kUp * (1.0 + defect) * (1.0 + 64.0 * 0x1p-53 * condition_);
  return true;
}

bool BeamNorm::measureBeams(const APtrArray<AMatrix<float>*>& beams, const AMatrix<double>& inverse) {
  double largest[2 * kMax - 1] = {};
  float smallest = HUGE_VALF;
  for (int m = 0; m < 2 * terms_ - 1; ++m) {
    const float* const data = beams[m]->data();
    bool finite = true;
    float peak = 0.0F;
    for (std::size_t i = 0; i < beams[m]->size(); ++i) {
      finite = finite && std::isfinite(data[i]);
      const float size = std::fabs(data[i]);
      peak = std::max(peak, size);
      smallest = std::min(smallest, size > 0.0F ? size : HUGE_VALF);
    }
    if (!finite) return false;
    largest[m] = static_cast<double>(peak);
  }
  smallestBeam_ = static_cast<double>(smallest);
  double widestMap = 0.0;
  double widestStep = 0.0;
  stepRounding_ = 0.0;
  absoluteRounding_ = 0.0;
  for (int k = 0; k < terms_; ++k) {
    const double rootW = std::sqrt(inverse(static_cast<std::uint32_t>(k), static_cast<std::uint32_t>(k)));
    double moved = 0.0;
    for (int j = 0; j < terms_; ++j)
      moved +=
          largest[k + j] * std::sqrt(inverse(static_cast<std::uint32_t>(j), static_cast<std::uint32_t>(j)));
    stepRounding_ += kUp * 2.0 * kFloatRounding * terms_ * rootW * moved;
    absoluteRounding_ += kUp * terms_ * rootW * kSmallestFloat;
    widestMap = std::max(widestMap, std::sqrt(m_[k][k]));
    widestStep = std::max({widestStep, moved, rootW});
  }
  limit_ = kLargest / (widestMap + widestStep);
  return std::isfinite(stepRounding_) && limit_ > 0.0;
}

double BeamNorm::singleError(double x) const {
  // A larger error would leave little of a bound that is formed with it.
  constexpr double kLargestShare = 0.01;
  if (!singleHolds_ || kSingleRounding * condition_ > kLargestShare ||
      !(x > 1.0 / kLargestSingle && x < kLargestSingle))
    return HUGE_VAL;
  // sum_jk |r_j W_jk r_k| <= condition |r|^2
  return kUp * kSingleRounding * condition_ * x * x;
}

double BeamNorm::stepNorm(const double* increments) const {
  double sum = 0.0;
  double size = 0.0;
  for (int i = 0; i < terms_; ++i) {
    for (int j = 0; j < terms_; ++j) sum += increments[i] * m_[i][j] * increments[j];
    size += std::fabs(increments[i]) * std::sqrt(m_[i][i]);
  }
  // Increments that all but cancel in the norm leave rounding errors of their size.
  return stepScale_ * std::sqrt(std::max(sum, 0.0) + 64.0 * 0x1p-53 * size * size);
}

void BeamNorm::form(const double* beamValues, double (&a)[kMax][kMax]) const {
  double product[kMax][kMax];
  for (int i = 0; i < terms_; ++i)
    for (int l = 0; l < terms_; ++l) {
      product[i][l] = 0.0;
      for (int j = l; j < terms_; ++j) product[i][l] += beamValues[i + j] * factor_[j][l];
    }
  for (int l = 0; l < terms_; ++l)
    for (int n = 0; n < terms_; ++n) {
      a[l][n] = 0.0;
      for (int i = l; i < terms_; ++i) a[l][n] += factor_[i][l] * product[i][n];
    }
}

void BeamNorm::quickFourths(const float* const* beams, std::size_t count, double* fourths) const {
  switch (terms_) {
    case 1:
      return quickFourthsOf<1>(beams, count, fourths);
    case 2:
      return quickFourthsOf<2>(beams, count, fourths);
    case 3:
      return quickFourthsOf<3>(beams, count, fourths);
    default:
      return quickFourthsOf<4>(beams, count, fourths);
  }
}

template <int kTerms>
void BeamNorm::quickFourthsOf(const float* const* beams, std::size_t count, double* fourths) const {
  // Offset by offset inside, so that the compiler makes vectors of them.
  double values[2 * kTerms - 1][kMostQuick];
  for (int m = 0; m < 2 * kTerms - 1; ++m)
    for (std::size_t e = 0; e < count; ++e) values[m][e] = static_cast<double>(beams[m][e]);
  double a[kTerms][kTerms][kMostQuick];  // G'B G, which is symmetric
  for (int n = 0; n < kTerms; ++n) {
    double column[kTerms][kMostQuick];  // of B G
    for (int i = 0; i < kTerms; ++i) {
      for (std::size_t e = 0; e < count; ++e) column[i][e] = values[i + n][e] * factor_[n][n];
      for (int j = n + 1; j < kTerms; ++j)
        for (std::size_t e = 0; e < count; ++e) column[i][e] += values[i + j][e] * factor_[j][n];
    }
    for (int l = 0; l <= n; ++l) {
      for (std::size_t e = 0; e < count; ++e) a[l][n][e] = factor_[l][l] * column[l][e];
      for (int i = l + 1; i < kTerms; ++i)
        for (std::size_t e = 0; e < count; ++e) a[l][n][e] += factor_[i][l] * column[i][e];
    }
  }
  std::fill_n(fourths, count, 0.0);
  for (int l = 0; l < kTerms; ++l) {
    for (int n = l; n < kTerms; ++n) {
      double element[kMostQuick] = {};  // of the square
      for (int k = 0; k < kTerms; ++k) {
        const double* const left = a[std::min(l, k)][std::max(l, k)];
        const double* const right = a[std::min(n, k)][std::max(n, k)];
        for (std::size_t e = 0; e < count; ++e) element[e] += left[e] * right[e];
      }
      const double weight = (l == n ? 1.0 : 2.0) * kUp;
      for (std::size_t e = 0; e < count; ++e) fourths[e] += weight * element[e] * element[e];
    }
  }
}

double BeamNorm::reach(const double* beamValues) const {
  double a[kMax][kMax];
  form(beamValues, a);
  double norms[kSquarings + 1];
  for (int step = 0;; ++step) {
    double sum = 0.0;
    for (int i = 0; i < terms_; ++i)
      for (int j = 0; j < terms_; ++j) sum += a[i][j] * a[i][j];
    norms[step] = std::sqrt(sum);
    if (norms[step] == 0.0) return 0.0;
    if (step == kSquarings) break;
    double square[kMax][kMax];
    for (int i = 0; i < terms_; ++i)
      for (int j = 0; j < terms_; ++j) {
        square[i][j] = 0.0;
        for (int k = 0; k < terms_; ++k) square[i][j] += (a[i][k] / norms[step]) * (a[k][j] / norms[step]);
      }
    std::copy(&square[0][0], &square[0][0] + std::ptrdiff_t{kMax} * kMax, &a[0][0]);
  }
  double radius = norms[kSquarings];
  for (int step = kSquarings - 1; step >= 0; --step) radius = norms[step] * std::sqrt(radius);
  return kUp * radius;
}

}  // namespace lumo
