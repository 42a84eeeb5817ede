// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "analysis/AreaList.h"
#include "analysis/AreaShape.h"
#include "core/Units.h"

namespace lumo {
namespace {

// Pixels half an arcsecond wide and a quarter high; x = 0 at column 4, y = 0 at row 4. Both are exact in
// binary, so a centre on an outline is on it to the bit.
TMinMax fineRange() {
  TMinMax range;
  range.xMin = -2.0;
  range.xMax = 1.5;
  range.yMin = -1.0;
  range.yMax = 0.75;
  return range;
}

// North up, east to the right: the rows from the top.
std::vector<std::string> picture(const AreaShape& area, std::uint32_t size, const TMinMax& range) {
  ABitMatrix mask(size, size);
  fillMask(area, mask, range);
  std::vector<std::string> lines;
  for (std::uint32_t row = size; row-- > 0;) {
    lines.emplace_back();
    for (std::uint32_t column = 0; column < size; ++column)
      lines.back() += mask(row, column) != 0 ? '#' : '.';
  }
  return lines;
}

int pixelCount(const AreaShape& area, std::uint32_t size, const TMinMax& range) {
  int count = 0;
  for (const std::string& line : picture(area, size, range))
    for (const char c : line) count += c == '#' ? 1 : 0;
  return count;
}

TMinMax wideRange(std::uint32_t size, double step) {
  TMinMax range;
  range.xMin = range.yMin = -(size / 2.0) * step;
  range.xMax = range.yMax = (size / 2.0 - 1) * step;
  return range;
}

TEST(AreaShapeTest, CircleHoldsThePixelsWhoseCentresLieInsideOrOnIt) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(picture(AreaShape::circle({0, 0}, 0.5), 8, fineRange()), (Lines{"........",  // y = 0.75
                                                                            "....#...",  // 0.5
                                                                            "....#...",  // 0.25
                                                                            "...###..",  // 0
                                                                            "....#...",  // -0.25
                                                                            "....#...",  // -0.5
                                                                            "........", "........"}));
}

TEST(AreaShapeTest, EllipseRotatesFromEastTowardsNorth) {
  const AreaShape area = AreaShape::ellipse({1, 2}, 4.0, 1.0, 30.0);
  const double c = std::cos(30.0 * kRadianPerDegree);
  const double s = std::sin(30.0 * kRadianPerDegree);
  EXPECT_TRUE(area.contains({1 + 3.99 * c, 2 + 3.99 * s}));
  EXPECT_FALSE(area.contains({1 + 4.01 * c, 2 + 4.01 * s}));
  EXPECT_FALSE(area.contains({1 + 3.99 * c, 2 - 3.99 * s}));
  EXPECT_TRUE(area.contains({1 - 0.99 * s, 2 + 0.99 * c}));
  EXPECT_FALSE(area.contains({1 - 1.01 * s, 2 + 1.01 * c}));
}

TEST(AreaShapeTest, RectangleHasFullWidthAndHeight) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(picture(AreaShape::rectangle({0.5, 0.25}, 1.0, 0.5), 8, fineRange()),
            (Lines{"........", "....###.", "....###.", "....###.", "........", "........", "........",
                   "........"}));
}

TEST(AreaShapeTest, RectangleTurnedByAQuarterIsTheOneWithItsSidesExchangedToTheBit) {
  EXPECT_EQ(picture(AreaShape::rectangle({0.5, 0.0}, 0.5, 2.0, 90.0), 8, fineRange()),
            picture(AreaShape::rectangle({0.5, 0.0}, 2.0, 0.5), 8, fineRange()));
  EXPECT_EQ(picture(AreaShape::rectangle({0.5, 0.0}, 0.5, 2.0, -270.0), 8, fineRange()),
            picture(AreaShape::rectangle({0.5, 0.0}, 2.0, 0.5), 8, fineRange()));
}

TEST(AreaShapeTest, RotatedRectangleIsTheSquareOnItsTip) {
  const AreaShape area = AreaShape::rectangle({0, 0}, 2.0, 2.0, 45.0);
  EXPECT_TRUE(area.contains({1.41, 0.0}));
  EXPECT_FALSE(area.contains({1.42, 0.0}));
  EXPECT_FALSE(area.contains({0.9, 0.9}));
}

TEST(AreaShapeTest, AnOutlineThroughCentresHoldsThemWhereverItLies) {
  // Steps that are not exact in binary, so that centres and outlines are rounded.
  constexpr double kStep = 1e-3 / 7;
  constexpr std::uint32_t kSize = 40;
  const TMinMax range = wideRange(kSize, kStep);
  for (int row = -16; row < 16; ++row) {
    for (int column = -16; column < 16; ++column) {
      SCOPED_TRACE(std::to_string(row) + " " + std::to_string(column));
      const AreaPoint at{column * kStep, row * kStep};
      const auto corner = [&](int x, int y) { return AreaPoint{(column + x) * kStep, (row + y) * kStep}; };
      const double side = 4 * kStep;
      EXPECT_EQ(pixelCount(AreaShape::rectangle(at, side, side), kSize, range), 25);
      EXPECT_EQ(pixelCount(AreaShape::rectangle(at, side, side / 2, 90), kSize, range), 15);
      EXPECT_EQ(pixelCount(AreaShape::circle(at, 2 * kStep), kSize, range), 13);
      EXPECT_EQ(pixelCount(AreaShape::ellipse(at, 2 * kStep, kStep), kSize, range), 7);
      EXPECT_EQ(pixelCount(AreaShape::polygon({corner(-2, -2), corner(2, -2), corner(2, 2), corner(-2, 2)}),
                           kSize, range),
                25);
      // Along the diagonals.
      EXPECT_EQ(pixelCount(AreaShape::polygon({corner(-2, 0), corner(0, -2), corner(2, 0), corner(0, 2)}),
                           kSize, range),
                13);
    }
  }
}

