// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "ComponentProbe.h"

namespace lumo {
namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// 101 columns × 81 rows of 0.2 × 0.3 arcseconds about the origin.
struct Field {
  AMatrix<float> map{81, 101};
  TMinMax range{-10, 10, -12, 12, 0, 1};

  void addGaussian(double height, double x0, double y0, const GaussianShape& shape) {
    for (std::uint32_t row = 0; row < 81; ++row) {
      for (std::uint32_t column = 0; column < 101; ++column) {
        const double x = -10 + 0.2 * column - x0, y = -12 + 0.3 * row - y0;
        const double along = x * std::sin(shape.pa * kDegree) + y * std::cos(shape.pa * kDegree);
        const double across = x * std::cos(shape.pa * kDegree) - y * std::sin(shape.pa * kDegree);
        map(row, column) +=
            static_cast<float>(height * std::exp(-4 * std::log(2.0) *
                                                 (along * along / shape.major / shape.major +
                                                  across * across / shape.minor / shape.minor)));
      }
    }
  }
};

TEST(ComponentProbeTest, AGaussianPeakBetweenPixelsComesOutExactly) {
  Field field;
  field.addGaussian(2.5, 3.07, -4.11, {1.5, 0.9, 30});
  const auto peak = fitPeak(MapPlane(field.map, field.range), 3, -4, 0.8);
  ASSERT_TRUE(peak.has_value());
  // Pixels in single precision: 1e-7 of the value, over second differences of order one.
  EXPECT_NEAR(peak->value, 2.5, 1e-5);
  EXPECT_NEAR(peak->x, 3.07, 1e-5);
  EXPECT_NEAR(peak->y, -4.11, 1e-5);
}

TEST(ComponentProbeTest, AParabolaWithNegativePixelsComesOutExactly) {
  Field field;
  for (std::uint32_t row = 0; row < 81; ++row)
    for (std::uint32_t column = 0; column < 101; ++column) {
      const double x = -10 + 0.2 * column - 0.05, y = -12 + 0.3 * row - 0.1;
      field.map(row, column) = static_cast<float>(0.02 - 0.5 * x * x - 0.4 * y * y + 0.1 * x * y);
    }
  const auto peak = fitPeak(MapPlane(field.map, field.range), 0, 0, 1);
  ASSERT_TRUE(peak.has_value());
  EXPECT_NEAR(peak->value, 0.02, 1e-5);
  EXPECT_NEAR(peak->x, 0.05, 1e-5);
  EXPECT_NEAR(peak->y, 0.1, 1e-5);
}

TEST(ComponentProbeTest, ABrighterSourceBeyondTheRadiusIsLeftAlone) {
  Field field;
  field.addGaussian(1, 0, 0, {1, 1, 0});
  field.addGaussian(9, 5, 0, {1, 1, 0});
  const auto peak = fitPeak(MapPlane(field.map, field.range), 0.1, 0.1, 1);
  ASSERT_TRUE(peak.has_value());
  EXPECT_NEAR(peak->value, 1, 1e-4);
}

TEST(ComponentProbeTest, APeakBesideANanIsThePixelItself) {
  Field field;
  field.addGaussian(1, 0.05, 0, {1.5, 1.5, 0});
  field.map(41, 50) = kNan;
  const auto peak = fitPeak(MapPlane(field.map, field.range), 0, 0, 1);
  ASSERT_TRUE(peak.has_value());
  EXPECT_EQ(peak->value, field.map(40, 50));
  EXPECT_NEAR(peak->x, 0, 1e-12);
}

TEST(ComponentProbeTest, APeakOnTheEdgeIsThePixelItself) {
  Field field;
  field.addGaussian(1, 10, 0, {1.5, 1.5, 0});
  const auto peak = fitPeak(MapPlane(field.map, field.range), 10, 0, 1);
  ASSERT_TRUE(peak.has_value());
  EXPECT_EQ(peak->value, 1);
}

TEST(ComponentProbeTest, NothingIsFoundOutsideOfTheMap) {
  Field field;
  const MapPlane plane(field.map, field.range);
  EXPECT_FALSE(fitPeak(plane, 50, 0, 1).has_value());
  EXPECT_FALSE(sumFlux(plane, 50, 0, {1, 1, 0}, {1, 1, 0}).has_value());
  EXPECT_TRUE(std::isnan(plane.nearest(50, 0)));
  EXPECT_TRUE(std::isnan(plane.nearest(std::nan(""), 0)));
}

TEST(ComponentProbeTest, NearestPicksThePixelAtTheEastAndNorth) {
  Field field;
  field.map(60, 70) = 7;
  const MapPlane plane(field.map, field.range);
  EXPECT_EQ(plane.nearest(4.09, 6.14), 7);
  EXPECT_EQ(plane.nearest(4.11, 6), 0);
}

TEST(ComponentProbeTest, RoundShapesConvolveInQuadrature) {
  const GaussianShape result = GaussianShape{3, 3, 0}.convolved({4, 4, 70});
  EXPECT_NEAR(result.major, 5, 1e-12);
  EXPECT_NEAR(result.minor, 5, 1e-12);
}

TEST(ComponentProbeTest, ConvolvingKeepsAPositionAngle) {
  const GaussianShape result = GaussianShape{4, 0, 30}.convolved({3, 3, 0});
  EXPECT_NEAR(result.major, 5, 1e-12);
  EXPECT_NEAR(result.minor, 3, 1e-12);
  EXPECT_NEAR(result.pa, 30, 1e-9);
}

TEST(ComponentProbeTest, CrossedShapesConvolveToACircle) {
  const GaussianShape result = GaussianShape{2, 1, 20}.convolved({2, 1, 110});
  EXPECT_NEAR(result.major, std::sqrt(5), 1e-7);
  EXPECT_NEAR(result.minor, std::sqrt(5), 1e-7);
}

TEST(ComponentProbeTest, TheSumOverAnEllipseIsTheFluxDensity) {
  Field field;
  const GaussianShape beam{1.4, 1.0, -10}, own{2.0, 1.5, 40};
  const GaussianShape shape = own.convolved(beam);
  // A source of 3 Jy smeared by a beam of height 1: its peak is 3 · beam area / convolved area.
  field.addGaussian(3 * beam.area() / shape.area(), -2.03, 1.4, shape);
  const auto flux = sumFlux(MapPlane(field.map, field.range), -2.03, 1.4, shape, beam);
  ASSERT_TRUE(flux.has_value());
  // The ellipse's rim cuts pixels where the source is at 2^-6.25 of its height: below 1 % of the flux.
  EXPECT_NEAR(*flux, 3, 0.03);
}

TEST(ComponentProbeTest, AMapOfOnePixelHasNoScale) {
  AMatrix<float> map(1, 1);
  const TMinMax range{0, 0, 0, 0, 0, 1};
  EXPECT_FALSE(MapPlane(map, range).usable());
}

}  // namespace
}  // namespace lumo
