// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "imaging/CellSearch.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

constexpr double kFrequency = 1.37e9;

GridGeometry gridOf(std::int32_t halfSizeX, std::int32_t halfSizeY) {
  ABMakeParameters p;
  p.halfSizeX = halfSizeX;
  p.halfSizeY = halfSizeY;
  p.uvLimitU = p.uvLimitV = 1.1;
  p.uvScaleU = 254.7e3;
  p.uvScaleV = 131.3e3;
  return GridGeometry(p);
}

/// A stretch of one IF with records everywhere: in cells, on and next to their edges, next to u = 0, beyond
/// the grid; some of weight 0.
Stretch someRecords(const GridGeometry& g, std::mt19937_64& random) {
  std::uniform_real_distribution<double> unit(-1.05, 1.05);
  std::uniform_int_distribution<int> cell(-g.nx - 2, g.nx + 2);
  std::uniform_int_distribution<int> choice(0, 99);
  const auto nearEdge = [&](double width) {
    return (cell(random) + 0.5 + std::ldexp(unit(random), -26 - choice(random) % 28)) * width / kFrequency;
  };
  Stretch stretch;
  stretch.ifs.resize(1);
  stretch.records = Stretch::kCapacity - 3;
  for (std::size_t i = 0; i < stretch.records; ++i) {
    stretch.u[i] = unit(random) * g.uMax / kFrequency;
    stretch.v[i] = unit(random) * g.vMax / kFrequency;
    // Whole vectors without such records too.
    const int kind = i < 128 ? choice(random) : 99;
    if (kind < 8) stretch.u[i] = nearEdge(g.du);
    if (kind > 4 && kind < 12) stretch.v[i] = nearEdge(g.dv);
    if (kind > 20 && kind < 24) stretch.u[i] *= 1e-4;
    if (kind == 24) stretch.u[i] = std::copysign(0.0, stretch.v[i]);
    if (kind == 25) stretch.u[i] = 1e300;
    Stretch::Means& means = stretch.ifs[0];
    means.re[i] = static_cast<float>(unit(random));
    means.im[i] = kind == 30 ? 0.0F : static_cast<float>(unit(random));
    means.weight[i] = kind > 90 && kind < 95 ? 0.0F : static_cast<float>(1.5 + unit(random));
    if (kind == 91) means.re[i] = std::numeric_limits<float>::quiet_NaN();
  }
  return stretch;
}

/// The points of all records as PointMaker makes them, those of weight 0 among them.
PointList pointsOf(const Stretch& stretch) {
  PointList points;
  points.count = stretch.records;
  for (std::size_t i = 0; i < points.count; ++i) {
    points.u[i] = stretch.u[i] * kFrequency;
    points.v[i] = stretch.v[i] * kFrequency;
    points.weight[i] = static_cast<double>(stretch.ifs[0].weight[i]);
    points.re[i] = static_cast<double>(stretch.ifs[0].re[i]);
    points.im[i] = static_cast<double>(stretch.ifs[0].im[i]);
  }
  return points;
}

void expectSamePoint(const PointList& made, const PointList& read, std::size_t i) {
  if (made.weight[i] == 0) {
    EXPECT_EQ(read.cell[i], PointList::kNoCell) << i;
    return;
  }
  ASSERT_EQ(read.cell[i], made.cell[i]) << i << ": " << made.u[i] << ", " << made.v[i];
  if (made.cell[i] != PointList::kNoCell) {
    EXPECT_EQ(std::memcmp(&read.sums[i], &made.sums[i], sizeof(WorkGrid::Cell)), 0) << i;
  }
  if (made.cell[i] != PointList::kUnclear) return;
  for (const auto member : {&PointList::u, &PointList::v, &PointList::weight, &PointList::re, &PointList::im})
    EXPECT_EQ((read.*member)[i], (made.*member)[i]) << i;
}

TEST(CellSearchTest, FindsForRecordsWhatItFindsForTheirPoints) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const test::TargetGuard guard(target);
    std::mt19937_64 random(17);
    int inCells = 0;
    int others = 0;
    for (const std::int32_t size : {8, 64, 512})
      for (int n = 0; n < 40; ++n) {
        const GridGeometry geometry = gridOf(size, size / 2);
        const Stretch stretch = someRecords(geometry, random);
        PointList made = pointsOf(stretch);
        searchCells(geometry, made);
        PointList read;
        searchCells(geometry, stretch, 0, kFrequency, read);
        ASSERT_EQ(read.count, stretch.records);
        for (std::size_t i = 0; i < read.count; ++i) {
          expectSamePoint(made, read, i);
          ++(read.cell[i] >= 0 ? inCells : others);
        }
      }
    EXPECT_GT(inCells, 20000);
    EXPECT_GT(others, 1000);
  }
}

}  // namespace
}  // namespace lumo
