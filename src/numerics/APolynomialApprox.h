// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "numerics/AAproximation.h"

namespace lumo {

/// Polynomial coef[0] + coef[1] x + coef[2] x^2 + ... in the abscissa as it stands.
///
/// For abscissae far from 0, or more than about four terms, AChebyshevApprox spans the same curves and keeps
/// its digits.
class APolynomialApprox final : public AAproximation {
 public:
  using AAproximation::AAproximation;

 protected:
  void basisAt(float* out, int n, float t) const override;
};

}  // namespace lumo
