// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/A3DGaussFunc.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

/// Standard deviation per full width at half maximum, 1 / (2 sqrt(2 ln 2)).
constexpr double kSigmaPerWidth = 0.42466090014400953;
constexpr double kSmallestExponent = -600.0;

double cutExponent(double exponent) {
  // Not std::max: what is not a number has to become the bound.
  return exponent > kSmallestExponent ? exponent : kSmallestExponent;
}

}  // namespace

A3DGaussFunc::A3DGaussFunc(double widthX, double widthY, double angle)
    : sigmaX_(widthX * kSigmaPerWidth), sigmaY_(widthY * kSigmaPerWidth), theta_(-angle) {}

double A3DGaussFunc::GetSizeX() const {
  return std::max(std::fabs(4.0 * sigmaX_ * std::cos(theta_)), std::fabs(4.0 * sigmaY_ * std::sin(theta_)));
}

double A3DGaussFunc::GetSizeY() const {
  return std::max(std::fabs(4.0 * sigmaX_ * std::sin(theta_)), std::fabs(4.0 * sigmaY_ * std::cos(theta_)));
}

double A3DGaussFunc::Value(double x, double y) const {
  const double u = (std::cos(theta_) * x - std::sin(theta_) * y) / sigmaX_;
  const double w = (std::sin(theta_) * x + std::cos(theta_) * y) / sigmaY_;
  return std::exp(cutExponent(-0.5 * u * u - 0.5 * w * w));
}

double A3DGaussFunc::FourierValue(double u, double v) const {
  return std::exp(cutExponent(-0.25 * sigmaX_ * sigmaX_ * u * u - 0.25 * sigmaY_ * sigmaY_ * v * v));
}

}  // namespace lumo
