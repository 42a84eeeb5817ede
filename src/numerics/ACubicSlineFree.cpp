// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/ACubicSlineFree.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace lumo {

ACubicSlineFree::ACubicSlineFree(const double* x, const double* y, int n) : x_(x), y_(y) {
  allocate(n);
  solve();
}

void ACubicSlineFree::setPoints(const double* x, const double* y, int n) {
  x_ = x;
  y_ = y;
  if (n != n_) allocate(n);
  solve();
}

void ACubicSlineFree::allocate(int n) {
  const auto size = static_cast<std::size_t>(std::max(n, 0));
  b_ = std::vector<double>(size);
  d_ = std::vector<double>(size);
  c_ = std::vector<double>(size);
  n_ = n;
}

void ACubicSlineFree::solve() {
  if (n_ < 1) return;
  std::vector<double>& z = b_;
  std::vector<double>& mu = d_;
  z[0] = 0.0;
  mu[0] = 0.0;
  for (int i = 1; i + 1 < n_; ++i) {
    const double left = x_[i] - x_[i - 1];
    const double right = x_[i + 1] - x_[i];
    const double both = x_[i + 1] - x_[i - 1];
    const double alpha = 3.0 * (left * y_[i + 1] - both * y_[i] + right * y_[i - 1]) / (left * right);
    const double l = 2.0 * both - left * mu[i - 1];
    mu[i] = right / l;
    z[i] = (alpha - left * z[i - 1]) / l;
  }
  c_[n_ - 1] = 0.0;
  for (int j = n_ - 2; j >= 0; --j) c_[j] = z[j] - mu[j] * c_[j + 1];
  for (int j = n_ - 2; j >= 0; --j) {
    const double h = x_[j + 1] - x_[j];
    b_[j] = (y_[j + 1] - y_[j]) / h - h * (2.0 * c_[j] + c_[j + 1]) / 3.0;
    d_[j] = (c_[j + 1] - c_[j]) / (3.0 * h);
  }
}

int ACubicSlineFree::segmentOf(double t) const {
  const auto below = static_cast<int>(std::lower_bound(x_, x_ + n_, t) - x_);
  return std::clamp(below - 1, 0, std::max(n_ - 2, 0));
}

double ACubicSlineFree::valueAt(double t) const {
  if (n_ < 1) return std::numeric_limits<double>::quiet_NaN();
  if (n_ == 1) return y_[0];
  const int j = segmentOf(t);
  const double u = t - x_[j];
  return ((d_[j] * u + c_[j]) * u + b_[j]) * u + y_[j];
}

}  // namespace lumo
