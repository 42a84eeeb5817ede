// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "clean/BeamPlacement.h"

namespace lumo {
namespace {

constexpr std::size_t kBeamRows = 12;
constexpr std::size_t kBeamColumns = 40;
constexpr std::size_t kManyRows = 80;

CleanTileMaps mapsOver(const std::vector<float>& beam) {
  CleanTileMaps maps;
  maps.terms = 1;
  maps.beams[0] = beam.data();
  maps.beamRows = kBeamRows;
  maps.beamColumns = kBeamColumns;
  return maps;
}

CleanUpdate at(std::uint32_t row, std::uint32_t column) {
  CleanUpdate update;
  update.row = row;
  update.column = column;
  return update;
}

/// Beam element below a pixel.
std::ptrdiff_t elementBelow(const CleanUpdate& update, std::size_t row, std::size_t column) {
  return static_cast<std::ptrdiff_t>(
      (kBeamRows / 2 + kBeamRows + row - update.row) % kBeamRows * kBeamColumns +
      (kBeamColumns / 2 + kBeamColumns + column - update.column) % kBeamColumns);
}

TEST(BeamPlacementTest, TellsTheElementBelowEachRowWhereNoBeamWraps) {
  const std::vector<float> beam(kBeamRows * kBeamColumns);
  const CleanTileMaps maps = mapsOver(beam);
  const CleanTileArea area{3, 9, 10, 30};
  // Element (6, 20), the beam's centre, lies below the step's pixel. Beams down to their last row and column.
  const CleanUpdate updates[] = {at(3, 10), at(4, 12), at(8, 28)};
  const BeamPlacement below(maps, area, updates, 3, 8, 6);
  EXPECT_FALSE(below.wraps());
  for (std::size_t n = 0; n < area.rows(); ++n) {
    EXPECT_EQ(below.row(n).last, n + 1 == area.rows());
    for (std::size_t p = 0; p < 3; ++p)
      EXPECT_EQ(below.element(p) + below.row(n).shift, elementBelow(updates[p], area.firstRow + n, 10))
          << "row " << n << ", step " << p;
  }
}

TEST(BeamPlacementTest, TellsTheElementsOfBothPartsOfRowsWhereBeamsWrap) {
  const std::vector<float> beam(kBeamRows * kBeamColumns);
  const CleanTileMaps maps = mapsOver(beam);
  const CleanTileArea area{3, 9, 10, 30};
  // Beams that wrap in columns, in rows, in both.
  for (const CleanUpdate& update : {at(3, 0), at(10, 35), at(2, 10), at(8, 31), at(1, 5)}) {
    const BeamPlacement below(maps, area, &update, 1, 8, 6);
    EXPECT_TRUE(below.wraps()) << update.row << ", " << update.column;
    for (std::size_t n = 0; n < area.rows(); ++n) {
      const BeamPlacement::Parts parts = below.parts(0, n);
      for (std::size_t i = 0; i < area.columns(); ++i) {
        const std::ptrdiff_t shift = i < parts.cut ? parts.first.shift : parts.second.shift;
        EXPECT_EQ(below.element(0) + shift + static_cast<std::ptrdiff_t>(i),
                  elementBelow(update, area.firstRow + n, 10 + i))
            << update.row << ", " << update.column << ", row " << n << ", pixel " << i;
      }
    }
  }
}

/// When a kernel that works on `group` pixels at a time, step by step, fetches and subtracts. Time is counted
/// in steps of a group.
class Schedule {
 public:
  Schedule(const CleanTileArea& area, std::size_t steps, std::size_t group, std::size_t delay)
      : width_(area.columns()), rows_(area.rows()), steps_(steps) {
    const std::vector<float> beam(kManyRows * kBeamColumns);
    CleanTileMaps maps = mapsOver(beam);
    maps.beamRows = kManyRows;
    // Each step has beam rows of its own, from `rows` x p rows above the centre on.
    std::vector<CleanUpdate> updates;
    for (std::size_t p = 0; p < steps; ++p)
      updates.push_back(at(area.firstRow + static_cast<std::uint32_t>(p * rows_), area.firstColumn));
    fetched_.assign(steps * rows_ * width_, -1);
    subtracted_.assign(steps * rows_ * width_, -1);
    const BeamPlacement below(maps, area, updates.data(), steps, group, delay);
    std::vector<std::ptrdiff_t> first(steps);
    for (std::size_t p = 0; p < steps; ++p) first[p] = below.element(p);
    int time = 0;
    for (std::size_t row = 0; row < rows_; ++row) {
      for (std::size_t pixel = 0; pixel < width_; pixel += group) {
        const BeamPlacement::Ahead ahead = below.ahead(below.row(row), static_cast<std::ptrdiff_t>(pixel));
        for (std::size_t p = 0; p < steps; ++p, ++time) {
          note(first, ahead.elements[p] + ahead.pixel, group, time);
          for (std::size_t i = pixel; i < std::min(pixel + group, width_); ++i)
            subtracted_[(p * rows_ + row) * width_ + i] = time;
        }
      }
    }
  }

