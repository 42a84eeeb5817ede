// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AMatrix.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/SpectralGridSet.h"

namespace lumo {

/// Uniform (block) weighting: tiles the grid with blocks of trunc(1/uniformBoxV + 0.5) rows by
/// trunc(1/uniformBoxU + 0.5) columns (the whole grid where the box is not above 0), starting at row 0 and
/// column 0 and cut at the edges. Every cell of a block takes, in every grid, the block's sum divided by the
/// block's sum of `kernelSums` (ΣK over all data, size of the grids); blocks where that is not above 0 stay.
void applyUniformWeighting(const ABMakeParameters& parameters, const AMatrix<double>& kernelSums,
                           SpectralGridSet& grids);

}  // namespace lumo
