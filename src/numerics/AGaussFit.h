// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// Centred Gaussian y = A exp(-b x^2), fitted as the straight-line regression of ln y on x^2.
///
///     add() for every point, then solve(), then valueAt()
class AGaussFit {
 public:
  AGaussFit() = default;
  AGaussFit(const AGaussFit&) = default;
  AGaussFit& operator=(const AGaussFit&) = default;
  virtual ~AGaussFit() = default;

  /// The fitted Gaussian, its exponent cut at -10000.
  [[nodiscard]] virtual double valueAt(const double& x) const;

  /// Adds a point. A y of 0 makes the sums infinite, a negative one NaN, and so the result: the caller leaves
  /// such points out.
  void add(double x, double y);

  /// Computes A and b. They are NaN or infinite unless two points differ in x^2.
  void solve();

  /// A, the value at 0; b, ln 2 over the square of the half width at half maximum. Both 0 before solve().
  [[nodiscard]] double amplitude() const { return amplitude_; }
  [[nodiscard]] double b() const { return b_; }

  [[nodiscard]] double sumX2() const { return sumX2_; }
  [[nodiscard]] double sumX4() const { return sumX4_; }
  [[nodiscard]] double sumLnY() const { return sumLnY_; }
  [[nodiscard]] double sumX2LnY() const { return sumX2LnY_; }
  [[nodiscard]] std::int32_t count() const { return count_; }

 private:
  double sumX2_ = 0.0;
  double sumX4_ = 0.0;
  double sumLnY_ = 0.0;
  double sumX2LnY_ = 0.0;
  double amplitude_ = 0.0;
  double b_ = 0.0;
  std::int32_t count_ = 0;
};

}  // namespace lumo
