// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// Subtracts the sum of `count` <= kMaxTileUpdates steps from the pixels of a tile, in one pass over its
/// pixels: the sum is formed in single precision in the order of the steps, and a residual is rounded once
/// when it is taken off. A sum of n steps with terms t is wrong by at most some 2 n N 2^-24 of the sum of
/// |t|.
///
/// The bits of a pixel depend neither on the instruction set that the processor has nor on the tile. All
/// values must be finite. Touches nothing outside the tile; may run on several tiles at once.
void subtractMerged(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                    std::size_t count);

}  // namespace lumo
