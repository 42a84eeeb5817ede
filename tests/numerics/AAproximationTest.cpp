// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "numerics/AAproximation.h"

namespace lumo {
namespace {

/// A series whose functions are rows of a table, chosen by t = 0, 1, 2, ...; it writes down how it is called.
class TableSeries : public AAproximation {
 public:
  explicit TableSeries(std::vector<std::vector<float>> table)
      : AAproximation(static_cast<int>(table.front().size())), table_(std::move(table)) {}

  std::string calls;
  std::vector<float> scaled;      ///< the coefficients endFit() leaves, if not empty
  bool halfUnits = false;         ///< whether x is twice the row plus 1
  bool sameCoefficients = false;  ///< whether endFit() got one array as both arguments

 protected:
  void basisAt(float* out, int n, float t) const override {
    const auto& row = table_.at(static_cast<std::size_t>(t));
    for (int k = 0; k < n; ++k) out[k] = row[static_cast<std::size_t>(k)];
  }
  void scaleArgument(const float* x, const float* y, int first, int last) override {
    calls += "scale " + std::to_string(first) + ".." + std::to_string(last) + ";";
    if (halfUnits)
      setScaling(0.5F, -0.5F);
    else
      AAproximation::scaleArgument(x, y, first, last);
  }
  void beginFit(int pointCount) override { calls += "begin " + std::to_string(pointCount) + ";"; }
  void endFit(const float* coefIn, float* coefOut) override {
    calls += "end;";
    sameCoefficients = coefIn == coefOut;
    for (std::size_t k = 0; k < scaled.size(); ++k) coefOut[k] = scaled[k];
  }

