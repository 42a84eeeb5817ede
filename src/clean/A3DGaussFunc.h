// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "clean/A3DBFunc.h"

namespace lumo {

/// Elliptical Gaussian of peak 1 at the origin, the model of the restoring beam.
class A3DGaussFunc final : public A3DBFunc {
 public:
  /// @param widthX, widthY full widths at half maximum along the ellipse's own x and y axes.
  /// @param angle radians by which the ellipse's x axis is turned from x towards y. With y to the north and x
  ///   to the east, a position angle p (north through east) of the first width is the angle 90 degrees - p.
  /// Widths of 0 give the value exp(-600) everywhere, which is 0 in single precision.
  A3DGaussFunc(double widthX, double widthY, double angle);

  /// Half width that holds the function out to four standard deviations along the ellipse's axes.
  [[nodiscard]] double GetSizeX() const override;
  [[nodiscard]] double GetSizeY() const override;
  /// exp of the exponent, which is cut at -600; an exponent that is not a number counts as -600.
  [[nodiscard]] double Value(double x, double y) const override;
  /// exp(-(sigma_x^2 u^2 + sigma_y^2 v^2) / 4), the exponent cut at -600; the angle does not enter.
  [[nodiscard]] double FourierValue(double u, double v) const override;

 private:
  double sigmaX_;
  double sigmaY_;
  double theta_;  ///< minus the angle
};

}  // namespace lumo
