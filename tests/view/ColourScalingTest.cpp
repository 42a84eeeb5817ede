// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "view/ColourScaling.h"

namespace lumo {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// The values 0, 1, ... 999 in a mixed order, and a NaN.
AMatrix<float> thousandValues() {
  AMatrix<float> map(7, 143);
  for (std::uint32_t i = 0; i < 1000; ++i) map.data()[i] = static_cast<float>(i * 7919 % 1000);
  map.data()[1000] = kNan;
  return map;
}

TEST(ColourScalingTest, AHundredPercentIsMinimumAndMaximum) {
  EXPECT_EQ(percentileLimits(thousandValues(), 100.0), (ValueLimits{0.0, 999.0}));
}

TEST(ColourScalingTest, PercentilesLeaveOutAsManyBelowAsAbove) {
  // 0.25 % of 1000 are two whole pixels on each side, 2.5 % are 25.
  EXPECT_EQ(percentileLimits(thousandValues(), 99.5), (ValueLimits{2.0, 997.0}));
  EXPECT_EQ(percentileLimits(thousandValues(), 95.0), (ValueLimits{25.0, 974.0}));
}

TEST(ColourScalingTest, ZeroPercentStillHasLimits) {
  const auto limits = percentileLimits(thousandValues(), 0.0);
  EXPECT_EQ(limits.low, 499.0);
  EXPECT_EQ(limits.high, 500.0);
}

TEST(ColourScalingTest, InfinitePixelsDoNotCount) {
  AMatrix<float> map(1, 3);
  map(0, 0) = std::numeric_limits<float>::infinity();
  map(0, 1) = -2.0F;
  map(0, 2) = 5.0F;
  EXPECT_EQ(percentileLimits(map, 100.0), (ValueLimits{-2.0, 5.0}));
}

TEST(ColourScalingTest, AMapWithoutAFinitePixelHasZeroLimits) {
  AMatrix<float> map(2, 2);
  for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = kNan;
  EXPECT_EQ(percentileLimits(map, 99.0), ValueLimits{});
  EXPECT_EQ(percentileLimits(AMatrix<float>(), 99.0), ValueLimits{});
}

TEST(ColourScalingTest, LinearIsProportional) {
  const ColourScaling scaling(ScalingKind::kLinear, {-1.0, 3.0});
  EXPECT_DOUBLE_EQ(scaling.position(0.0), 0.25);
  EXPECT_EQ(scaling.position(-5.0), 0.0);
  EXPECT_EQ(scaling.position(5.0), 1.0);
}

TEST(ColourScalingTest, SquareRootPutsAQuarterInTheMiddle) {
  EXPECT_DOUBLE_EQ(ColourScaling(ScalingKind::kSquareRoot, {-1.0, 3.0}).position(0.0), 0.5);
}

TEST(ColourScalingTest, LogarithmicFollowsItsFormula) {
  const ColourScaling scaling(ScalingKind::kLogarithmic, {0.0, 2.0});
  EXPECT_EQ(scaling.position(0.0), 0.0);
  EXPECT_DOUBLE_EQ(scaling.position(2.0), 1.0);
  // log(1 + 1000 * 0.01) / log(1001)
  EXPECT_NEAR(scaling.position(0.02), std::log(11.0) / std::log(1001.0), 1e-14);
}

TEST(ColourScalingTest, NanStaysNan) {
  for (const ScalingKind kind : kScalingKinds) {
    EXPECT_TRUE(std::isnan(ColourScaling(kind, {0.0, 1.0}).position(kNan)));
    EXPECT_TRUE(std::isnan(ColourScaling(kind, {1.0, 1.0}).position(kNan)));
  }
}

TEST(ColourScalingTest, AConstantMapIsInTheMiddleOfTheColours) {
  const ColourScaling scaling(ScalingKind::kLogarithmic, {4.0, 4.0});
  EXPECT_EQ(scaling.position(4.0), 0.5);
  EXPECT_EQ(scaling.position(3.0), 0.0);
  EXPECT_EQ(scaling.position(5.0), 1.0);
}

TEST(ColourScalingTest, ValueUndoesPosition) {
  for (const ScalingKind kind : kScalingKinds) {
    const ColourScaling scaling(kind, {-0.5, 1.5});
    // A few roundings of numbers near one, and the logarithm's slope of up to 145 near its end.
    for (const double value : {-0.5, -0.4, 0.0, 1.0, 1.5}) {
      EXPECT_NEAR(scaling.value(scaling.position(value)), value, 1e-13) << scalingName(kind);
    }
  }
}

TEST(ColourScalingTest, LinearTicksAreRoundNumbersInPlace) {
  const auto ticks = colourScaleTicks({ScalingKind::kLinear, {-0.25, 1.0}}, {});
  ASSERT_EQ(ticks.size(), 7U);  // -0.2, 0, 0.2, ... 1
  EXPECT_EQ(ticks[0].label, "-0.2");
  EXPECT_NEAR(ticks[0].position, 0.04, 1e-12);
  EXPECT_EQ(ticks[1].label, "0");
  EXPECT_EQ(ticks[6].label, "1");
  EXPECT_NEAR(ticks[6].position, 1.0, 1e-12);
}

TEST(ColourScalingTest, TickNumbersAreDividedByThePrefix) {
  const auto ticks = colourScaleTicks({ScalingKind::kLinear, {0.0, 0.005}}, {"m", 1e-3});
  ASSERT_EQ(ticks.size(), 6U);
  EXPECT_EQ(ticks[1].label, "1");
  EXPECT_EQ(ticks[5].label, "5");
}

TEST(ColourScalingTest, CloseTicksOnLargeValuesDiffer) {
  const auto ticks = colourScaleTicks({ScalingKind::kLinear, {1000.001, 1000.006}}, {});
  ASSERT_GE(ticks.size(), 2U);
  for (std::size_t i = 1; i < ticks.size(); ++i) EXPECT_NE(ticks[i].label, ticks[i - 1].label);
}

TEST(ColourScalingTest, OtherScalingsHaveEvenTicks) {
  const auto ticks = colourScaleTicks({ScalingKind::kSquareRoot, {0.0, 1.0}}, {});
  ASSERT_EQ(ticks.size(), 6U);
  EXPECT_DOUBLE_EQ(ticks[1].position, 0.2);
  EXPECT_EQ(ticks[1].label, "0.04");
  EXPECT_EQ(ticks[5].label, "1");
}

TEST(ColourScalingTest, AConstantMapHasOneTick) {
  const auto ticks = colourScaleTicks({ScalingKind::kLinear, {7.0, 7.0}}, {});
  ASSERT_EQ(ticks.size(), 1U);
  EXPECT_EQ(ticks[0].position, 0.5);
  EXPECT_EQ(ticks[0].label, "7");
}

TEST(ColourScalingTest, UnboundedLimitsHaveNoTicks) {
  EXPECT_TRUE(colourScaleTicks({ScalingKind::kLinear, {0.0, INFINITY}}, {}).empty());
}

}  // namespace
}  // namespace lumo
