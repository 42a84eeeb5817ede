// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "numerics/AChebyshevApprox.h"

namespace lumo {
namespace {

TEST(AChebyshevApproxTest, PointsOnAChebyshevPolynomialGiveItAlone) {
  // T_3 over [10, 18], which t = (x - 14) / 4 maps onto [-1, 1]; the order of the points does not matter.
  const std::array<float, 9> x{18.0F, 10.0F, 11.0F, 12.0F, 13.0F, 14.0F, 15.0F, 16.0F, 17.0F};
  std::array<float, 9> y{};
  for (std::size_t i = 0; i < 9; ++i) {
    const float t = (x[i] - 14.0F) / 4.0F;
    y[i] = 4.0F * t * t * t - 3.0F * t;
  }
  AChebyshevApprox series(5);
  ASSERT_EQ(series.fit(x.data(), y.data(), 0, 8), 0);
  EXPECT_EQ(series.scale(), 0.25F);
  EXPECT_EQ(series.offset(), -3.5F);
  // The data are exact; the equations are nearly diagonal, so only a few roundings of 6e-8 count.
  for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(series.coef()[k], k == 3 ? 1.0 : 0.0, 2e-6) << k;
  EXPECT_NEAR(series.valueAt(12.0F), 1.0, 1e-5);
}

TEST(AChebyshevApproxTest, EqualAbscissaeGiveTheirMeanWithOneTermAndAreSingularWithMore) {
  const std::array<float, 3> x{5.0F, 5.0F, 5.0F};
  const std::array<float, 3> y{1.0F, 2.0F, 6.0F};
  AChebyshevApprox constant(1);
  ASSERT_EQ(constant.fit(x.data(), y.data(), 0, 2), 0);
  EXPECT_EQ(constant.valueAt(5.0F), 3.0);
  EXPECT_EQ(AChebyshevApprox(2).fit(x.data(), y.data(), 0, 2), 4);
  EXPECT_EQ(AChebyshevApprox(3).fit(x.data(), y.data(), 0, 2), 4);
}

}  // namespace
}  // namespace lumo
