// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanParameters.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

constexpr double kTurningPoint = 7000.0;
constexpr double kInversePi = 0.3183098861837907;

}  // namespace

double loopGain(const CleanParameters& parameters, std::int64_t n) {
  const double g = parameters.gain;
  if (!parameters.variableGain) return g;
  return std::min(1.0,
                  std::atan(static_cast<double>(n) - kTurningPoint) * (1.0 - g) * kInversePi + 0.5 + 0.5 * g);
}

}  // namespace lumo
