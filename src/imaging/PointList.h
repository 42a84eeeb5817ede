// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/WorkGrid.h"

namespace lumo {

/// Some visibilities of one IF on their way into the work grids of their frequency selections, in the order
/// of their records.
struct PointList {
  static constexpr std::size_t kCapacity = 256;
  /// Values of `cell` that are no cell.
  static constexpr std::int32_t kNoCell = -1;
  static constexpr std::int32_t kUnclear = -2;  ///< more than one cell, or too close to an edge to tell
  /// And below: kTwins − n where the point falls into cell n of column 0 and its conjugate point into the one
  /// opposite, rows − row.
  static constexpr std::int32_t kTwins = -3;

  std::size_t count = 0;
  alignas(64) std::uint8_t selection[kCapacity] = {};  ///< index in the list of the batch
  alignas(64) double u[kCapacity] = {};                ///< wavelengths
  alignas(64) double v[kCapacity] = {};
  alignas(64) double weight[kCapacity] = {};
  alignas(64) double re[kCapacity] = {};
  alignas(64) double im[kCapacity] = {};
  // Filled by searchCells: the only cell that a pill box reaches, and what it adds there; with kTwins, in the
  // opposite cell the conjugate of that.
  alignas(64) WorkGrid::Cell sums[kCapacity] = {};
  alignas(64) std::int32_t cell[kCapacity] = {};  ///< WorkGrid::Layout's number, or one of the above
};

}  // namespace lumo
