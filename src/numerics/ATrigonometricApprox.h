// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "numerics/AAproximation.h"

namespace lumo {

/// Fourier series coef[0] + coef[1] sin t + coef[2] cos t + coef[3] sin 2t + coef[4] cos 2t + ..., with
/// t = 2 pi x / period.
class ATrigonometricApprox final : public AAproximation {
 public:
  /// @param period of the slowest term, in the unit of the abscissae; not 0.
  ATrigonometricApprox(int termCount, float period);

 protected:
  void basisAt(float* out, int n, float t) const override;
  void scaleArgument(const float* x, const float* y, int first, int last) override;

 private:
  float period_;
};

}  // namespace lumo
