// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "imaging/GridGeometry.h"
#include "imaging/PointAdder.h"
#include "imaging/WorkGrid.h"

namespace lumo {

/// Which tiles of a work grid points fall into, worked out without gridding them: what the grid's memory
/// depends on.
class TileCover {
 public:
  /// What covers of one parameter block have in common.
  struct Layout {
    explicit Layout(const ABMakeParameters& parameters);
    GridGeometry geometry;
    WorkGrid::Layout tiles;
    PointAdder::Reach reach;
  };

  /// Takes the point, wavelengths, with its conjugate and with all that its kernel reaches.
  void add(const Layout& layout, double u, double v);
  void merge(const TileCover& other);
  /// Tiles taken so far.
  [[nodiscard]] std::uint64_t count() const;

 private:
  void addOne(const Layout& layout, double u, double v);

  std::vector<std::uint64_t> bits_;  ///< empty before the first point
};

}  // namespace lumo
