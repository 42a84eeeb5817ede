// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "clean/BeamNorm.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"
#include "core/ThreadTeam.h"

namespace lumo {

/// How far a step of unit norm moves the residuals of a map tile at most: the largest BeamNorm::reach() over
/// the beam elements that lie below the tile, tabulated for the places that a tile can have in the periodic
/// beam.
///
/// The table has one float per kRowsPerEntry x kColumnsPerEntry beam elements, below 1 % of one beam.
class BeamReach {
 public:
  /// Costs one quickFourths() per beam element and some reach() more, shared by the team.
  void prepare(const APtrArray<AMatrix<float>*>& beams, const BeamNorm& norm, std::uint32_t tileRows,
               std::uint32_t tileColumns, ThreadTeam& team);

  /// The bound for a tile whose first pixel lies on beam element (row, column), both within the beam.
  [[nodiscard]] double below(std::size_t row, std::size_t column) const {
    return static_cast<double>(table_[row / kRowsPerEntry * entriesPerRow_ + column / kColumnsPerEntry]);
  }

  [[nodiscard]] std::size_t bytes() const { return table_.capacity() * sizeof(float); }

  static constexpr std::size_t kRowsPerEntry = 4;
  static constexpr std::size_t kColumnsPerEntry = 32;

 private:
  std::size_t entriesPerRow_ = 0;
  std::vector<float> table_;
};

}  // namespace lumo
