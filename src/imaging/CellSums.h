// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

#include "imaging/WorkGrid.h"

namespace lumo {

/// Adds sums[i] to *cells[i], as WorkGrid::Cell::add does and in this order, for i = first, first + 1, … up
/// to the first null pointer.
/// @return the place of that pointer, or cells.size().
[[nodiscard]] std::size_t addSums(const WorkGrid::Cell* sums, std::span<WorkGrid::Cell* const> cells,
                                  std::size_t first);

}  // namespace lumo
