// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "imaging/PointAdder.h"
#include "imaging/TileCover.h"
#include "imaging/WorkGrid.h"

namespace lumo {
namespace {

ABMakeParameters gridOf(std::int32_t kernel) {
  ABMakeParameters p;
  p.halfSizeX = 256;
  p.halfSizeY = 128;
  p.uvLimitU = p.uvLimitV = 1;
  p.uvScaleU = 256e3;
  p.uvScaleV = 128e3;
  p.kernelType = kernel;
  p.kernelWidthU = 3;
  p.kernelWidthV = 5;
  return p;
}

/// Points here and there, some beyond the grid and some next to u = 0.
std::vector<std::pair<double, double>> somePoints(int count) {
  std::mt19937_64 engine(5);
  std::uniform_real_distribution<double> u(-270e3, 270e3);
  std::uniform_real_distribution<double> v(-140e3, 140e3);
  std::vector<std::pair<double, double>> points;
  points.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) points.emplace_back(i % 7 == 0 ? u(engine) * 1e-3 : u(engine), v(engine));
  return points;
}

/// Tiles in which gridding the points leaves something.
std::uint64_t griddedTiles(const ABMakeParameters& p, const std::vector<std::pair<double, double>>& points) {
  const GridGeometry geometry(p);
  const auto adder = makePointAdder(p, geometry);
  TilePool pool;
  WorkGrid grid(geometry, 1, pool);
  PointAdder::Scratch scratch;
  for (const auto& [u, v] : points) {
    PointList list;
    list.count = 1;
    list.u[0] = u;
    list.v[0] = v;
    list.weight[0] = 1;
    adder->prepare(list);
    adder->add(list, {&grid, 1}, 0, scratch);
  }
  SpectralGridSet set;
  set.resize(1, static_cast<std::uint32_t>(geometry.rows), static_cast<std::uint32_t>(geometry.columns));
  for (std::int32_t row = 0; row < grid.layout().tileRows; ++row)
    grid.foldTileRow(row, {1.0}, WorkGrid::Target(set, nullptr));
  std::set<std::pair<std::uint32_t, std::uint32_t>> tiles;
  for (std::uint32_t row = 0; row < set.beams[0].rows(); ++row)
    for (std::uint32_t column = 0; column < set.beams[0].columns(); ++column)
      if (set.beams[0](row, column) != 0.0)
        tiles.emplace(row / WorkGrid::kTileRows, column / WorkGrid::kTileColumns);
  return tiles.size();
}

std::uint64_t coveredTiles(const ABMakeParameters& p, const std::vector<std::pair<double, double>>& points) {
  const TileCover::Layout layout(p);
  TileCover cover;
  for (const auto& [u, v] : points) cover.add(layout, u, v);
  return cover.count();
}

TEST(TileCoverTest, OfAPillBoxItIsTheTilesThatGriddingTakes) {
  const ABMakeParameters p = gridOf(kKernelPillBox);
  const auto points = somePoints(400);
  const std::uint64_t gridded = griddedTiles(p, points);
  EXPECT_GT(gridded, 200u);
  EXPECT_EQ(coveredTiles(p, points), gridded);
}

TEST(TileCoverTest, OfAWideKernelItIsNotLessThanGriddingTakesAndHardlyMore) {
  for (const std::int32_t kernel : {kKernelGauss, kKernelLorentz, kKernelHat}) {
    const ABMakeParameters p = gridOf(kernel);
    const auto points = somePoints(100);
    const std::uint64_t gridded = griddedTiles(p, points);
    EXPECT_GE(coveredTiles(p, points), gridded) << kernel;
    // A hat is 0 in the corners of its footprint.
    EXPECT_LE(coveredTiles(p, points), gridded + gridded / 2) << kernel;
  }
}

TEST(TileCoverTest, MergedCoversCountTheirCommonTilesOnce) {
  const ABMakeParameters p = gridOf(kKernelPillBox);
  const TileCover::Layout layout(p);
  TileCover a, b;
  EXPECT_EQ(a.count(), 0u);
  a.add(layout, 100e3, 10e3);
  b.add(layout, 100e3, 10e3);
  b.add(layout, 200e3, 10e3);
  a.merge(b);
  EXPECT_EQ(a.count(), 2u);
  a.merge(TileCover());
  EXPECT_EQ(a.count(), 2u);
}

}  // namespace
}  // namespace lumo
