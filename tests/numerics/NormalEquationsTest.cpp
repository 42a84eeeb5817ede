// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "numerics/NormalEquations.h"

namespace lumo {
namespace {

/// The fit of basis rows (one per point) to y by the rule written out on plain arrays; empty if singular.
std::vector<float> writtenOut(const std::vector<std::vector<float>>& basis, const std::vector<float>& y) {
  const std::size_t n = basis.front().size();
  std::vector<std::vector<float>> a(n, std::vector<float>(n));
  std::vector<float> r(n);
  for (std::size_t i = 0; i < y.size(); ++i)
    for (std::size_t j = 0; j < n; ++j) {
      r[j] += basis[i][j] * y[i];
      for (std::size_t k = 0; k < n; ++k) a[j][k] += basis[i][j] * basis[i][k];
    }
  for (std::size_t c = 0; c + 1 < n; ++c) {
    std::size_t best = c;
    for (std::size_t row = c; row < n; ++row)
      if (std::fabs(a[row][c]) > std::fabs(a[best][c])) best = row;
    std::swap(a[c], a[best]);
    std::swap(r[c], r[best]);
    if (std::fabs(double{a[c][c]}) < 1e-15) return {};
    for (std::size_t row = c + 1; row < n; ++row) {
      if (std::fabs(double{a[row][c]}) <= 1e-15) continue;
      const float f = -a[row][c] / a[c][c];
      for (std::size_t k = 0; k < n; ++k) a[row][k] += f * a[c][k];
      r[row] += f * r[c];
    }
  }
  if (std::fabs(double{a[n - 1][n - 1]}) < 1e-15) return {};
  std::vector<float> coef(n);
  for (std::size_t i = n; i-- > 0;) {
    double s = 0.0;
    for (std::size_t k = i + 1; k < n; ++k) s += double{a[i][k]} * double{coef[k]};
    coef[i] = static_cast<float>((double{r[i]} - s) / double{a[i][i]});
  }
  return coef;
}

TEST(NormalEquationsTest, GiveTheBitsOfTheRuleWrittenOut) {
  std::mt19937 random(20);
  std::uniform_real_distribution<float> uniform(-2.0F, 2.0F);
  for (std::uint32_t terms = 2; terms <= 7; ++terms)
    for (int trial = 0; trial < 20; ++trial) {
      std::vector<std::vector<float>> basis(terms + 3, std::vector<float>(terms));
      std::vector<float> y(basis.size());
      NormalEquations equations(terms);
      for (std::size_t i = 0; i < y.size(); ++i) {
        for (float& value : basis[i]) value = uniform(random);
        y[i] = uniform(random);
        equations.add(basis[i].data(), y[i]);
      }
      std::vector<float> coef(terms);
      ASSERT_TRUE(equations.solve(coef.data()));
      EXPECT_EQ(coef, writtenOut(basis, y)) << terms << " terms, trial " << trial;
    }
}

TEST(NormalEquationsTest, TheUpperOfTwoRowsWithEqualPivotsIsKept) {
  // Basis (1, 3) and (1, -1): matrix {2, 2; 2, 10}. Both choices of the first pivot are worked out here; they
  // differ in the last bit of the first coefficient.
  const float y0 = 0.1F;
  const float y1 = 0.7F;
  const float r0 = y0 + y1;
  const float r1 = 3.0F * y0 - y1;
  const auto c1 = static_cast<float>((r1 - r0) / 8.0);
  const auto upper = static_cast<float>((r0 - 2.0 * c1) / 2.0);
  const auto lower = static_cast<float>((r1 - 10.0 * c1) / 2.0);
  ASSERT_NE(upper, lower);
  NormalEquations equations(2);
  equations.add(std::array{1.0F, 3.0F}.data(), y0);
  equations.add(std::array{1.0F, -1.0F}.data(), y1);
  std::array<float, 2> coef{};
  ASSERT_TRUE(equations.solve(coef.data()));
  EXPECT_EQ(coef[1], c1);
  EXPECT_EQ(coef[0], upper);
}

TEST(NormalEquationsTest, ALargerElementBelowBecomesThePivot) {
  // Matrix {2^-60, 2^-30; 2^-30, 2}, right-hand side (3 2^-30, 8). 2^-60 as a pivot would count as singular;
  // below the pivot 2^-30 it is skipped, which leaves 2^-30 c1 = 3 2^-30 and 2^-30 c0 + 2 c1 = 8.
  NormalEquations equations(2);
  equations.add(std::array{0x1p-30F, 1.0F}.data(), 3.0F);
  equations.add(std::array{0.0F, 1.0F}.data(), 5.0F);
  std::array<float, 2> coef{};
  ASSERT_TRUE(equations.solve(coef.data()));
  EXPECT_EQ(coef[0], 0x1p31F);
  EXPECT_EQ(coef[1], 3.0F);
}

/// The second coefficient for basis (1, e) and (0, 1) with y = (1 / e, 2): 2, or 3 if the row is not
/// eliminated.
float secondCoefficient(float e) {
  NormalEquations equations(2);
  equations.add(std::array{1.0F, e}.data(), 1.0F / e);
  equations.add(std::array{0.0F, 1.0F}.data(), 2.0F);
  std::array<float, 2> coef{};
  EXPECT_TRUE(equations.solve(coef.data()));
  return coef[1];
}

TEST(NormalEquationsTest, RowsWhoseElementIsNotAboveTheThresholdAreSkipped) {
  EXPECT_EQ(secondCoefficient(0x1p-49F), 2.0F);  // 1.8e-15
  EXPECT_EQ(secondCoefficient(0x1p-50F), 3.0F);  // 0.9e-15
}

TEST(NormalEquationsTest, OneTermIsADivisionUnlessItsSumIsBelowTheThreshold) {
  for (const bool aboveThreshold : {true, false}) {
    NormalEquations equations(1);
    const float value = aboveThreshold ? 0x1p-24F : 0x1p-25F;  // squares 3.6e-15 and 0.9e-15
    equations.add(&value, 3.0F);
    float coef = 0.0F;
    EXPECT_EQ(equations.solve(&coef), aboveThreshold);
    EXPECT_EQ(coef, aboveThreshold ? 3.0F * 0x1p24F : 0.0F);
  }
}

TEST(NormalEquationsTest, OneTermThatIsNotANumberIsSingular) {
  NormalEquations equations(1);
  const float value = std::numeric_limits<float>::quiet_NaN();
  equations.add(&value, 3.0F);
  float coef = 0.0F;
  EXPECT_FALSE(equations.solve(&coef));
}

TEST(NormalEquationsTest, BackSubstitutionIsDouble) {
  // Rows (1, a | a) and (0, 1 | 1 + 2^-20) are exact; a - a (1 + 2^-20) is -2^-21 if the product is single.
  const float a = 1025.0F / 2048.0F;
  NormalEquations equations(2);
  equations.add(std::array{1.0F, a}.data(), a);
  equations.add(std::array{0.0F, 1.0F}.data(), 1.0F + 0x1p-20F);
  std::array<float, 2> coef{};
  ASSERT_TRUE(equations.solve(coef.data()));
  EXPECT_EQ(coef[1], 1.0F + 0x1p-20F);
  EXPECT_EQ(coef[0], -a * 0x1p-20F);
}

}  // namespace
}  // namespace lumo
