// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "numerics/ABAproximation.h"

namespace lumo {

/// Power law S = A x^alpha; with x a frequency, alpha is the spectral index. Computed in double.
class AAproxPower final : public ABAproximation {
 public:
  /// A pow(x, alpha).
  [[nodiscard]] double valueAt(float x) const override;

  /// Straight-line regression of ln y on ln x, all points with the same weight.
  ///
  /// An x or y of exactly 0 takes the logarithm -100, so that one empty point does not make the sums
  /// infinite. A negative x or y makes both parameters NaN. So does an empty range; equal abscissae make them
  /// NaN or infinite.
  /// @return always 0.
  int fit(const float* x, const float* y, int first, int last) override;

  /// A, the value at x = 1; 1 before the first fit.
  [[nodiscard]] double amplitude() const { return amplitude_; }
  /// The exponent; 1 before the first fit.
  [[nodiscard]] double alpha() const { return alpha_; }

 private:
  double amplitude_ = 1.0;
  double alpha_ = 1.0;
};

}  // namespace lumo
