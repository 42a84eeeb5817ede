// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "clean/CleanParameters.h"
#include "clean/CleanProblem.h"
#include "core/AMatrix.h"

namespace lumo::test {

/// What the straight CLEAN ends with.
struct StraightResult {
  std::vector<AMatrix<float>> residuals;
  std::vector<AMatrix<float>> components;
  double totalFlux = 0.0;
  std::vector<double> scores;  ///< of the peak, per iteration; the one before where none was found
};

/// The joint CLEAN written down once more in the most literal way, as the oracle of the engines: every index
/// formed where it is used, nothing kept between pixels. Only the inverse of the beam matrix is taken from
/// BeamMatrix, since the order of a factorisation is free (BeamMatrix has an oracle of its own).
[[nodiscard]] StraightResult straightClean(const CleanProblem& problem, const CleanParameters& parameters);

/// Restored map of the components: the literal sums over components and beam elements.
[[nodiscard]] AMatrix<float> straightRestore(const AMatrix<float>& components, const AMatrix<float>& beam);

}  // namespace lumo::test
