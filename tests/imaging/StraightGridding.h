// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "imaging/TestFile.h"

namespace lumo::test {

/// The spectral grids, row-major, rows x columns elements each.
struct StraightGrids {
  int rows = 0;
  int columns = 0;
  std::vector<std::vector<std::complex<double>>> beams;
  std::vector<std::vector<std::complex<double>>> dirty;
};

/// Gridding written down as plainly as possible, from the files in memory: one IF at a time, four whole work
/// grids, every cell of every footprint, every cell folded. The oracle of the gridder; same bits.
[[nodiscard]] StraightGrids gridStraight(const ABMakeParameters& parameters,
                                         const std::vector<TestFile>& files, int order,
                                         double referenceFrequency);

}  // namespace lumo::test
