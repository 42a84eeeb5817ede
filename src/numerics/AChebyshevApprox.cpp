// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/AChebyshevApprox.h"

#include <cmath>

#include "numerics/SeriesBasis.h"

namespace lumo {

void AChebyshevApprox::basisAt(float* out, int n, float t) const {
  chebyshevBasis(out, n, t);
}

void AChebyshevApprox::scaleArgument(const float* x, const float* /*y*/, int first, int last) {
  const ArgumentScaling scaling = chebyshevScaling(x, first, last);
  // Equal abscissae: t = 0 for all of them keeps infinities out, and T_1 = 0 makes the equations singular.
  if (std::isinf(scaling.scale))
    setScaling(0.0F, 0.0F);
  else
    setScaling(scaling.scale, scaling.offset);
}

}  // namespace lumo
