// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/ATrigonometricApprox.h"

#include <cassert>
#include <numbers>

#include "numerics/SeriesBasis.h"

namespace lumo {

ATrigonometricApprox::ATrigonometricApprox(int termCount, float period)
    : AAproximation(termCount), period_(period) {
  assert(period != 0.0F);
}

void ATrigonometricApprox::basisAt(float* out, int n, float t) const {
  trigonometricBasis(out, n, t);
}

void ATrigonometricApprox::scaleArgument(const float* /*x*/, const float* /*y*/, int /*first*/,
                                         int /*last*/) {
  setScaling(static_cast<float>(2.0 * std::numbers::pi / period_), 0.0F);
}

}  // namespace lumo