 private:
  std::vector<std::vector<float>> table_;
};

/// 1, t, t^2.
TableSeries parabola() {
  return TableSeries({{1, 0, 0}, {1, 1, 1}, {1, 2, 4}, {1, 3, 9}});
}

constexpr std::array<float, 4> kX{0.0F, 1.0F, 2.0F, 3.0F};

TEST(AAproximationTest, ThreeTermsThroughExactlyThreePointsInterpolate) {
  TableSeries series = parabola();
  const std::array<float, 3> y{2.0F, -1.0F, 5.0F};
  EXPECT_EQ(series.fit(kX.data(), y.data(), 0, 2), 0);
  EXPECT_TRUE(series.status().ok());
  // 2 - 7.5 t + 4.5 t^2. The condition of the normal equations, about 150, times a few roundings of 6e-8.
  EXPECT_NEAR(series.coef()[0], 2.0, 1e-4);
  EXPECT_NEAR(series.coef()[1], -7.5, 1e-4);
  EXPECT_NEAR(series.coef()[2], 4.5, 1e-4);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(series.valueAt(kX[i]), y[i], 2e-4);
}

TEST(AAproximationTest, ThreeTermsThroughTwoPointsReturn3) {
  TableSeries series = parabola();
  const std::array<float, 3> y{2.0F, -1.0F, 5.0F};
  ASSERT_EQ(series.fit(kX.data(), y.data(), 0, 2), 0);
  series.calls.clear();
  EXPECT_EQ(series.fit(kX.data(), y.data(), 0, 1), 3);
  for (const float coefficient : series.coef()) EXPECT_EQ(coefficient, 0.0F);
  EXPECT_EQ(series.calls, "");
  EXPECT_EQ(series.status().message(), "a series of 3 terms needs as many points, found 2 points");
}

TEST(AAproximationTest, FewerThanTwoPointsReturn1WhateverTheTerms) {
  TableSeries series = parabola();
  const std::array<float, 3> y{2.0F, -1.0F, 5.0F};
  ASSERT_EQ(series.fit(kX.data(), y.data(), 0, 2), 0);
  EXPECT_EQ(series.fit(kX.data(), y.data(), 1, 1), 1);
  for (const float coefficient : series.coef()) EXPECT_EQ(coefficient, 0.0F);
  EXPECT_EQ(series.fit(kX.data(), y.data(), 2, -7), 1);
  EXPECT_EQ(series.status().message(), "a fit needs at least 2 points, found 0 points");
  EXPECT_EQ(AAproximation(0).fit(kX.data(), y.data(), 0, 0), 1);
}

TEST(AAproximationTest, WithoutATermTheFitReturns2AndTheValueIsZero) {
  for (const int termCount : {0, -3}) {
    AAproximation series(termCount);
    EXPECT_EQ(series.fit(kX.data(), kX.data(), 0, 3), 2);
    EXPECT_FALSE(series.status().ok());
    EXPECT_EQ(series.valueAt(1.0F), 0.0);
  }
}

TEST(AAproximationTest, ADuplicatedBasisFunctionReturns4) {
  TableSeries pair({{1, 1}, {1, 1}, {1, 1}, {1, 1}});
  EXPECT_EQ(pair.fit(kX.data(), kX.data(), 0, 3), 4);
  EXPECT_EQ(pair.status().message(),
            "4 points do not determine a series of 2 terms: its equations are singular");
  TableSeries twice({{1, 0.1F, 0.1F}, {1, 0.3F, 0.3F}, {1, 0.7F, 0.7F}, {1, -0.9F, -0.9F}});
  EXPECT_EQ(twice.fit(kX.data(), kX.data(), 0, 3), 4);
}

TEST(AAproximationTest, ASeriesWithoutFunctionsIsSingular) {
  AAproximation one(1);
  EXPECT_EQ(one.fit(kX.data(), kX.data(), 0, 3), 4);
  AAproximation two(2);
  EXPECT_EQ(two.fit(kX.data(), kX.data(), 0, 3), 4);
}

TEST(AAproximationTest, HooksAreCalledInOrderAroundAFit) {
  TableSeries series = parabola();
  const std::array<float, 4> y{1.0F, 2.0F, 1.0F, 0.0F};
  ASSERT_EQ(series.fit(kX.data(), y.data(), 0, 3), 0);
  EXPECT_EQ(series.calls, "scale 0..3;begin 4;end;");
  EXPECT_TRUE(series.sameCoefficients);
}

TEST(AAproximationTest, TheLastHookIsNotCalledAfterASingularSolve) {
  TableSeries pair({{1, 1}, {1, 1}});
  EXPECT_EQ(pair.fit(kX.data(), kX.data(), 0, 1), 4);
  EXPECT_EQ(pair.calls, "scale 0..1;begin 2;");
}

TEST(AAproximationTest, CoefficientsCanBeTransformedAfterTheSolve) {
  TableSeries series = parabola();
  series.scaled = {1.0F, 10.0F, 100.0F};
  ASSERT_EQ(series.fit(kX.data(), kX.data(), 0, 3), 0);
  EXPECT_EQ(series.valueAt(2.0F), 421.0);
}

TEST(AAproximationTest, FunctionsSeeTheScaledAndShiftedAbscissa) {
  TableSeries series = parabola();
  series.halfUnits = true;
  const std::array<float, 3> x{1.0F, 3.0F, 5.0F};
  const std::array<float, 3> y{4.0F, 4.0F, 4.0F};
  ASSERT_EQ(series.fit(x.data(), y.data(), 0, 2), 0);
  EXPECT_NEAR(series.valueAt(7.0F), 4.0, 1e-3);  // row 3, beyond the points
  EXPECT_EQ(series.scale(), 0.5F);
  EXPECT_EQ(series.offset(), -0.5F);
}

TEST(AAproximationTest, TheArgumentIsTheAbscissaUnlessASeriesScalesIt) {
  TableSeries series = parabola();
  series.halfUnits = true;
  const std::array<float, 3> x{1.0F, 3.0F, 5.0F};
  ASSERT_EQ(series.fit(x.data(), x.data(), 0, 2), 0);
  series.halfUnits = false;
  ASSERT_EQ(series.fit(kX.data(), kX.data(), 0, 2), 0);
  EXPECT_EQ(series.scale(), 1.0F);
  EXPECT_EQ(series.offset(), 0.0F);
}

TEST(AAproximationTest, SumsOfAFitAreSinglePrecision) {
  // 2^24 swallows each 1 in single precision; in double the mean would be 4194304.75.
  TableSeries constant({{1}, {1}, {1}, {1}});
  const std::array<float, 4> y{16777216.0F, 1.0F, 1.0F, 1.0F};
  ASSERT_EQ(constant.fit(kX.data(), y.data(), 0, 3), 0);
  EXPECT_EQ(constant.coef()[0], 4194304.0F);
}

TEST(AAproximationTest, TheSumOfAValueIsSinglePrecisionFromTheFirstTermOn) {
  TableSeries series({{1, 1, 1}, {1, 2, 1}, {1, 1, 3}});
  series.scaled = {16777216.0F, 1.0F, 1.0F};
  ASSERT_EQ(series.fit(kX.data(), kX.data(), 0, 2), 0);
  EXPECT_EQ(series.valueAt(0.0F), 16777216.0);
  series.scaled = {1.0F, 1.0F, 16777216.0F};
  ASSERT_EQ(series.fit(kX.data(), kX.data(), 0, 2), 0);
  EXPECT_EQ(series.valueAt(0.0F), 16777218.0);
}

TEST(AAproximationTest, UsesThePointsFromFirstToLastOnly) {
  TableSeries constant({{1}, {1}, {1}, {1}});
  const std::array<float, 4> y{1000.0F, 1.0F, 4.0F, 1000.0F};
  ASSERT_EQ(constant.fit(kX.data(), y.data(), 1, 2), 0);
  EXPECT_EQ(constant.coef()[0], 2.5F);
}

}  // namespace
}  // namespace lumo