  /// Steps from the first fetch of a pixel's beam element until it is needed, -1 if there is
  /// none.
  [[nodiscard]] int delayOf(std::size_t step, std::size_t row, std::size_t pixel) const {
    const std::size_t i = (step * rows_ + row) * width_ + pixel;
    return fetched_[i] < 0 ? -1 : subtracted_[i] - fetched_[i];
  }
  [[nodiscard]] int neededAt(std::size_t step, std::size_t row, std::size_t pixel) const {
    return subtracted_[(step * rows_ + row) * width_ + pixel];
  }

 private:
  void note(const std::vector<std::ptrdiff_t>& first, std::ptrdiff_t element, std::size_t group, int time) {
    for (std::size_t p = 0; p < steps_; ++p)
      for (std::size_t i = 0; i < group; ++i) {
        const std::ptrdiff_t from = element + static_cast<std::ptrdiff_t>(i) - first[p];
        const std::ptrdiff_t row = from / static_cast<std::ptrdiff_t>(kBeamColumns);
        const std::ptrdiff_t pixel = from % static_cast<std::ptrdiff_t>(kBeamColumns);
        if (from < 0 || row >= static_cast<std::ptrdiff_t>(rows_) ||
            pixel >= static_cast<std::ptrdiff_t>(width_))
          continue;
        const std::size_t at =
            (p * rows_ + static_cast<std::size_t>(row)) * width_ + static_cast<std::size_t>(pixel);
        if (fetched_[at] < 0 && subtracted_[at] < 0) fetched_[at] = time;
      }
  }

  std::size_t width_;
  std::size_t rows_;
  std::size_t steps_;
  std::vector<int> fetched_;
  std::vector<int> subtracted_;
};

TEST(BeamPlacementTest, EveryElementIsFetchedTheDelayBeforeItIsNeededOrARowBefore) {
  constexpr std::size_t kRows = 4;
  for (const std::size_t steps : {1U, 2U, 5U, 7U})
    for (const std::size_t group : {1U, 4U, 16U})
      for (const std::size_t delay : {1U, 3U, 8U, 21U, 1000U}) {
        constexpr std::size_t kWidth = 16;
        const Schedule schedule({2, 2 + kRows, 4, 4 + kWidth}, steps, group, delay);
        const auto row = static_cast<int>(steps * (kWidth / group));
        const int expected = std::min(static_cast<int>(delay), row);
        for (std::size_t p = 0; p < steps; ++p)
          for (std::size_t y = 0; y < kRows; ++y)
            for (std::size_t x = 0; x < kWidth; ++x) {
              if (schedule.neededAt(p, y, x) < expected) continue;  // fetched by the constructor
              EXPECT_EQ(schedule.delayOf(p, y, x), expected)
                  << steps << " steps, " << group << " at a time, delay " << delay;
            }
      }
}

TEST(BeamPlacementTest, RowsThatAreNoWholeNumberOfGroupsAreFetchedToo) {
  constexpr std::size_t kRows = 4;
  for (const std::uint32_t width : {20U, 11U, 3U})
    for (const std::size_t steps : {1U, 4U, 9U})
      for (const std::size_t group : {3U, 8U, 32U})
        for (const std::size_t delay : {2U, 6U, 30U}) {
          const Schedule schedule({2, 2 + kRows, 4, 4 + width}, steps, group, delay);
          for (std::size_t p = 0; p < steps; ++p)
            for (std::size_t y = 1; y < kRows; ++y)
              for (std::size_t x = 0; x < width; ++x)
                EXPECT_GE(schedule.delayOf(p, y, x), 0)
                    << width << " pixels, " << steps << " steps, " << group << " at a time, delay " << delay
                    << ": " << y << ", " << x;
        }
}

}  // namespace
}  // namespace lumo
