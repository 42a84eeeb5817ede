// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanCourse.h"

#include <cmath>

namespace lumo {

CleanCourse::CleanCourse(const std::vector<CleanProgress>& lines) {
  for (auto* const values : {&iteration, &totalFlux, &residual, &jointResidual})
    values->reserve(lines.size());
  for (const CleanProgress& line : lines) {
    iteration.push_back(line.iteration);
    totalFlux.push_back(line.totalFlux);
    residual.push_back(std::fabs(line.residual));
    jointResidual.push_back(std::sqrt(line.score / (line.gain * (2.0 - line.gain))));
  }
}

}  // namespace lumo
