// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "clean/CleanObserver.h"

namespace lumo {

/// How a CLEAN went on, as curves over the iterations: vectors of one length, entry i being of iteration[i].
struct CleanCourse {
  CleanCourse() = default;
  /// From the lines of a CleanRecord.
  explicit CleanCourse(const std::vector<CleanProgress>& lines);

  std::vector<double> iteration;
  std::vector<double> totalFlux;  ///< map units
  /// |R_0| at the pixel chosen, before the step; map units.
  std::vector<double> residual;
  /// sqrt(score / (g (2 - g))), g being the gain: the residuals of all terms at the pixel chosen in the norm
  /// of the beam matrix's inverse, map units. The same as `residual` where there is one term. Not finite at a
  /// gain of 2, where every score is 0.
  std::vector<double> jointResidual;
};

}  // namespace lumo
