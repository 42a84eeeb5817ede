// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/CellSums.h"

// Compiled once per instruction set; the one to run is chosen when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/CellSums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

std::size_t addUntilNull(const WorkGrid::Cell* sums, std::span<WorkGrid::Cell* const> cells,
                         std::size_t first) {
  constexpr std::size_t kNumbers = sizeof(WorkGrid::Cell) / sizeof(double);
  const hn::CappedTag<double, kNumbers> d;
  for (; first < cells.size() && cells[first] != nullptr; ++first) {
    double* const cell = &cells[first]->weight;
    const double* const sum = &sums[first].weight;
    for (std::size_t i = 0; i < kNumbers; i += hn::Lanes(d))
      hn::StoreU(hn::Add(hn::LoadU(d, cell + i), hn::LoadU(d, sum + i)), d, cell + i);
  }
  return first;
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(addUntilNull);

std::size_t addSums(const WorkGrid::Cell* sums, std::span<WorkGrid::Cell* const> cells, std::size_t first) {
  return HWY_DYNAMIC_DISPATCH(addUntilNull)(sums, cells, first);
}

}  // namespace lumo

#endif
