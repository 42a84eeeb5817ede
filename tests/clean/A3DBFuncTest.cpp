// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "clean/A3DBFunc.h"
#include "clean/A3DGaussFunc.h"
#include "clean/A3DPillBoxFunc.h"
#include "core/Units.h"

namespace lumo {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// A function with any extent and a value that tells its coordinates.
class Ramp : public A3DBFunc {
 public:
  Ramp(double sizeX, double sizeY) : sizeX_(sizeX), sizeY_(sizeY) {}
  [[nodiscard]] double GetSizeX() const override { return sizeX_; }
  [[nodiscard]] double GetSizeY() const override { return sizeY_; }
  [[nodiscard]] double Value(double x, double y) const override { return 100.0 * y + x; }

 private:
  double sizeX_;
  double sizeY_;
};

TEST(A3DBFuncTest, BaseIsOneEverywhereWithoutExtent) {
  const A3DBFunc function;
  EXPECT_EQ(function.GetSizeX(), 0.0);
  EXPECT_EQ(function.GetSizeY(), 0.0);
  EXPECT_EQ(function.Value(3.0, -4.0), 1.0);
  EXPECT_EQ(function.FourierValue(3.0, -4.0), 1.0);
  const auto matrix = function.MakeMatrix(1.0, 1.0);
  ASSERT_EQ(matrix->size(), 1U);
  EXPECT_EQ((*matrix)(0, 0), 1.0F);
}

TEST(A3DBFuncTest, MakeMatrixTakesTheExtentAsAHalfWidth) {
  // 7 / 2 + 0.5 = 4 columns and 4.4 / 3 + 0.5 = 1.97, truncated to 1 row, to each side.
  const auto matrix = Ramp(7.0, 4.4).MakeMatrix(2.0, 3.0);
  ASSERT_EQ(matrix->rows(), 3U);
  ASSERT_EQ(matrix->columns(), 9U);
  EXPECT_EQ((*matrix)(1, 4), 0.0F);
  EXPECT_EQ((*matrix)(0, 4), -300.0F);
  EXPECT_EQ((*matrix)(2, 8), 308.0F);
  EXPECT_EQ((*matrix)(1, 0), -8.0F);
}

TEST(A3DBFuncTest, MakeMatrixFullTakesTheExtentAsAFullWidthForcedOdd) {
  // 7 / 1 + 0.5 gives 7, made 6 + 1; 8.6 / 1 + 0.5 gives 9, made 8 + 1.
  const auto matrix = Ramp(7.0, 8.6).MakeMatrixFull(1.0, 1.0);
  ASSERT_EQ(matrix->columns(), 7U);
  ASSERT_EQ(matrix->rows(), 9U);
  EXPECT_EQ((*matrix)(4, 3), 0.0F);
  EXPECT_EQ((*matrix)(8, 6), 403.0F);
  const auto even = Ramp(6.0, 0.4).MakeMatrixFull(1.0, 1.0);
  EXPECT_EQ(even->columns(), 7U);
  EXPECT_EQ(even->rows(), 1U);
}

TEST(A3DBFuncTest, MakeMatrixKeepsToTheLimitsOfItsCaller) {
  const auto matrix = Ramp(1e300, 2.0).MakeMatrix(1e-10, 1.0, 5, 3);
  EXPECT_EQ(matrix->rows(), 5U);
  EXPECT_EQ(matrix->columns(), 7U);
}

TEST(A3DBFuncTest, SizesThatAreNotANumberOrNegativeGiveOnePixel) {
  for (const double size : {kNan, -5.0}) {
    EXPECT_EQ(Ramp(size, size).MakeMatrix(1.0, 1.0)->size(), 1U);
    EXPECT_EQ(Ramp(size, size).MakeMatrixFull(1.0, 1.0)->size(), 1U);
  }
  EXPECT_EQ(Ramp(5.0, 5.0).MakeMatrix(kNan, kNan)->size(), 1U);
}

TEST(A3DBFuncTest, HugeSizesAreCutAtTheLimitOfTheFamily) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Ramp(infinity, 0.0).MakeMatrix(1.0, 1.0)->columns(), 2 * A3DBFunc::kMaxHalfSize + 1);
  EXPECT_EQ(Ramp(0.0, 1e30).MakeMatrixFull(1.0, 1.0)->rows(), 2 * A3DBFunc::kMaxHalfSize + 1);
  EXPECT_EQ(Ramp(1.0, 0.0).MakeMatrix(0.0, 1.0)->columns(), 2 * A3DBFunc::kMaxHalfSize + 1);
}

TEST(A3DGaussFuncTest, PeakIsExactlyOneAndHalfAtHalfTheWidth) {
  const A3DGaussFunc gauss(6.0, 2.0, 0.0);
  EXPECT_EQ(gauss.Value(0.0, 0.0), 1.0);
  EXPECT_NEAR(gauss.Value(3.0, 0.0), 0.5, 1e-14);
  EXPECT_NEAR(gauss.Value(0.0, -1.0), 0.5, 1e-14);
  EXPECT_NEAR(gauss.Value(3.0, 1.0), 0.25, 1e-14);
}

