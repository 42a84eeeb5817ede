// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "analysis/SpectrumCurve.h"

namespace lumo {

/// A polynomial in log-log through the points of a spectrum:
///
///     ln S = coef[0] + coef[1] u + coef[2] u^2 + ...,   u = ln(freq / refFreq)
///
/// Of order 1 it is the power law, coef[1] its spectral index; of order 2 coef[2] is the curvature of the
/// spectrum.
struct SpectrumFit {
  double refFreq = 0.0;      ///< Hz; the middle of the points in the logarithm
  std::vector<double> coef;  ///< empty: the points did not allow a fit

  [[nodiscard]] bool isFitted() const { return !coef.empty(); }
  /// NaN without a fit and for frequencies that are not positive.
  [[nodiscard]] double valueAt(double freq) const;
  /// "index -0.7, curvature 0.1 at 1500 MHz", or why there is no fit.
  [[nodiscard]] std::string text() const;
  /// The fit at SpectrumCurve::kSampleCount frequencies in equal steps of the logarithm over the positive
  /// ones of the curve; empty without a fit.
  [[nodiscard]] std::vector<SpectrumSample> samples(const SpectrumCurve& curve) const;
};

/// Fits a polynomial of `order` (1 or more) by least squares, all points with the same weight. Points whose
/// frequency or flux density is not a positive number have no logarithm and are left out. No fit with fewer
/// than order + 1 points left, or with all of them at fewer frequencies than that.
///
/// The sums are single precision, over arguments scaled to [-1, 1] and ordinates about their mean: flux
/// densities come out to about a millionth of the spectrum's span of ln S.
[[nodiscard]] SpectrumFit fitLogLog(const SpectrumCurve& curve, int order);

}  // namespace lumo
