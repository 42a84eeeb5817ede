// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>

#include "numerics/ACubicSlineFree.h"

namespace lumo {
namespace {

constexpr std::array<double, 6> kX{1.0, 1.4, 2.3, 5.0, 8.4, 15.0};
constexpr std::array<double, 6> kY{0.3, 1.7, 1.1, -0.6, 2.9, 2.2};

TEST(ACubicSlineFreeTest, TwoPointsGiveTheStraightLineThroughThem) {
  const std::array<double, 2> x{2.0, 6.0};
  const std::array<double, 2> y{1.0, -1.0};
  const ACubicSlineFree spline(x.data(), y.data(), 2);
  EXPECT_EQ(spline.c()[0], 0.0);
  EXPECT_EQ(spline.c()[1], 0.0);
  EXPECT_EQ(spline.d()[0], 0.0);
  EXPECT_EQ(spline.valueAt(2.0), 1.0);
  EXPECT_EQ(spline.valueAt(3.0), 0.5);
  EXPECT_EQ(spline.valueAt(6.0), -1.0);
}

TEST(ACubicSlineFreeTest, ThreePointsOnAParabolaAreNotReproducedExactly) {
  // By hand for x^2 at 0, 1, 2: c = 0, 6 / 4, 0; b = 1/2, 2; d = 1/2, -1/2.
  const std::array<double, 3> x{0.0, 1.0, 2.0};
  const std::array<double, 3> y{0.0, 1.0, 4.0};
  const ACubicSlineFree spline(x.data(), y.data(), 3);
  EXPECT_EQ(spline.c()[0], 0.0);
  EXPECT_EQ(spline.c()[1], 1.5);
  EXPECT_EQ(spline.c()[2], 0.0);
  EXPECT_EQ(spline.b()[0], 0.5);
  EXPECT_EQ(spline.b()[1], 2.0);
  EXPECT_EQ(spline.d()[0], 0.5);
  EXPECT_EQ(spline.d()[1], -0.5);
  EXPECT_EQ(spline.valueAt(0.5), 0.3125);
  EXPECT_EQ(spline.valueAt(1.5), 2.3125);
}

TEST(ACubicSlineFreeTest, AnInteriorKnotIsEvaluatedOnTheSegmentBeforeIt) {
  const ACubicSlineFree spline(kX.data(), kY.data(), 6);
  int roundedKnots = 0;
  for (std::size_t i = 1; i + 1 < 6; ++i) {
    const double u = kX[i] - kX[i - 1];
    const double left = ((spline.d()[i - 1] * u + spline.c()[i - 1]) * u + spline.b()[i - 1]) * u + kY[i - 1];
    EXPECT_EQ(spline.valueAt(kX[i]), left);
    EXPECT_NEAR(left, kY[i], 1e-14);
    // Only where the left cubic misses the knot by a rounding does this tell the two segments apart.
    if (left != kY[i]) ++roundedKnots;
  }
  EXPECT_GT(roundedKnots, 0);
}

TEST(ACubicSlineFreeTest, TheFirstKnotGivesItsOrdinateExactly) {
  EXPECT_EQ(ACubicSlineFree(kX.data(), kY.data(), 6).valueAt(kX[0]), kY[0]);
}

TEST(ACubicSlineFreeTest, IsTheNaturalSplineThroughUnevenKnots) {
  // Value, slope and curvature continuous at every knot and no curvature at the ends: there is only one such
  // spline.
  const ACubicSlineFree spline(kX.data(), kY.data(), 6);
  const auto b = spline.b();
  const auto c = spline.c();
  const auto d = spline.d();
  EXPECT_EQ(c[0], 0.0);
  EXPECT_EQ(c[5], 0.0);
  for (std::size_t j = 0; j + 1 < 6; ++j) {
    const double u = kX[j + 1] - kX[j];
    EXPECT_NEAR(kY[j] + u * (b[j] + u * (c[j] + u * d[j])), kY[j + 1], 1e-13);
    EXPECT_NEAR(2.0 * c[j] + 6.0 * d[j] * u, 2.0 * c[j + 1], 1e-13);
    if (j + 2 < 6) {
      EXPECT_NEAR(b[j] + u * (2.0 * c[j] + 3.0 * d[j] * u), b[j + 1], 1e-13);
    }
  }
}

TEST(ACubicSlineFreeTest, OutsideThePointsTheEndCubicsAreContinued) {
  const std::array<double, 3> x{0.0, 1.0, 2.0};
  const std::array<double, 3> y{0.0, 1.0, 4.0};
  const ACubicSlineFree spline(x.data(), y.data(), 3);
  EXPECT_EQ(spline.valueAt(-1.0), -1.0);  // u/2 + u^3/2 at u = -1
  EXPECT_EQ(spline.valueAt(2.0), 4.0);
  EXPECT_EQ(spline.valueAt(3.0), 1.0 + 4.0 + 6.0 - 4.0);  // 1 + 2u + 3u^2/2 - u^3/2 at u = 2
}

TEST(ACubicSlineFreeTest, OnePointGivesAConstant) {
  const double x = 3.0;
  const double y = 7.5;
  const ACubicSlineFree spline(&x, &y, 1);
  for (const double t : {-1e9, 3.0, 1e9}) EXPECT_EQ(spline.valueAt(t), 7.5);
}

TEST(ACubicSlineFreeTest, WithoutPointsNoValueIsANumber) {
  EXPECT_TRUE(std::isnan(ACubicSlineFree(nullptr, nullptr, 0).valueAt(1.0)));
  EXPECT_TRUE(std::isnan(ACubicSlineFree(nullptr, nullptr, -2).valueAt(1.0)));
}

TEST(ACubicSlineFreeTest, NewPointsGiveTheSplineThroughThem) {
  const std::array<double, 3> x{0.0, 1.0, 2.0};
  const std::array<double, 3> y{0.0, 1.0, 4.0};
  ACubicSlineFree spline(kX.data(), kY.data(), 6);
  spline.setPoints(x.data(), y.data(), 3);
  EXPECT_EQ(spline.c().size(), 3U);
  EXPECT_EQ(spline.valueAt(0.5), 0.3125);
  spline.setPoints(kX.data(), kY.data(), 6);
  const ACubicSlineFree fresh(kX.data(), kY.data(), 6);
  for (double t = 0.5; t < 16.0; t += 0.37) EXPECT_EQ(spline.valueAt(t), fresh.valueAt(t));
}

TEST(ACubicSlineFreeTest, ArraysAreKeptWhileTheNumberOfPointsStays) {
  ACubicSlineFree spline(kX.data(), kY.data(), 6);
  const std::array<const double*, 3> before{spline.b().data(), spline.c().data(), spline.d().data()};
  spline.setPoints(kX.data(), kX.data(), 6);
  EXPECT_EQ(before, (std::array<const double*, 3>{spline.b().data(), spline.c().data(), spline.d().data()}));
  EXPECT_NEAR(spline.valueAt(7.7), 7.7, 1e-14);
}

}  // namespace
}  // namespace lumo
