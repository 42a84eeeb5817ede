// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "numerics/AAproxPower.h"

namespace lumo {
namespace {

TEST(AAproxPowerTest, IsTheIdentityBeforeTheFirstFit) {
  const AAproxPower power;
  EXPECT_EQ(power.amplitude(), 1.0);
  EXPECT_EQ(power.alpha(), 1.0);
  EXPECT_EQ(power.valueAt(3.5F), 3.5);
}

TEST(AAproxPowerTest, PointsExactlyOnAPowerLawGiveItsIndexAndAmplitude) {
  std::vector<float> x;
  std::vector<float> y;
  for (const double frequency : {1.0, 1.4, 2.3, 5.0, 8.4, 15.0}) {
    x.push_back(static_cast<float>(frequency));
    y.push_back(static_cast<float>(2.0 * std::pow(static_cast<double>(x.back()), -0.7)));
  }
  AAproxPower power;
  EXPECT_EQ(power.fit(x.data(), y.data(), 0, 5), 0);
  // Every flux is off by up to 2^-24 = 6e-8 of itself, the rounding to single precision.
  EXPECT_NEAR(power.alpha(), -0.7, 1e-7);
  EXPECT_NEAR(power.amplitude(), 2.0, 4e-7);
  EXPECT_NEAR(power.valueAt(4.0F), 2.0 * std::pow(4.0, -0.7), 2e-7);
}

TEST(AAproxPowerTest, ComputesInDouble) {
  // 3 / (4 x^2) at powers of two is exact in single precision, so only the double logarithms round.
  const std::array<float, 4> x{1.0F, 2.0F, 4.0F, 8.0F};
  const std::array<float, 4> y{0.75F, 0.1875F, 0.046875F, 0.01171875F};
  AAproxPower power;
  power.fit(x.data(), y.data(), 0, 3);
  EXPECT_NEAR(power.alpha(), -2.0, 1e-14);
  EXPECT_NEAR(power.amplitude(), 0.75, 1e-14);
  EXPECT_EQ(power.valueAt(0.1F), power.amplitude() * std::pow(static_cast<double>(0.1F), power.alpha()));
}

TEST(AAproxPowerTest, MinimisesTheSquaresOfTheLogarithms) {
  // ln y = 0, 1, 0, 1 at ln x = 0, 1, 2, 3: slope 1 / 5, mean 1 / 2 at 3 / 2, so ln A = 1 / 5.
  const float e = std::exp(1.0F);
  const std::array<float, 4> x{1.0F, e, e * e, e * e * e};
  const std::array<float, 4> y{1.0F, e, 1.0F, e};
  AAproxPower power;
  power.fit(x.data(), y.data(), 0, 3);
  // The logarithms are off by a few roundings of single precision.
  EXPECT_NEAR(power.alpha(), 0.2, 5e-7);
  EXPECT_NEAR(std::log(power.amplitude()), 0.2, 5e-7);
}

TEST(AAproxPowerTest, UsesThePointsFromFirstToLastOnly) {
  const std::array<float, 5> x{7.0F, 1.0F, 2.0F, 4.0F, 9.0F};
  const std::array<float, 5> y{-1.0F, 5.0F, 10.0F, 20.0F, -1.0F};
  AAproxPower power;
  power.fit(x.data(), y.data(), 1, 3);
  EXPECT_NEAR(power.alpha(), 1.0, 1e-14);
  EXPECT_NEAR(power.amplitude(), 5.0, 1e-13);
}

TEST(AAproxPowerTest, AZeroFluxOrFrequencyEntersAsTheLogarithmMinusHundred) {
  // (ln x, ln y) = (-100, 0) and (0, -100): slope -1, ln A = -100.
  const std::array<float, 2> x{0.0F, 1.0F};
  const std::array<float, 2> y{1.0F, -0.0F};
  AAproxPower power;
  EXPECT_EQ(power.fit(x.data(), y.data(), 0, 1), 0);
  EXPECT_EQ(power.alpha(), -1.0);
  EXPECT_EQ(power.amplitude(), std::exp(-100.0));
}

TEST(AAproxPowerTest, EqualAbscissaeGiveAnIndexThatIsNotFiniteWithoutAnError) {
  const std::array<float, 4> x{2.0F, 2.0F, 2.0F, 2.0F};
  const std::array<float, 4> y{1.0F, 3.0F, 5.0F, 7.0F};
  AAproxPower power;
  EXPECT_EQ(power.fit(x.data(), y.data(), 0, 3), 0);
  EXPECT_FALSE(std::isfinite(power.alpha()));
  EXPECT_EQ(power.fit(x.data(), y.data(), 2, 2), 0);
  EXPECT_FALSE(std::isfinite(power.alpha()));
}

TEST(AAproxPowerTest, ANegativeValueGivesParametersThatAreNotANumber) {
  const std::array<float, 3> x{1.0F, 2.0F, 3.0F};
  const std::array<float, 3> y{1.0F, -2.0F, 3.0F};
  AAproxPower power;
  EXPECT_EQ(power.fit(x.data(), y.data(), 0, 2), 0);
  EXPECT_TRUE(std::isnan(power.alpha()));
  EXPECT_TRUE(std::isnan(power.amplitude()));
  EXPECT_EQ(power.fit(y.data(), x.data(), 0, 2), 0);
  EXPECT_TRUE(std::isnan(power.alpha()));
}

TEST(AAproxPowerTest, AnEmptyRangeGivesParametersThatAreNotFinite) {
  AAproxPower power;
  EXPECT_EQ(power.fit(nullptr, nullptr, 0, -1), 0);
  EXPECT_FALSE(std::isfinite(power.alpha()));
  EXPECT_FALSE(std::isfinite(power.amplitude()));
}

}  // namespace
}  // namespace lumo
