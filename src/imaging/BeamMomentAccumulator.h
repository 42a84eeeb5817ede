// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// Second moments of a weighted set of uv points, and the elliptical Gaussian beam that matches them: the
/// transform of a Gaussian coverage of spread σ wavelengths is a Gaussian of 77304.18…/σ arcseconds full
/// width at half maximum (206264.8… · sqrt(8 ln 2) / 2π).
class BeamMomentAccumulator {
 public:
  /// Adds a point (wavelengths) with its weight.
  void add(double x, double y, double weight) {
    sumXX_ += weight * x * x;
    sumYY_ += weight * y * y;
    sumXY_ += weight * x * y;
    sumY_ += weight * y;
    sumX_ += weight * x;
    sum_ += weight;
  }
  /// Computes the three results. Returns 0, leaving them unset, when the points have no weight or no extent
  /// in x or y: no beam fits them. Points on one slanted line give 0 or, where rounding hides the line, a
  /// first width many orders of magnitude above the second.
  int solve();

  [[nodiscard]] double sumOfWeights() const { return sum_; }
  /// Degrees, from +y through +x, −90 .. 90.
  [[nodiscard]] double positionAngle() const { return positionAngle_; }
  /// Full widths at half maximum, arcseconds; the first is not below the second.
  [[nodiscard]] double firstWidth() const { return firstWidth_; }
  [[nodiscard]] double secondWidth() const { return secondWidth_; }

 private:
  double sumXX_ = 0, sumYY_ = 0, sumXY_ = 0, sumY_ = 0, sumX_ = 0, sum_ = 0;
  double positionAngle_ = 0, secondWidth_ = 0, firstWidth_ = 0;
};

}  // namespace lumo
