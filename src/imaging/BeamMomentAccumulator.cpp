// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/BeamMomentAccumulator.h"

#include <algorithm>
#include <cmath>

#include "core/Units.h"

namespace lumo {

int BeamMomentAccumulator::solve() {
  constexpr double kArcsecPerSigma = 77304.18191629459;
  const double meanX = sumX_ / sum_;
  const double meanY = sumY_ / sum_;
  const double varianceX = sumXX_ / sum_ - meanX * meanX;
  const double varianceY = sumYY_ / sum_ - meanY * meanY;
  const double covariance = sumXY_ / sum_ - meanX * meanY;
  if (!(varianceX > 0 && varianceY > 0)) return 0;
  const double rho = covariance / std::sqrt(varianceX * varianceY);

  double angle = -0.5 * std::atan2(2 * covariance, varianceX - varianceY) * kDegreePerRadian;
  if (angle > 90) angle -= 180;
  if (!(angle >= -90)) angle += 180;

  const double q = 1 / ((1 - rho * rho) * 4 * varianceX * varianceY);
  const double p = (varianceY + varianceX) / ((2 * rho * rho - 2) * varianceX * varianceY);
  // A round coverage makes the difference 0, which rounding may push below.
  const double d = std::sqrt(std::max(p * p - 4 * q, 0.0));
  const double lambda1 = (-p - d) / 2;
  const double lambda2 = d / 2 - p / 2;
  const double second = kArcsecPerSigma * std::sqrt(2 * lambda1);
  const double first = kArcsecPerSigma * std::sqrt(2 * lambda2);
  if (!std::isfinite(first) || !std::isfinite(second)) return 0;
  positionAngle_ = angle;
  secondWidth_ = second;
  firstWidth_ = first;
  return 1;
}

}  // namespace lumo
