// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "imaging/GridGeometry.h"
#include "imaging/PointList.h"
#include "imaging/Stretch.h"
#include "imaging/WorkGrid.h"

namespace lumo {

/// The work grids of an IF's frequency selections.
struct IfGrids {
  WorkGrid* first = nullptr;   ///< of the first selection
  std::size_t step = 0;        ///< from one selection's grid to the next one's
  std::size_t selections = 1;  ///< at least 1
  [[nodiscard]] WorkGrid& operator[](std::size_t selection) const { return first[selection * step]; }
};

/// Convolves points with one kind of kernel onto work grids: each point and then its conjugate point adds
/// K·w, K·w·V and K to the cells of its footprint. Shared by threads.
class PointAdder {
 public:
  /// Room for one thread's intermediate results.
  using Scratch = std::vector<double>;

  virtual ~PointAdder() = default;
  /// How many cells away from the cell nearest to a point, along u and along v, cells of its footprint may
  /// lie.
  struct Reach {
    double u = 0, v = 0;
  };
  [[nodiscard]] virtual Reach reach() const = 0;
  /// What can be worked out about points before their turn to be added comes.
  virtual void prepare(PointList& /*points*/) const {}
  /// PointMaker::make and prepare() in one, for points of IF `ifIndex` of a stretch at `frequency`, Hz, that
  /// the maker leaves as they were read, and one frequency selection. Returns false, the list untouched,
  /// where there is no such short cut.
  [[nodiscard]] virtual bool prepareRead(const Stretch& /*stretch*/, std::size_t /*ifIndex*/,
                                         double /*frequency*/, PointList& /*points*/) const {
    return false;
  }
  /// Adds prepared points to the cells of their selections' grids that belong to `part`.
  virtual void add(const PointList& points, const IfGrids& grids, int part, Scratch& scratch) const = 0;
};

/// For the kernel of a parameter block; null for a type outside 1..4.
[[nodiscard]] std::unique_ptr<PointAdder> makePointAdder(const ABMakeParameters& parameters,
                                                         const GridGeometry& geometry);

}  // namespace lumo
