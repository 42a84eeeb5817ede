// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// Where the steps of one call of a tile kernel meet the beams: the beam element that lies below the first
/// pixel of each row of the tile, for every step. Some 12 kilobytes.
///
/// The beam rows below a tile are too short and too many for the processor to foresee. While a kernel works
/// on some pixels it fetches what lies ahead() of them; what lies ahead of none is fetched by the
/// constructor.
class BeamPlacement {
 public:
  /// Of a cache line.
  static constexpr std::size_t kFloatsPerLine = 16;

  /// @param count at most kMaxTileUpdates steps, which must outlive the placement.
  /// @param group pixels of a row that the kernel works on at a time.
  /// @param groupsAhead how many groups later it works on what it fetches; a row later where that is sooner.
  ///   With 1 it must also fetch the cache line in which a group ends, otherwise the group after it does.
  BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                std::size_t count, std::size_t group, std::size_t groupsAhead);

  /// Goes to the tile's first row, then to the one after it and so on: once for each.
  void nextRow();

  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] const double* increments(std::size_t step) const { return updates_[step].increments; }
  /// Beam element below the first pixel of the row.
  [[nodiscard]] std::ptrdiff_t element(std::size_t step) const { return element_[step]; }
  /// Whether any step's beam columns wrap inside the tile, and after how many pixels of a row.
  [[nodiscard]] bool wraps() const { return wraps_; }
  [[nodiscard]] std::size_t straight(std::size_t step) const { return straight_[step]; }

  /// A group of pixels of this row or of the next one.
  struct Ahead {
    const std::uint32_t* elements;  ///< below that row's first pixel, by step
    std::ptrdiff_t pixel;           ///< its first one, pixels after the row's first
  };
  /// The group whose beam elements are to be fetched while that at `pixel`, counted alike, is worked on.
  [[nodiscard]] Ahead ahead(std::ptrdiff_t pixel) const {
    const std::ptrdiff_t there = pixel + distance_;
    return there < width_ ? Ahead{element_, there} : Ahead{next_, there - width_};
  }

 private:
  void fetchFirst(const CleanTileMaps& maps) const;

  std::size_t count_;
  const CleanUpdate* updates_;
  std::size_t beamRows_;
  std::size_t beamColumns_;
  std::size_t rowsLeft_;  ///< after this one
  std::ptrdiff_t width_;
  std::ptrdiff_t distance_;  ///< from a group to that ahead of it, at most the width
  bool wraps_ = false;
  std::uint32_t element_[kMaxTileUpdates];
  /// The same of the row after it: at the beginning the tile's first row, at its last that one again.
  std::uint32_t next_[kMaxTileUpdates];
  std::uint32_t straight_[kMaxTileUpdates];
};

}  // namespace lumo
