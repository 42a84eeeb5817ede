// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/A3DPillBoxFunc.h"

#include <cmath>

namespace lumo {

double A3DPillBoxFunc::FourierValue(double u, double v) const {
  if (u == 0.0 || v == 0.0) return 1.0;
  return (std::sin(u) / u) * (std::sin(v) / v);
}

}  // namespace lumo
