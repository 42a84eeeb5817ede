// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// A curve through given points.
class AInterpolate {
 public:
  AInterpolate() = default;
  AInterpolate(const AInterpolate&) = default;
  AInterpolate& operator=(const AInterpolate&) = default;
  virtual ~AInterpolate() = default;

  /// The curve's value at t.
  [[nodiscard]] virtual double valueAt(double t) const = 0;
};

}  // namespace lumo
