// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <vector>

#include "numerics/AInterpolate.h"

namespace lumo {

/// Natural cubic spline: twice continuously differentiable, without curvature at its two free ends.
///
/// On segment j, with u = t - x[j], it is y[j] + b[j] u + c[j] u^2 + d[j] u^3. The points are not copied: the
/// caller keeps x and y alive and unchanged while the spline is in use. Any number of threads may evaluate
/// it.
class ACubicSlineFree final : public AInterpolate {
 public:
  /// @param x [n], strictly ascending.
  /// @param y [n].
  /// Solves at once, in O(n). One point gives a constant; n below 1 a spline that is NaN everywhere.
  ACubicSlineFree(const double* x, const double* y, int n);

  /// Gives the spline new points and solves again; the arrays are allocated anew only if n changes.
  void setPoints(const double* x, const double* y, int n);

  /// A knot belongs to the segment on its left. Outside the points the first and the last cubic are
  /// continued.
  [[nodiscard]] double valueAt(double t) const override;

  /// Linear, quadratic and cubic coefficients, [n]. Only the first n - 1 have a segment; c[n - 1] is half the
  /// second derivative at the last knot, 0.
  [[nodiscard]] std::span<const double> b() const { return b_; }
  [[nodiscard]] std::span<const double> c() const { return c_; }
  [[nodiscard]] std::span<const double> d() const { return d_; }

 private:
  void allocate(int n);
  void solve();
  [[nodiscard]] int segmentOf(double t) const;

  std::vector<double> b_;  ///< the eliminated right-hand sides while solving
  std::vector<double> d_;  ///< the eliminated upper diagonal while solving
  std::vector<double> c_;
  const double* x_;
  const double* y_;
  int n_ = 0;
};

}  // namespace lumo
