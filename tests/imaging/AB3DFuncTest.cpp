// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "imaging/AB3DFunc.h"

namespace lumo {
namespace {

// Values of a handful of operations on numbers of order one.
constexpr double kRounding = 4e-16;

TEST(APillBox3DFuncTest, IsOneFromTheLowerEdgeUpToBelowTheUpperEdge) {
  const APillBox3DFunc box(2.0, 4.0);
  EXPECT_EQ(box.value(-1.0, 0), 1.0);
  EXPECT_EQ(box.value(std::nextafter(1.0, 0.0), 0), 1.0);
  EXPECT_EQ(box.value(1.0, 0), 0.0);
  EXPECT_EQ(box.value(std::nextafter(-1.0, -2.0), 0), 0.0);
  EXPECT_EQ(box.value(0, -2.0), 1.0);
  EXPECT_EQ(box.value(0, 2.0), 0.0);
  EXPECT_EQ(box.value(-1.0, 2.0), 0.0);
}

TEST(APillBox3DFuncTest, ReachesHalfAWidth) {
  const APillBox3DFunc box(2.0, 5.0);
  EXPECT_EQ(box.halfWidthX(), 1.0);
  EXPECT_EQ(box.halfWidthY(), 2.5);
}

TEST(APillBox3DFuncTest, WithoutWidthsIsOneEverywhere) {
  const APillBox3DFunc none(0.0, 0.0);
  EXPECT_EQ(none.value(0, 0), 1.0);
  EXPECT_EQ(none.value(-1e30, 1e300), 1.0);
}

TEST(AGauss3DFuncTest, FallsToHalfAtHalfTheFullWidthInEachDirection) {
  const AGauss3DFunc gauss(3.0, 8.0);
  EXPECT_EQ(gauss.value(0, 0), 1.0);
  EXPECT_NEAR(gauss.value(1.5, 0), 0.5, kRounding);
  EXPECT_NEAR(gauss.value(-1.5, 0), 0.5, kRounding);
  EXPECT_NEAR(gauss.value(0, 4.0), 0.5, kRounding);
  // rho^2 adds up: one full width away in both directions is 2^-4 squared.
  EXPECT_NEAR(gauss.value(3.0, -8.0), 1.0 / 256, kRounding);
}

TEST(AGauss3DFuncTest, ReachesOneWidth) {
  const AGauss3DFunc gauss(3.0, 8.0);
  EXPECT_EQ(gauss.halfWidthX(), 3.0);
  EXPECT_EQ(gauss.halfWidthY(), 8.0);
}

TEST(ALorentz3DFuncTest, FallsToHalfAtHalfTheFullWidthAndReachesTwoWidths) {
  const ALorentz3DFunc lorentz(3.0, 8.0);
  EXPECT_EQ(lorentz.value(0, 0), 1.0);
  EXPECT_NEAR(lorentz.value(1.5, 0), 0.5, kRounding);
  EXPECT_NEAR(lorentz.value(0, -4.0), 0.5, kRounding);
  EXPECT_NEAR(lorentz.value(3.0, 8.0), 1.0 / 9, kRounding);
  EXPECT_EQ(lorentz.halfWidthX(), 6.0);
  EXPECT_EQ(lorentz.halfWidthY(), 16.0);
}

TEST(AHat3DFuncTest, IsAConeThatEndsOneWidthAway) {
  const AHat3DFunc hat(3.0, 8.0);
  EXPECT_EQ(hat.value(0, 0), 1.0);
  EXPECT_NEAR(hat.value(1.5, 0), 0.5, kRounding);
  EXPECT_NEAR(hat.value(0, -2.0), 0.75, kRounding);
  EXPECT_EQ(hat.value(3.0, 0), 0.0);
  EXPECT_EQ(hat.value(3.0, 8.0), 0.0);
  EXPECT_EQ(hat.halfWidthX(), 3.0);
  EXPECT_EQ(hat.halfWidthY(), 8.0);
}

TEST(ATH3DFuncTest, IsHalfAtItsThirdParameterWithAnEdgeOfItsFourth) {
  const ATH3DFunc th(10.0, 10.0, 2.0, 0.5);
  EXPECT_NEAR(th.value(20.0, 0), 0.5, kRounding);
  EXPECT_NEAR(th.value(25.0, 0), 0.5 * (1 - std::tanh(1.0)), kRounding);
  EXPECT_NEAR(th.value(0, -15.0), 0.5 * (1 + std::tanh(1.0)), kRounding);
}

TEST(ATH3DFuncTest, IsAStepWhenItsFourthParameterIsZero) {
  const ATH3DFunc step(10.0, 10.0, 2.0, 0.0);
  EXPECT_EQ(step.value(19.9, 0), 1.0);
  EXPECT_EQ(step.value(20.1, 0), 0.0);
  EXPECT_EQ(step.value(0, 0), 1.0);
}

TEST(AB3DFuncTest, AWidthOfZeroIsConstantInThatDirectionAndReachesNothing) {
  const AGauss3DFunc gauss(0.0, 4.0);
  const ALorentz3DFunc lorentz(4.0, 0.0);
  const AHat3DFunc hat(0.0, 4.0);
  EXPECT_EQ(gauss.value(1e20, 0), 1.0);
  EXPECT_NEAR(gauss.value(1e20, 2.0), 0.5, kRounding);
  EXPECT_EQ(gauss.halfWidthX(), 0.0);
  EXPECT_NEAR(lorentz.value(2.0, -1e20), 0.5, kRounding);
  EXPECT_EQ(lorentz.halfWidthY(), 0.0);
  EXPECT_NEAR(hat.value(-1e20, 2.0), 0.5, kRounding);
}

}  // namespace
}  // namespace lumo
