// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// Where the steps of one call of a tile kernel meet the beams: the beam element that lies below the first
/// pixel of each row of the tile, for every step. Some 12 kilobytes.
class BeamPlacement {
 public:
  /// @param count at most kMaxTileUpdates steps, which must outlive the placement.
  BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                std::size_t count);

  /// Goes to the tile's first row, then to the one after it and so on: once for each.
  void nextRow();

  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] const double* increments(std::size_t step) const { return updates_[step].increments; }
  /// Beam element below the first pixel of the row.
  [[nodiscard]] std::ptrdiff_t element(std::size_t step) const { return element_[step]; }
  /// The same of the row after it, the same row again at the last.
  [[nodiscard]] std::ptrdiff_t nextElement(std::size_t step) const { return next_[step]; }
  /// Whether any step's beam columns wrap inside the tile, and after how many pixels of a row.
  [[nodiscard]] bool wraps() const { return wraps_; }
  [[nodiscard]] std::size_t straight(std::size_t step) const { return straight_[step]; }

 private:
  std::size_t count_;
  const CleanUpdate* updates_;
  std::size_t beamRows_;
  std::size_t beamColumns_;
  std::size_t rowsLeft_;  ///< after this one
  bool wraps_ = false;
  std::uint32_t element_[kMaxTileUpdates];
  std::uint32_t next_[kMaxTileUpdates];
  std::uint32_t straight_[kMaxTileUpdates];
};

}  // namespace lumo