TEST(A3DGaussFuncTest, AngleTurnsTheFirstWidthFromXTowardsY) {
  const double angle = 30.0 * kRadianPerDegree;
  const A3DGaussFunc gauss(6.0, 2.0, angle);
  EXPECT_NEAR(gauss.Value(3.0 * std::cos(angle), 3.0 * std::sin(angle)), 0.5, 1e-14);
  EXPECT_NEAR(gauss.Value(-std::sin(angle), std::cos(angle)), 0.5, 1e-14);
  EXPECT_LT(gauss.Value(3.0 * std::cos(angle), -3.0 * std::sin(angle)), 0.1);
}

TEST(A3DGaussFuncTest, ExtentIsFourStandardDeviationsOfTheTurnedEllipse) {
  const double perWidth = 4.0 / (2.0 * std::sqrt(2.0 * std::log(2.0)));
  const A3DGaussFunc straight(6.0, 2.0, 0.0);
  EXPECT_NEAR(straight.GetSizeX(), 6.0 * perWidth, 1e-13);
  EXPECT_NEAR(straight.GetSizeY(), 2.0 * perWidth, 1e-13);
  const A3DGaussFunc turned(6.0, 2.0, 30.0 * kRadianPerDegree);
  EXPECT_NEAR(turned.GetSizeX(), 6.0 * perWidth * std::sqrt(0.75), 1e-13);
  EXPECT_NEAR(turned.GetSizeY(), 6.0 * perWidth * 0.5, 1e-13);
}

TEST(A3DGaussFuncTest, ExponentIsCutAtMinusSixHundredAlsoWhenItIsNotANumber) {
  EXPECT_EQ(A3DGaussFunc(1.0, 1.0, 0.0).Value(1e6, 0.0), std::exp(-600.0));
  EXPECT_EQ(A3DGaussFunc(0.0, 0.0, 0.0).Value(0.0, 0.0), std::exp(-600.0));
  EXPECT_EQ(A3DGaussFunc(kNan, 1.0, 0.0).Value(0.0, 0.0), std::exp(-600.0));
  EXPECT_EQ(A3DGaussFunc(1.0, 1.0, 0.0).FourierValue(1e6, 0.0), std::exp(-600.0));
  EXPECT_EQ(A3DGaussFunc(1.0, 1.0, 0.0).FourierValue(kNan, 0.0), std::exp(-600.0));
}

TEST(A3DGaussFuncTest, FourierValueFallsWithAQuarterOfTheSquares) {
  const A3DGaussFunc gauss(6.0, 2.0, 1.0);
  const double sigmaX = 6.0 / (2.0 * std::sqrt(2.0 * std::log(2.0)));
  const double sigmaY = sigmaX / 3.0;
  EXPECT_EQ(gauss.FourierValue(0.0, 0.0), 1.0);
  EXPECT_NEAR(gauss.FourierValue(0.3, 0.0), std::exp(-0.25 * sigmaX * sigmaX * 0.09), 1e-14);
  EXPECT_NEAR(gauss.FourierValue(0.0, 0.7), std::exp(-0.25 * sigmaY * sigmaY * 0.49), 1e-14);
}

TEST(A3DGaussFuncTest, WidthsOfZeroSampleToOneZeroPixel) {
  const auto matrix = A3DGaussFunc(0.0, 0.0, 0.4).MakeMatrix(0.5, 0.5);
  ASSERT_EQ(matrix->size(), 1U);
  EXPECT_EQ((*matrix)(0, 0), 0.0F);
}

TEST(A3DPillBoxFuncTest, TransformIsOneAsSoonAsEitherArgumentIsZero) {
  const A3DPillBoxFunc box(2.0, 3.0);
  EXPECT_EQ(box.FourierValue(0.0, 2.0), 1.0);
  EXPECT_EQ(box.FourierValue(2.0, 0.0), 1.0);
  EXPECT_DOUBLE_EQ(box.FourierValue(2.0, 0.5), std::sin(2.0) / 2.0 * std::sin(0.5) / 0.5);
}

TEST(A3DPillBoxFuncTest, EverythingElseIsThatOfTheBase) {
  const A3DPillBoxFunc box(2.0, 3.0);
  EXPECT_EQ(box.widthX(), 2.0);
  EXPECT_EQ(box.widthY(), 3.0);
  EXPECT_EQ(box.GetSizeX(), 0.0);
  EXPECT_EQ(box.GetSizeY(), 0.0);
  EXPECT_EQ(box.Value(9.0, 9.0), 1.0);
}

}  // namespace
}  // namespace lumo
