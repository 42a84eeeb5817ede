// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/AAproxPower.h"

#include <cmath>

namespace lumo {

namespace {

constexpr double kLogOfZero = -100.0;

double logOf(float value) {
  return value == 0.0F ? kLogOfZero : std::log(static_cast<double>(value));
}

}  // namespace

double AAproxPower::valueAt(float x) const {
  return amplitude_ * std::pow(static_cast<double>(x), alpha_);
}

int AAproxPower::fit(const float* x, const float* y, int first, int last) {
  const double n = static_cast<double>(last) - first + 1.0;
  double sx = 0.0;
  double sy = 0.0;
  double sxy = 0.0;
  double sxx = 0.0;
  for (int i = first; i <= last; ++i) {
    const double u = logOf(x[i]);
    const double v = logOf(y[i]);
    sx += u;
    sy += v;
    sxy += u * v;
    sxx += u * u;
  }
  alpha_ = (sy * sx / n - sxy) / (sx * sx / n - sxx);
  amplitude_ = std::exp((sy - alpha_ * sx) / n);
  return 0;
}

}  // namespace lumo
