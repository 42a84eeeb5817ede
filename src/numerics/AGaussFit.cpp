// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/AGaussFit.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

constexpr double kSmallestExponent = -10000.0;

}  // namespace

double AGaussFit::valueAt(const double& x) const {
  return amplitude_ * std::exp(std::max(-(x * x) * b_, kSmallestExponent));
}

void AGaussFit::add(double x, double y) {
  const double lnY = std::log(y);
  const double x2 = x * x;
  ++count_;
  sumLnY_ += lnY;
  sumX2_ += x2;
  sumX2LnY_ += x2 * lnY;
  sumX4_ += x2 * x2;
}

void AGaussFit::solve() {
  const double m = count_;
  b_ = (sumX2LnY_ - sumX2_ * sumLnY_ / m) / (sumX2_ * sumX2_ / m - sumX4_);
  amplitude_ = std::exp((b_ * sumX2_ + sumLnY_) / m);
}

}  // namespace lumo
