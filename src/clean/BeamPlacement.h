// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// Where the steps of one call of a tile kernel meet the beams: the beam element that lies below the first
/// pixel of the tile, for every step. Some 16 kilobytes.
///
/// The beam rows below a tile are too short and too many for the processor to foresee. With each step that a
/// kernel subtracts from some pixels it fetches what lies ahead() of that; what lies ahead of none is fetched
/// by the constructor.
class BeamPlacement {
 public:
  /// Of a cache line.
  static constexpr std::ptrdiff_t kFloatsPerLine = 16;

  /// @param count at most kMaxTileUpdates steps, which must outlive the placement, as `maps` must.
  /// @param group pixels of a row that the kernel works on at a time, step by step.
  /// @param delay how many steps later the kernel subtracts what it fetches, counted over groups and rows: a
  ///   row later where that is sooner. More are for slower memory, less for smaller caches.
  BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                std::size_t count, std::size_t group, std::size_t delay);

  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] const double* increments(std::size_t step) const { return updates_[step].increments; }
  /// Beam element below the first pixel of the tile.
  [[nodiscard]] std::ptrdiff_t element(std::size_t step) const { return element_[step]; }

  /// One row of the tile, or a part of one.
  struct Row {
    std::ptrdiff_t shift;  ///< to its beam elements from those below the tile's first row
    bool last;             ///< no other row is to be fetched
  };
  /// @param n counted from the tile's first; where nothing wraps.
  [[nodiscard]] Row row(std::size_t n) const {
    return {static_cast<std::ptrdiff_t>(n * maps_.beamColumns), n + 1 == rows_};
  }

  /// Whether the beam of any step wraps below the tile. Then each row lies in two parts above each of them.
  [[nodiscard]] bool wraps() const { return wraps_; }
  /// The two parts of a row, the second empty where the columns do not wrap in it.
  struct Parts {
    Row first;
    Row second;
    std::size_t cut;  ///< pixels of the first
  };
  [[nodiscard]] Parts parts(std::size_t step, std::size_t n) const;

  /// What is to be fetched while a group is worked on: with step p the group of pixels whose first one lies
  /// above beam element `elements[p] + pixel`.
  struct Ahead {
    const std::int32_t* elements;
    std::ptrdiff_t pixel;
  };
  /// @param pixel the first of the group worked on, pixels after the row's first.
  [[nodiscard]] Ahead ahead(const Row& row, std::ptrdiff_t pixel) const {
    const std::ptrdiff_t there = pixel + distance_;
    if (there + group_ < width_ || (row.last && there < width_)) return {inRow_, row.shift + there};
    if (row.last) return {inRow_, row.shift + pixel};
    return there < width_ ? Ahead{atEnd_, row.shift + there} : Ahead{inNextRow_, row.shift + there - width_};
  }
  /// Fetches the first beam elements of the row after `row`. The cache line in which a group ends is fetched
  /// with it, and the next group of the row begins in it, so that a kernel need not fetch first lines one by
  /// one.
  void fetchNextRowStart(const Row& row) const;

 private:
  void placeAhead();
  void fetchFirst() const;

  const CleanTileMaps& maps_;
  std::size_t count_;
  const CleanUpdate* updates_;
  std::size_t rows_;
  std::ptrdiff_t width_;
  std::ptrdiff_t group_;
  // Between a group and step and that ahead of it: pixels of a row, at most its width, and steps.
  std::ptrdiff_t distance_ = 0;
  std::size_t turn_ = 0;
  bool wraps_ = false;
  std::int32_t element_[kMaxTileUpdates];
  // By the step that they are fetched with; `turn_` of them belong to the next group.
  std::int32_t inRow_[kMaxTileUpdates];
  std::int32_t atEnd_[kMaxTileUpdates];  ///< the next group is the first of the next row
  std::int32_t inNextRow_[kMaxTileUpdates];
};

}  // namespace lumo
