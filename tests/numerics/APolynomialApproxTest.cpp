// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "numerics/APolynomialApprox.h"

namespace lumo {
namespace {

TEST(APolynomialApproxTest, PointsOnACubicGiveItsCoefficients) {
  const std::array<float, 7> x{-1.5F, -1.0F, -0.5F, 0.0F, 0.5F, 1.0F, 1.5F};
  std::array<float, 7> y{};
  for (std::size_t i = 0; i < 7; ++i) y[i] = 1.0F - 2.0F * x[i] + 0.5F * x[i] * x[i] * x[i];
  APolynomialApprox polynomial(4);
  ASSERT_EQ(polynomial.fit(x.data(), y.data(), 0, 6), 0);
  // The data are exact; the condition of the normal equations is about 100, a rounding 6e-8.
  EXPECT_NEAR(polynomial.coef()[0], 1.0, 3e-5);
  EXPECT_NEAR(polynomial.coef()[1], -2.0, 3e-5);
  EXPECT_NEAR(polynomial.coef()[2], 0.0, 3e-5);
  EXPECT_NEAR(polynomial.coef()[3], 0.5, 3e-5);
  EXPECT_NEAR(polynomial.valueAt(0.8F), 1.0 - 1.6 + 0.256, 1e-4);
}

TEST(APolynomialApproxTest, ALineThroughScatteredPointsIsTheRegressionLine) {
  // Mean (1.5, 2.75), sum of dx dy 5.5, sum of dx^2 5: slope 1.1, value 1.1 at 0.
  const std::array<float, 4> x{0.0F, 1.0F, 2.0F, 3.0F};
  const std::array<float, 4> y{1.0F, 3.0F, 2.0F, 5.0F};
  APolynomialApprox line(2);
  ASSERT_EQ(line.fit(x.data(), y.data(), 0, 3), 0);
  EXPECT_NEAR(line.coef()[0], 1.1, 2e-6);
  EXPECT_NEAR(line.coef()[1], 1.1, 2e-6);
}

}  // namespace
}  // namespace lumo
