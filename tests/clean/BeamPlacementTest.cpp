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

TEST(BeamPlacementTest, TellsTheElementBelowEachRowAlsoWhereTheBeamWraps) {
  const std::vector<float> beam(kBeamRows * kBeamColumns);
  const CleanTileMaps maps = mapsOver(beam);
  const CleanTileArea area{3, 9, 10, 30};
  // Element (6, 20), the beam's centre, lies below the step's pixel. Below the last two steps the beam wraps.
  const CleanUpdate updates[] = {at(3, 10), at(4, 12), at(1, 0), at(10, 35)};
  BeamPlacement below(maps, area, updates, 4, 8, 6);
  EXPECT_TRUE(below.wraps());
  EXPECT_EQ(below.straight(0), 20U);
  EXPECT_EQ(below.straight(1), 20U);
  EXPECT_EQ(below.straight(2), 10U);
  EXPECT_EQ(below.straight(3), 5U);
  for (std::size_t i = 0; i < area.rows(); ++i) {
    below.nextRow();
    for (std::size_t p = 0; p < 4; ++p) {
      const std::size_t row = (kBeamRows / 2 + area.firstRow + i + kBeamRows - updates[p].row) % kBeamRows;
      const std::size_t column =
          (kBeamColumns / 2 + area.firstColumn + kBeamColumns - updates[p].column) % kBeamColumns;
      EXPECT_EQ(below.element(p), static_cast<std::ptrdiff_t>(row * kBeamColumns + column))
          << "row " << i << ", step " << p;
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
    BeamPlacement below(maps, area, updates.data(), steps, group, delay);
    std::vector<std::ptrdiff_t> first(steps);
    int time = 0;
    for (std::size_t row = 0; row < rows_; ++row) {
      below.nextRow();
      for (std::size_t p = 0; row == 0 && p < steps; ++p) first[p] = below.element(p);
      for (std::size_t pixel = 0; pixel < width_; pixel += group) {
        const BeamPlacement::Ahead ahead = below.ahead(static_cast<std::ptrdiff_t>(pixel));
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
