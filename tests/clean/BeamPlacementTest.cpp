// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "clean/BeamPlacement.h"

namespace lumo {
namespace {

constexpr std::size_t kBeamRows = 12;
constexpr std::size_t kBeamColumns = 40;

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
  BeamPlacement below(maps, area, updates, 4, 8, 2);
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

/// How often the elements below each pixel of a tile are fetched ahead, row by row, when a kernel works on
/// `group` pixels at a time, with one step that lies at the beam's centre.
std::vector<int> fetched(const CleanTileArea& area, std::size_t group, std::size_t groupsAhead) {
  const std::vector<float> beam(kBeamRows * kBeamColumns);
  const CleanTileMaps maps = mapsOver(beam);
  const CleanUpdate update = at(area.firstRow, area.firstColumn);
  BeamPlacement below(maps, area, &update, 1, group, groupsAhead);
  const auto wide = static_cast<std::ptrdiff_t>(kBeamColumns);
  const auto width = static_cast<std::ptrdiff_t>(area.columns());
  std::vector<int> times(area.rows() * area.columns());
  std::ptrdiff_t first = 0;
  for (std::size_t row = 0; row < area.rows(); ++row) {
    below.nextRow();
    if (row == 0) first = below.element(0);
    for (std::size_t pixel = 0; pixel < area.columns(); pixel += group) {
      const BeamPlacement::Ahead ahead = below.ahead(static_cast<std::ptrdiff_t>(pixel));
      const std::ptrdiff_t element = static_cast<std::ptrdiff_t>(ahead.elements[0]) - first;
      for (std::ptrdiff_t i = ahead.pixel;
           i < std::min(ahead.pixel + static_cast<std::ptrdiff_t>(group), width); ++i)
        ++times[static_cast<std::size_t>(element / wide * width + i)];
    }
  }
  return times;
}

TEST(BeamPlacementTest, EveryElementButTheFirstOnesLiesAheadOfSomeGroup) {
  for (const std::uint32_t width : {16U, 20U, 11U, 3U})
    for (const std::size_t group : {std::size_t{1}, std::size_t{3}, std::size_t{4}, std::size_t{32}})
      for (const std::size_t ahead : {std::size_t{1}, std::size_t{2}, std::size_t{34}}) {
        const CleanTileArea area{2, 6, 4, 4 + width};
        const std::vector<int> times = fetched(area, group, ahead);
        const auto firstFetched =
            static_cast<std::size_t>(std::find(times.begin(), times.end(), 1) - times.begin());
        EXPECT_GT(firstFetched, 0U);
        EXPECT_LE(firstFetched, width);
        EXPECT_LT(firstFetched, (ahead + 1) * group);
        // Below the last row there is none, and what lies ahead of its groups is fetched for nothing. A part
        // of a group at a row's end fetches as much as a whole one.
        for (std::size_t i = firstFetched; i < times.size() - width; ++i)
          EXPECT_TRUE(times[i] == 1 || times[i] == 2)
              << width << " pixels, " << group << " at a time, " << ahead << " ahead: " << i;
      }
}

}  // namespace
}  // namespace lumo
