// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "clean/BeamMatrix.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"

namespace lumo {

/// The norm |r| = sqrt(r' W r) of the N residuals of a pixel, in which the score of a CLEAN step is measured,
/// and how far a step of increments D can move them in it. For 1 to 4 terms.
///
/// With B[i][j] = beam i + j at the pixel's offset from the peak, the step moves r by B D. Put D = W^1/2 y:
/// then |B D| = |W^1/2 B W^1/2 y| (Euclidean), |y|^2 = D' W^-1 D, and therefore
///
///     |r - B D| <= |r| + nu(B) d,   d = sqrt(D' W^-1 D),   nu(B) = spectral radius of W B.
///
/// Rounding. Let u = 2^-24, the error of one rounding to float (those in double are 2^-29 of it and are
/// covered by doubling u). A step rounds each r_k N times, and every value so rounded is at most |r_k| +
/// sum_j |b_{k+j}| |D_j| in size, where |r_k| <= sqrt(M_kk) |r| and |D_j| <= sqrt(W_jj) d. An error e_k of
/// r_k alone has norm sqrt(W_kk) |e_k|. With b_m the largest value of |beam m| anywhere, the roundings of one
/// step move r by at most
///
///     relativeRounding |r| + stepRounding d + absoluteRounding,
///     relativeRounding = 2 u N sum_k sqrt(W_kk M_kk),   stepRounding = 2 u N sum_kj sqrt(W_kk) b_{k+j}
///     sqrt(W_jj),
///
/// where the last term is for values too small for a relative error.
class BeamNorm {
 public:
  /// @return false when the norm cannot be used: a beam value that is not finite, a W that is not positive
  ///   definite or too badly conditioned to bound the roundings of a score (kMaxCondition), or scales at
  ///   which squares may leave the range of a double.
  [[nodiscard]] bool prepare(const APtrArray<AMatrix<float>*>& beams, const BeamMatrix& matrix,
                             std::int32_t terms);

  /// Upper bound of d of N increments.
  [[nodiscard]] double stepNorm(const double* increments) const;
  /// Upper bound of nu for the 2 N - 1 beam values of one offset, at most 2 % above it; 0 only for zeros.
  [[nodiscard]] double reach(const double* beamValues) const;
  /// Fourth powers of quick upper bounds of nu, for `count` <= kMostQuick offsets that follow each other: the
  /// squared Frobenius norm of the square of the matrix whose radius nu is, at most N nu^4. May be 0 where
  /// nu is below 1e-70.
  /// @param beams the first of them in each of the 2 N - 1 beams.
  void quickFourths(const float* const* beams, std::size_t count, double* fourths) const;

  [[nodiscard]] double relativeRounding() const { return relativeRounding_; }
  [[nodiscard]] double stepRounding() const { return stepRounding_; }
  [[nodiscard]] double absoluteRounding() const { return absoluteRounding_; }
  /// (sum_k sqrt(W_kk M_kk))^2: a score formed in double is wrong by at most a few 2^-53 times this, relative
  /// to |r|^2.
  [[nodiscard]] double condition() const { return condition_; }
  /// By how much S = r' W r may be larger than what is formed in single precision, with at most 16 roundings
  /// of any of its terms; infinite where that cannot tell.
  /// @param x upper bound of |r|.
  [[nodiscard]] double singleError(double x) const;
  /// Bound of |r| and of d below which no residual can leave the range of a float.
  [[nodiscard]] double limit() const { return limit_; }

  /// Smallest |value| of all beams that is not 0, infinity where all are 0.
  [[nodiscard]] double smallestBeam() const { return smallestBeam_; }

  static constexpr double kMaxCondition = 1e7;
  static constexpr std::size_t kMostQuick = 32;

 private:
  static constexpr int kMax = 4;
  [[nodiscard]] bool factor(const AMatrix<double>& inverse);
  [[nodiscard]] bool measureInverse(const AMatrix<double>& inverse);
  [[nodiscard]] bool measureBeams(const APtrArray<AMatrix<float>*>& beams, const AMatrix<double>& inverse);
  template <int kTerms>
  void quickFourthsOf(const float* const* beams, std::size_t count, double* fourths) const;
  void form(const double* beamValues, double (&a)[kMax][kMax]) const;

  int terms_ = 0;
  double m_[kMax][kMax] = {};       ///< M
  double factor_[kMax][kMax] = {};  ///< lower triangle G, W = G G'
  double stepScale_ = 1.0;          ///< covers that W is M^-1 only up to rounding
  double relativeRounding_ = 0.0;
  double stepRounding_ = 0.0;
  double absoluteRounding_ = 0.0;
  bool singleHolds_ = false;
  double condition_ = 0.0;
  double limit_ = 0.0;
  double smallestBeam_ = 0.0;
};

}  // namespace lumo
