// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "numerics/AGaussFit.h"

namespace lumo {
namespace {

TEST(AGaussFitTest, StartsWithoutPoints) {
  const AGaussFit fit;
  EXPECT_EQ(fit.count(), 0);
  EXPECT_EQ(fit.sumX2(), 0.0);
  EXPECT_EQ(fit.sumX4(), 0.0);
  EXPECT_EQ(fit.sumLnY(), 0.0);
  EXPECT_EQ(fit.sumX2LnY(), 0.0);
}

TEST(AGaussFitTest, ExactSamplesGiveAmplitudeAndWidth) {
  AGaussFit fit;
  for (const double x : {0.0, 1.0, 2.0}) fit.add(x, 3.0 * std::exp(-0.5 * x * x));
  fit.solve();
  EXPECT_NEAR(fit.amplitude(), 3.0, 1e-14);
  EXPECT_NEAR(fit.b(), 0.5, 1e-15);
  EXPECT_NEAR(fit.valueAt(1.5), 3.0 * std::exp(-1.125), 1e-14);
}

TEST(AGaussFitTest, SumsAreThoseOfTheSquaresAndTheLogarithm) {
  AGaussFit fit;
  fit.add(-2.0, std::exp(3.0));
  fit.add(3.0, std::exp(-1.0));
  EXPECT_EQ(fit.count(), 2);
  EXPECT_EQ(fit.sumX2(), 13.0);
  EXPECT_EQ(fit.sumX4(), 97.0);
  EXPECT_NEAR(fit.sumLnY(), 2.0, 1e-15);
  EXPECT_NEAR(fit.sumX2LnY(), 3.0, 1e-14);
}

TEST(AGaussFitTest, ScatteredPointsGiveTheRegressionOfTheLogarithmOnTheSquare) {
  // ln y = 0, 1, 0, 1 at x^2 = 0, 1, 2, 3: slope 1/5, 1/5 at 0, so b = -1/5 and A = exp(1/5).
  AGaussFit fit;
  for (const int square : {0, 1, 2, 3}) fit.add(std::sqrt(square), std::exp(square % 2));
  fit.solve();
  EXPECT_NEAR(fit.b(), -0.2, 1e-14);
  EXPECT_NEAR(fit.amplitude(), std::exp(0.2), 1e-14);
}

TEST(AGaussFitTest, AnOrdinateNotAboveZeroMakesTheLogarithmSumInfiniteOrNotANumber) {
  AGaussFit zero;
  zero.add(1.0, 0.0);
  EXPECT_EQ(zero.sumLnY(), -std::numeric_limits<double>::infinity());
  AGaussFit negative;
  negative.add(1.0, -2.0);
  EXPECT_TRUE(std::isnan(negative.sumLnY()));
}

TEST(AGaussFitTest, FarOutTheValueIsZeroAndOneThatIsNotANumberStaysSo) {
  AGaussFit fit;
  for (const double x : {0.0, 1.0, 2.0}) fit.add(x, 3.0 * std::exp(-0.5 * x * x));
  fit.solve();
  EXPECT_EQ(fit.valueAt(1e200), 0.0);
  EXPECT_TRUE(std::isnan(fit.valueAt(std::numeric_limits<double>::quiet_NaN())));
}

TEST(AGaussFitTest, WithoutPointsNoParameterIsANumber) {
  AGaussFit fit;
  fit.solve();
  EXPECT_TRUE(std::isnan(fit.b()));
  EXPECT_TRUE(std::isnan(fit.amplitude()));
}

}  // namespace
}  // namespace lumo
