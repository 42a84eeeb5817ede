// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "clean/A3DGaussFunc.h"
#include "clean/CleanProblem.h"
#include "clean/Restoration.h"
#include "clean/StraightClean.h"
#include "core/Units.h"

namespace lumo {
namespace {

using test::flatMap;
using test::sameBits;

AMapHeader headerOf(double major, double minor, double pa) {
  AMapHeader header;
  header.beamMajor = major;
  header.beamMinor = minor;
  header.beamPa = pa;
  return header;
}

/// Ranges of a map of rows x columns pixels with steps of dx and dy.
TMinMax rangeOf(std::uint32_t rows, std::uint32_t columns, double dx, double dy) {
  TMinMax range;
  range.xMin = -3.0;
  range.xMax = -3.0 + (columns - 1) * dx;
  range.yMin = 5.0;
  range.yMax = 5.0 + (rows - 1) * dy;
  return range;
}

AMatrix<float> oneComponent(std::uint32_t rows, std::uint32_t columns, std::uint32_t row,
                            std::uint32_t column, float value) {
  AMatrix<float> components(rows, columns);
  components(row, column) = value;
  return components;
}

/// The Gaussian of the beam in closed form: east and north in arcseconds from its middle.
double gaussian(double east, double north, double major, double minor, double paDegrees) {
  const double pa = paDegrees * kPi / 180.0;
  const double along = north * std::cos(pa) + east * std::sin(pa);
  const double across = -north * std::sin(pa) + east * std::cos(pa);
  return std::exp(-4.0 * std::log(2.0) *
                  (along * along / (major * major) + across * across / (minor * minor)));
}

TEST(RestorationTest, ComponentBecomesTheGaussianOfTheHeaderWithItsPositionAngleNorthThroughEast) {
  for (const double pa : {0.0, 25.0, 90.0, -60.0}) {
    const auto beam = makeRestoringBeam(headerOf(6.0, 3.0, pa), rangeOf(40, 50, 0.5, 0.75), 40, 50);
    const AMatrix<float> restored = restoreComponents(oneComponent(40, 50, 20, 24, 2.5F), *beam);
    EXPECT_EQ(restored(20, 24), 2.5F);
    const int halfRows = static_cast<int>(beam->rows()) / 2;
    const int halfColumns = static_cast<int>(beam->columns()) / 2;
    ASSERT_GE(halfRows, 4);
    ASSERT_GE(halfColumns, 8);
    for (int row = 0; row < 40; ++row) {
      for (int column = 0; column < 50; ++column) {
        const bool inside = std::abs(row - 20) <= halfRows && std::abs(column - 24) <= halfColumns;
        const double expected =
            inside ? 2.5 * gaussian(0.5 * (column - 24), 0.75 * (row - 20), 6.0, 3.0, pa) : 0.0;
        // Two roundings to float.
        EXPECT_NEAR(restored(row, column), expected, 4e-7) << pa << " " << row << " " << column;
      }
    }
  }
}

TEST(RestorationTest, PositionAngleOfNinetyDegreesLaysTheMajorWidthAlongTheColumns) {
  const auto beam = makeRestoringBeam(headerOf(8.0, 4.0, 90.0), rangeOf(64, 64, 1.0, 1.0), 64, 64);
  const std::uint32_t row = beam->rows() / 2;
  const std::uint32_t column = beam->columns() / 2;
  EXPECT_GT(beam->columns(), beam->rows());
  EXPECT_NEAR((*beam)(row, column + 4), 0.5F, 1e-6);
  EXPECT_NEAR((*beam)(row + 2, column), 0.5F, 1e-6);
}

TEST(RestorationTest, ComponentInTheCornerRestoresOnlyThePartInsideTheMap) {
  const auto beam = makeRestoringBeam(headerOf(4.0, 2.0, 45.0), rangeOf(12, 10, 1.0, 1.0), 12, 10);
  const int middleRow = static_cast<int>(beam->rows()) / 2;
  const int middleColumn = static_cast<int>(beam->columns()) / 2;
  const AMatrix<float> first = restoreComponents(oneComponent(12, 10, 0, 0, 1.0F), *beam);
  const AMatrix<float> last = restoreComponents(oneComponent(12, 10, 11, 9, 1.0F), *beam);
  for (int row = 0; row < 12; ++row) {
    for (int column = 0; column < 10; ++column) {
      const bool inside = row <= middleRow && column <= middleColumn;
      EXPECT_EQ(first(row, column), inside ? (*beam)(middleRow + row, middleColumn + column) : 0.0F);
      EXPECT_EQ(last(11 - row, 9 - column), inside ? (*beam)(middleRow - row, middleColumn - column) : 0.0F);
    }
  }
}

TEST(RestorationTest, EqualsTheLiteralSumsToTheBit) {
  const test::CleanProblem problem = test::randomProblem(1, {9, 14}, {18, 28}, 77);
  AMatrix<float> components = problem.maps[0];
  for (std::size_t i = 0; i < components.size(); i += 3) components.data()[i] = 0.0F;
  for (const test::Shape shape :
       {test::Shape{7, 5}, test::Shape{1, 1}, test::Shape{17, 27}, test::Shape{4, 6}}) {
    const AMatrix<float> beam = test::randomProblem(1, shape, shape, 78).maps[0];
    EXPECT_TRUE(sameBits(restoreComponents(components, beam), test::straightRestore(components, beam)));
  }
}

TEST(RestorationTest, NotANumberCountsAsAComponent) {
  const AMatrix<float> beam = flatMap({3, 3}, 0.5F);
  AMatrix<float> components(5, 5);
  components(1, 1) = std::numeric_limits<float>::quiet_NaN();
  const AMatrix<float> restored = restoreComponents(components, beam);
  EXPECT_TRUE(std::isnan(restored(0, 0)));
  EXPECT_TRUE(std::isnan(restored(2, 2)));
  EXPECT_EQ(restored(3, 3), 0.0F);
}

TEST(RestorationTest, WidthsOfZeroOrUnsetRestoreToZeroMaps) {
  for (const double width : {0.0, std::numeric_limits<double>::quiet_NaN()}) {
    const auto beam = makeRestoringBeam(headerOf(width, width, width), rangeOf(8, 8, 1.0, 1.0), 8, 8);
    EXPECT_EQ(beam->size(), 1U);
    EXPECT_TRUE(sameBits(restoreComponents(flatMap({8, 8}, 3.0F), *beam), AMatrix<float>(8, 8)));
  }
}

TEST(RestorationTest, BeamIsLimitedToWhatCanFallOnTheMap) {
  const auto beam = makeRestoringBeam(headerOf(1e200, 1e200, 10.0), rangeOf(6, 9, 1.0, 1.0), 6, 9);
  EXPECT_EQ(beam->rows(), 11U);
  EXPECT_EQ(beam->columns(), 17U);
}

TEST(RestorationTest, LimitOfTheBeamChangesNoRestoredBit) {
  const AMatrix<float> components = test::randomProblem(1, {6, 9}, {12, 18}, 79).maps[0];
  const auto limited = makeRestoringBeam(headerOf(20.0, 15.0, 30.0), rangeOf(6, 9, 1.0, 1.0), 6, 9);
  const auto whole = A3DGaussFunc(20.0, 15.0, (90.0 - 30.0) * kRadianPerDegree).MakeMatrix(1.0, 1.0);
  ASSERT_LT(limited->size(), whole->size());
  EXPECT_TRUE(sameBits(restoreComponents(components, *limited), restoreComponents(components, *whole)));
}

TEST(RestorationTest, MapOfOnePixelHasNoStepAndRestoresToZero) {
  const auto beam = makeRestoringBeam(headerOf(2.0, 2.0, 0.0), rangeOf(1, 1, 1.0, 1.0), 1, 1);
  ASSERT_EQ(beam->size(), 1U);
  EXPECT_EQ(restoreComponents(flatMap({1, 1}, 5.0F), *beam)(0, 0), 0.0F);
}

TEST(RestorationTest, ResidualIsAddedInSinglePrecision) {
  AMatrix<float> restored = flatMap({2, 2}, 16777216.0F);
  addResidual(restored, flatMap({2, 2}, 1.0F));
  // 2^24 + 1 is no float; the tie goes to the even neighbour.
  EXPECT_EQ(restored(1, 1), 16777216.0F);
  addResidual(restored, flatMap({2, 2}, -2.0F));
  EXPECT_EQ(restored(0, 1), 16777214.0F);
}

}  // namespace
}  // namespace lumo
