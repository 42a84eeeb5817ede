// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/Fft.h"

#include <cmath>
#include <utility>

#include "core/Units.h"

namespace lumo {

int transformExponent(std::int64_t n) {
  return static_cast<int>(std::log(static_cast<double>(n)) * 1.4426950408889634);
}

bool isTransformLength(std::int64_t n) {
  return n >= 2 && (std::int64_t{1} << transformExponent(n)) == n;
}

int Fft1D(Complex* data, std::int64_t n, int direction, double scale) {
  if (!isTransformLength(n)) return 0;
  const double s = direction < 1 ? scale : 1.0 / (static_cast<double>(n) * scale);

  std::int64_t j = 0;
  for (std::int64_t i = 0; i < n; ++i) {
    if (i < j) {
      std::swap(data[i], data[j]);
      data[i] *= s;
      data[j] *= s;
    } else if (i == j) {
      data[i] *= s;
    }
    // Adds one to j counted from its highest bit.
    std::int64_t bit = n >> 1;
    for (; bit > 0 && (j & bit) != 0; bit >>= 1) j ^= bit;
    j |= bit;
  }

  for (std::int64_t m = 1; m < n; m *= 2) {
    const double theta = direction * kPi / static_cast<double>(m);
    double angle = 0.0;
    for (std::int64_t k = 0; k < m; ++k) {
      const double wr = std::cos(angle);
      const double wi = std::sin(angle);
      for (std::int64_t at = k; at < n; at += 2 * m) {
        Complex& upper = data[at];
        Complex& lower = data[at + m];
        const Complex t(wr * lower.real() - wi * lower.imag(), wr * lower.imag() + wi * lower.real());
        lower = upper - t;
        upper += t;
      }
      angle += theta;
    }
  }
  return 1;
}

HermitianPair::HermitianPair(const Complex& x, const Complex& y, double alpha, double beta) {
  const double dr = x.real() - y.real();
  const double di = x.imag() + y.imag();
  const double tr = dr * alpha - di * beta;
  const double ti = dr * beta + di * alpha;
  low = Complex(2.0 * (x.real() - tr), 2.0 * (x.imag() - ti));
  high = Complex(2.0 * (y.real() + tr), 2.0 * (y.imag() - ti));
}

void PackHermitianRow(Complex* row, std::int64_t n, int direction) {
  double angle = 1.5707963267948966;
  const double step = direction * kPi / static_cast<double>(n);
  for (std::int64_t k = 0; k <= n / 2; ++k) {
    const double alpha = (1.0 - std::cos(angle)) * 0.5;
    const double beta = -0.5 * std::sin(angle);
    const HermitianPair pair(row[k], row[n - k], alpha, beta);
    row[k] = pair.low;
    if (k < n / 2) {
      row[n - k] = pair.high;
      angle += step;
    }
  }
}

}  // namespace lumo