TEST(AreaShapeTest, WhatLiesClearlyOutsideOfAnOutlineIsOutside) {
  constexpr double kStep = 1e-3 / 7;
  const TMinMax range = wideRange(16, kStep);
  EXPECT_EQ(pixelCount(AreaShape::rectangle({0, 0}, 3.9999 * kStep, 3.9999 * kStep), 16, range), 9);
  EXPECT_EQ(pixelCount(AreaShape::circle({0, 0}, 1.9999 * kStep), 16, range), 9);
}

TEST(AreaShapeTest, PolygonHoldsItsInsideAndItsOutline) {
  using Lines = std::vector<std::string>;
  const AreaShape triangle = AreaShape::polygon({{-1, -0.5}, {1, -0.5}, {-1, 0.5}});
  EXPECT_EQ(picture(triangle, 8, fineRange()), (Lines{"........", "..#.....", "..##....", "..###...",
                                                      "..####..", "..#####.", "........", "........"}));
}

TEST(AreaShapeTest, ConcavePolygonLeavesItsNotchOut) {
  const AreaShape notched = AreaShape::polygon({{-2, -2}, {2, -2}, {2, 2}, {0, 0}, {-2, 2}});
  EXPECT_FALSE(notched.contains({0, 1}));
  EXPECT_TRUE(notched.contains({1.5, 1}));
  EXPECT_TRUE(notched.contains({-1.5, 1}));
  EXPECT_TRUE(notched.contains({0, -1}));
}

TEST(AreaShapeTest, PolygonWithoutAnInsideHoldsNothing) {
  EXPECT_EQ(pixelCount(AreaShape::polygon({{-1, -1}, {1, 1}}), 8, fineRange()), 0);
  EXPECT_EQ(pixelCount(AreaShape::polygon({}), 8, fineRange()), 0);
}

TEST(AreaShapeTest, NumberOfPixelsApproachesTheAreaOfTheShape) {
  const TMinMax range = wideRange(400, 0.05);
  const double pixel = 0.05 * 0.05;
  // A pixel count errs by a fraction of the outline's length in pixels; 1 % is several times that here.
  EXPECT_NEAR(pixelCount(AreaShape::circle({1.3, -2.1}, 4), 400, range) * pixel, kPi * 16, 0.5);
  EXPECT_NEAR(pixelCount(AreaShape::ellipse({0.2, 0.7}, 6, 2, 33), 400, range) * pixel, kPi * 12, 0.38);
  EXPECT_NEAR(pixelCount(AreaShape::rectangle({0.2, 0.7}, 8, 3, -20), 400, range) * pixel, 24.0, 0.24);
}

TEST(AreaShapeTest, AreaOutsideTheMapMarksNothing) {
  EXPECT_EQ(pixelCount(AreaShape::circle({50, 50}, 1), 8, fineRange()), 0);
}

TEST(AreaShapeTest, AreaOfValuesThatAreNotFiniteMarksNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(pixelCount(AreaShape::circle({nan, 0}, 1), 8, fineRange()), 0);
  EXPECT_EQ(pixelCount(AreaShape::ellipse({0, 0}, 1, 1, nan), 8, fineRange()), 0);
  EXPECT_EQ(pixelCount(AreaShape::polygon({{nan, 0}, {1, nan}, {nan, 1}}), 8, fineRange()), 0);
}

TEST(AreaShapeTest, FillingAMaskKeepsTheBitsThatAreSet) {
  ABitMatrix mask(8, 8);
  mask.set(0, 0, 1);
  fillMask(AreaShape::circle({0, 0}, 0.1), mask, fineRange());
  EXPECT_NE(mask(0, 0), 0);
  EXPECT_NE(mask(4, 4), 0);
}

TEST(AreaListTest, WithoutAreasTheWholeMapIsOneArea) {
  const AreaList areas;
  ABitMatrix mask(2, 2);
  ASSERT_EQ(areas.areaCount(), 1U);
  areas.makeMask(0, mask, fineRange());
  for (std::uint32_t i = 0; i < 4; ++i) EXPECT_NE(mask(i / 2, i % 2), 0);
}

TEST(AreaListTest, MaskOfOneAreaHoldsNothingOfAnother) {
  AreaList areas;
  areas.add(AreaShape::circle({-2, -1}, 0.1));
  areas.add(AreaShape::circle({0, 0}, 0.1));
  ABitMatrix mask(8, 8);
  areas.makeMask(0, mask, fineRange());
  areas.makeMask(1, mask, fineRange());
  EXPECT_EQ(mask(0, 0), 0);
  EXPECT_NE(mask(4, 4), 0);
}

}  // namespace
}  // namespace lumo
