// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/WorkGrid.h"

#include <bit>

namespace lumo {

std::uint64_t WorkGrid::bytes(const GridGeometry& geometry) {
  const std::uint64_t cells =
      static_cast<std::uint64_t>(geometry.rows) * static_cast<std::uint64_t>(geometry.columns);
  return cells * sizeof(Cell) + cells / 8;
}

WorkGrid::WorkGrid(const GridGeometry& geometry)
    : cells_(static_cast<std::size_t>(geometry.rows) * static_cast<std::size_t>(geometry.columns)),
      touched_(cells_.size() / kBits + 1) {}

void WorkGrid::foldCell(std::size_t index, double f, SpectralGridSet& grids) const {
  const Cell& cell = cells_[index];
  const std::int32_t order = grids.dirty.count();
  double p = 1.0;
  for (std::int32_t k = 0; k < grids.beams.count(); ++k) {
    // Beam grids are real: std::complex += double leaves the imaginary part alone.
    grids.beams[k].data()[index] += p * cell.weight;
    if (k < order) grids.dirty[k].data()[index] += Complex(p * cell.re, p * cell.im);
    p *= f;
  }
}

void WorkGrid::fold(double f, SpectralGridSet& grids, AMatrix<double>* cumulative) {
  for (std::size_t word = 0; word < touched_.size(); ++word) {
    for (std::uint64_t bits = touched_[word]; bits != 0; bits &= bits - 1) {
      const std::size_t index = word * kBits + static_cast<std::size_t>(std::countr_zero(bits));
      if (cells_[index].kernel != 0) {
        foldCell(index, f, grids);
        if (cumulative != nullptr) cumulative->data()[index] += cells_[index].kernel;
      }
      cells_[index] = Cell();
    }
    touched_[word] = 0;
  }
}

}  // namespace lumo
