// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/APolynomialApprox.h"

#include "numerics/SeriesBasis.h"

namespace lumo {

void APolynomialApprox::basisAt(float* out, int n, float t) const {
  powerBasis(out, n, t);
}

}  // namespace lumo
