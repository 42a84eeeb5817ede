// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "core/AArray.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"

namespace lumo {

/// The coupling of the spectral terms at one pixel, solved once for all pixels.
///
/// A unit of term j puts B_{i+j}(centre) into residual map i at its own pixel, so the residuals r there and
/// the term values a that explain them obey M a = r with M[i][j] = B_{i+j}(centre). All arithmetic is in
/// double.
class BeamMatrix {
 public:
  /// Forms M from the centre pixels (rows / 2, columns / 2 of beam 0) of `beams` 0 .. 2 * terms - 2 and
  /// inverts it by Cholesky factorisation. terms >= 1, all beams of one size.
  ///
  /// @return the largest |W M - I|, NaN when an element is NaN.
  /// M is not tested: one that is singular or not positive definite yields infinities or NaN, and these are
  /// meant to reach the maps, where they show that the run failed.
  double prepare(const APtrArray<AMatrix<float>*>& beams, std::int32_t terms);

  /// W = M^-1, terms x terms, symmetric to the bit.
  [[nodiscard]] const AMatrix<double>& inverse() const { return inverse_; }
  /// Change of every term per unit change of term 0 when the pixel is solved again with term 0 held:
  /// v_0 = 1, v_j = W[0][j] / W[0][0].
  [[nodiscard]] const AArray<double>& constraint() const { return constraint_; }
  /// q = 1 / W[0][0].
  [[nodiscard]] double q() const { return q_; }

 private:
  AMatrix<double> inverse_;
  AArray<double> constraint_;
  double q_ = 0.0;
};

}  // namespace lumo
