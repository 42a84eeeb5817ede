// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "convert/EarthGeometry.h"

namespace lumo {
namespace {

constexpr double kDegree = std::numbers::pi / 180;
// Metres, for vectors of up to 1e7 m in double precision.
constexpr double kRounding = 1e-8;

TEST(EarthGeometryTest, AnEastwardBaselineAtTransitIsAllU) {
  // At the zero meridian east is the y axis.
  const Uvw uvw = SourceDirection(0, 0.6).uvw({0, 1000, 0});
  EXPECT_NEAR(uvw.u, 1000, kRounding);
  EXPECT_NEAR(uvw.v, 0, kRounding);
  EXPECT_NEAR(uvw.w, 0, kRounding);
}

TEST(EarthGeometryTest, APolarBaselineIsForeshortenedByTheDeclination) {
  for (const double hour : {0.0, 1.0, -2.5}) {
    const Uvw uvw = SourceDirection(hour, 30 * kDegree).uvw({0, 0, 1000});
    EXPECT_NEAR(uvw.u, 0, kRounding);
    EXPECT_NEAR(uvw.v, 1000 * std::cos(30 * kDegree), kRounding);
    EXPECT_NEAR(uvw.w, 500, kRounding);
  }
}

TEST(EarthGeometryTest, AnEastwardBaselineSeesTheRisingSourceAhead) {
  // Six hours before transit the source stands in the east, along the baseline.
  const Uvw uvw = SourceDirection(-90 * kDegree, 0).uvw({0, 1000, 0});
  EXPECT_NEAR(uvw.w, 1000, kRounding);
  EXPECT_NEAR(uvw.u, 0, kRounding);
}

TEST(EarthGeometryTest, TheLengthOfABaselineIsKept) {
  const EarthVector baseline{1.2e6, -3.4e6, 5.6e6};
  const Uvw uvw = SourceDirection(1.1, -0.4).uvw(baseline);
  EXPECT_NEAR(std::hypot(uvw.u, uvw.v, uvw.w), std::hypot(baseline.x, baseline.y, baseline.z), kRounding);
}

TEST(EarthGeometryTest, AUvTrackIsAnEllipseOfTheRightAxes) {
  const EarthVector b{2e6, -1e6, 3e6};
  const double declination = 35 * kDegree;
  const double semiU = std::hypot(b.x, b.y);
  const double semiV = semiU * std::sin(declination);
  const double centreV = b.z * std::cos(declination);
  double uMax = 0, vMax = -1e30, vMin = 1e30;
  for (int i = 0; i < 3600; ++i) {
    const Uvw uvw = SourceDirection(i * 0.1 * kDegree, declination).uvw(b);
    const double x = uvw.u / semiU, y = (uvw.v - centreV) / semiV;
    EXPECT_NEAR(x * x + y * y, 1, 1e-12);
    uMax = std::max(uMax, uvw.u);
    vMax = std::max(vMax, uvw.v);
    vMin = std::min(vMin, uvw.v);
  }
  // The extremes lie at most 0.05 degrees from a sampled point: 1 - cos = 4e-7.
  EXPECT_NEAR(uMax, semiU, 1e-6 * semiU);
  EXPECT_NEAR(vMax, centreV + semiV, 1e-6 * semiU);
  EXPECT_NEAR(vMin, centreV - semiV, 1e-6 * semiU);
}

TEST(EarthGeometryTest, TheElevationAtTransitIs90LessTheDistanceFromTheLatitude) {
  const EarthVector place = fromGeodetic(40 * kDegree, -100 * kDegree, 1500);
  // The zenith is off by the height's share, below 1e-6 radians here.
  EXPECT_NEAR(std::asin(SourceDirection(100 * kDegree, 25 * kDegree).sinElevation(place)), 75 * kDegree,
              2e-6);
  EXPECT_NEAR(std::asin(SourceDirection(100 * kDegree, -60 * kDegree).sinElevation(place)), -10 * kDegree,
              2e-6);
}

TEST(EarthGeometryTest, APoleStarStandsAsHighAsTheLatitude) {
  const EarthVector place = fromGeodetic(40 * kDegree, 20 * kDegree, 0);
  for (const double hour : {0.0, 2.0, 4.0})
    EXPECT_NEAR(SourceDirection(hour, 90 * kDegree).sinElevation(place), std::sin(40 * kDegree), 1e-12);
}

TEST(EarthGeometryTest, GeodeticPositionsFollowTheEllipsoid) {
  EXPECT_NEAR(fromGeodetic(0, 90 * kDegree, 10).y, 6378147, 1e-6);
  EXPECT_NEAR(fromGeodetic(90 * kDegree, 0, 0).z, 6356752.3142, 1e-3);  // the polar radius of WGS 84
}

}  // namespace
}  // namespace lumo
