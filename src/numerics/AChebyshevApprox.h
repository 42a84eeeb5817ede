// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "numerics/AAproximation.h"

namespace lumo {

/// Chebyshev series coef[0] T_0(t) + coef[1] T_1(t) + ..., t running over [-1, 1] on the fitted points.
///
/// The coefficients belong to t, so scale() and offset() are part of the result. Points with one and the same
/// abscissa give their mean with one term and code 4 with more.
class AChebyshevApprox final : public AAproximation {
 public:
  using AAproximation::AAproximation;

 protected:
  void basisAt(float* out, int n, float t) const override;
  void scaleArgument(const float* x, const float* y, int first, int last) override;
};

}  // namespace lumo
