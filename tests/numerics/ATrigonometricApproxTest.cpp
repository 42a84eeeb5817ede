// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "numerics/ATrigonometricApprox.h"

namespace lumo {
namespace {

TEST(ATrigonometricApproxTest, FindsTheCoefficientsOfAFourierSeriesOfItsPeriod) {
  std::array<float, 16> x{};
  std::array<float, 16> y{};
  for (std::size_t i = 0; i < 16; ++i) {
    x[i] = 5.0F * static_cast<float>(i) / 16.0F;
    const double t = 2.0 * std::numbers::pi * x[i] / 5.0;
    y[i] = static_cast<float>(2.0 - 3.0 * std::sin(t) + 0.5 * std::cos(2.0 * t));
  }
  ATrigonometricApprox series(5, 5.0F);
  ASSERT_EQ(series.fit(x.data(), y.data(), 0, 15), 0);
  // The equations are diagonal to rounding; angles up to 2 pi are off by a few 1e-7, times up to 3.
  const std::array<double, 5> expected{2.0, -3.0, 0.0, 0.0, 0.5};
  for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(series.coef()[k], expected[k], 5e-6) << k;
  EXPECT_NEAR(series.valueAt(1.25F), 2.0 - 3.0 - 0.5, 1e-5);
  EXPECT_NEAR(series.valueAt(6.25F), 2.0 - 3.0 - 0.5, 1e-5);
}

}  // namespace
}  // namespace lumo
