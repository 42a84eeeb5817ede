// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "numerics/ConditionNumber.h"

namespace lumo {
namespace {

TEST(ConditionNumberTest, ADiagonalMatrixHasTheRatioOfItsElements) {
  EXPECT_DOUBLE_EQ(conditionNumber({3, 0, 0, 0, -0.5, 0, 0, 0, 1}, 3), 6);
  EXPECT_EQ(conditionNumber({7}, 1), 1);
}

TEST(ConditionNumberTest, TwoByTwoFollowsTheClosedForm) {
  // Eigenvalues of (a b; b d): mean +- hypot((a - d) / 2, b).
  const double a = 2, b = 0.75, d = -1;
  const double mean = (a + d) / 2, spread = std::hypot((a - d) / 2, b);
  EXPECT_NEAR(conditionNumber({a, b, b, d}, 2), (mean + spread) / std::abs(mean - spread), 1e-13);
}

TEST(ConditionNumberTest, HilbertMatrixHasItsPublishedCondition) {
  // Golub & Van Loan tabulate kappa_2 of the 4 x 4 Hilbert matrix as 1.5514e4.
  std::vector<double> hilbert;
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) hilbert.push_back(1.0 / (i + j - 1));
  EXPECT_NEAR(conditionNumber(hilbert, 4), 1.5514e4, 0.5);
}

TEST(ConditionNumberTest, ASingularMatrixIsInfinite) {
  EXPECT_TRUE(std::isinf(conditionNumber({1, 2, 2, 4}, 2)));
  EXPECT_TRUE(std::isinf(conditionNumber({0, 0, 0, 0}, 2)));
}

TEST(ConditionNumberTest, WhatIsNotFiniteHasNone) {
  EXPECT_TRUE(std::isnan(conditionNumber({1, 0, 0, std::numeric_limits<double>::quiet_NaN()}, 2)));
  EXPECT_TRUE(std::isnan(conditionNumber({1, 0, 0, std::numeric_limits<double>::infinity()}, 2)));
}

}  // namespace
}  // namespace lumo
