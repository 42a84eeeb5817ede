// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/AMatrix.h"
#include "imaging/GridGeometry.h"
#include "imaging/SpectralGridSet.h"

namespace lumo {

/// The sums of one frequency while it is gridded: per cell ΣK·w, ΣK·w·V and ΣK. The four numbers of a cell
/// lie together, so that a visibility touches one cache line per cell, and a bit per cell remembers which
/// cells were touched, so that folding and clearing cost what the data cover and not what the grid holds.
class WorkGrid {
 public:
  /// Bytes that one work grid of this geometry takes.
  [[nodiscard]] static std::uint64_t bytes(const GridGeometry& geometry);

  explicit WorkGrid(const GridGeometry& geometry);

  /// Adds one kernel value k with the weight w of the visibility (re, im) to cell `index` = row · columns +
  /// column.
  void add(std::size_t index, double k, double w, double re, double im) {
    Cell& cell = cells_[index];
    const double kw = k * w;
    cell.weight += kw;
    cell.re += kw * re;
    cell.im += kw * im;
    cell.kernel += k;
    touched_[index / kBits] |= std::uint64_t{1} << (index % kBits);
  }

  /// Adds the sums, times f^k, to spectral grid k of the set wherever ΣK is not 0; ΣK itself to `cumulative`
  /// when that is not null. The work grid is empty afterwards.
  void fold(double f, SpectralGridSet& grids, AMatrix<double>* cumulative);

 private:
  struct Cell {
    double weight = 0;
    double re = 0;
    double im = 0;
    double kernel = 0;
  };
  static constexpr std::size_t kBits = 64;

  void foldCell(std::size_t index, double f, SpectralGridSet& grids) const;

  std::vector<Cell> cells_;
  std::vector<std::uint64_t> touched_;
};

}  // namespace lumo
