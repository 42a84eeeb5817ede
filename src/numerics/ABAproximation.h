// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// A curve fitted by least squares: fit() once, then valueAt() as often as wanted.
///
/// The base fits nothing and is 0 everywhere.
class ABAproximation {
 public:
  ABAproximation() = default;
  ABAproximation(const ABAproximation&) = default;
  ABAproximation& operator=(const ABAproximation&) = default;
  virtual ~ABAproximation() = default;

  /// The fitted value at x.
  [[nodiscard]] virtual double valueAt(float /*x*/) const { return 0.0; }

  /// Fits over the points (x[i], y[i]) with i = first .. last, both ends included. The arrays are only read,
  /// and only during the call.
  /// @return 0 on success, else the error code of the fitter.
  virtual int fit(const float* /*x*/, const float* /*y*/, int /*first*/, int /*last*/) { return 0; }
};

}  // namespace lumo
