// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/SeriesBasis.h"

#include <algorithm>
#include <cmath>

namespace lumo {

void powerBasis(float* out, int n, float t) {
  if (n > 0) out[0] = 1.0F;
  for (int k = 1; k < n; ++k) out[k] = out[k - 1] * t;
}

void chebyshevBasis(float* out, int n, float t) {
  if (n > 0) out[0] = 1.0F;
  if (n > 1) out[1] = t;
  for (int k = 2; k < n; ++k) out[k] = 2.0F * t * out[k - 1] - out[k - 2];
}

void trigonometricBasis(float* out, int n, float t) {
  if (n > 0) out[0] = 1.0F;
  for (int k = 1; k < n; ++k) {
    const int multiple = (k + 1) / 2;
    const double angle = static_cast<double>(t) * multiple;
    out[k] = static_cast<float>(k % 2 == 1 ? std::sin(angle) : std::cos(angle));
  }
}

ArgumentScaling chebyshevScaling(const float* x, int first, int last) {
  const auto [smallest, largest] = std::minmax_element(x + first, x + last + 1);
  const float scale = 2.0F / (*largest - *smallest);
  return {scale, -scale * *smallest - 1.0F};
}

}  // namespace lumo
