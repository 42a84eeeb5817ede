// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "core/SkyProjection.h"
#include "core/Units.h"

namespace lumo {
namespace {

constexpr double kHalf =
    103132.40312354818;             // arcseconds whose direction cosine is 1/2, the sine of 30 degrees
constexpr double kRounding = 1e-9;  // degrees; a few roundings of angles of 360

TEST(SkyProjectionTest, EastOnTheEquatorIsLargerRightAscension) {
  const auto sky = skyAtOffset({180.0, 0.0}, kHalf, 0.0);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 210.0, kRounding);
  EXPECT_NEAR(sky->decDeg, 0.0, kRounding);
}

TEST(SkyProjectionTest, NorthIsLargerDeclination) {
  const auto sky = skyAtOffset({180.0, 10.0}, 0.0, kHalf);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 180.0, kRounding);
  EXPECT_NEAR(sky->decDeg, 40.0, kRounding);
}

TEST(SkyProjectionTest, AtSixtyDegreesAnArcsecondEastIsTwoOfRightAscension) {
  const auto sky = skyAtOffset({15.0, 60.0}, 1.0, 0.0);
  ASSERT_TRUE(sky);
  // The curvature of the parallel is of the order of 1e-11 of the offset.
  EXPECT_NEAR((sky->raDeg - 15.0) * 3600.0, 2.0, 1e-8);
}

TEST(SkyProjectionTest, BeyondThePoleRightAscensionTurnsByTwelveHours) {
  const auto sky = skyAtOffset({30.0, 75.0}, 0.0, kHalf);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->decDeg, 75.0, kRounding);
  EXPECT_NEAR(sky->raDeg, 210.0, kRounding);
}

TEST(SkyProjectionTest, WestOfZeroHoursIsBelow360Degrees) {
  const auto sky = skyAtOffset({0.0, 0.0}, -kHalf, 0.0);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 330.0, kRounding);
}

TEST(SkyProjectionTest, BeyondTheHorizonThereIsNothing) {
  EXPECT_FALSE(skyAtOffset({0.0, 0.0}, 1.5 * kHalf, 1.5 * kHalf));
  EXPECT_FALSE(skyAtOffset({0.0, 0.0}, std::numeric_limits<double>::quiet_NaN(), 0.0));
}

TEST(SkyProjectionTest, OffsetsOfSmallDistancesKeepTheirDigits) {
  // A microarcsecond north, and as much east on the equator.
  const double step = 1e-6 / 3600.0;
  const auto north = offsetOfSky({10.0, 0.0}, {10.0, step});
  const auto east = offsetOfSky({0.0, 0.0}, {step, 0.0});
  ASSERT_TRUE(north && east);
  EXPECT_NEAR(north->yArcsec, 1e-6, 1e-20);
  EXPECT_EQ(north->xArcsec, 0.0);
  EXPECT_NEAR(east->xArcsec, 1e-6, 1e-20);
  EXPECT_NEAR(east->yArcsec, 0.0, 1e-20);
}

TEST(SkyProjectionTest, OffsetsAreTheDirectionCosinesOfTheDirection) {
  // Unit vectors: l along the east of the centre, m along its north.
  const SkyPosition centre{200.0, -35.0};
  const SkyPosition direction{231.0, 12.0};
  const auto unit = [](const SkyPosition& sky) {
    const double a = sky.raDeg * kRadianPerDegree;
    const double d = sky.decDeg * kRadianPerDegree;
    return std::array{std::cos(d) * std::cos(a), std::cos(d) * std::sin(a), std::sin(d)};
  };
  const double a0 = centre.raDeg * kRadianPerDegree;
  const double d0 = centre.decDeg * kRadianPerDegree;
  const std::array east{-std::sin(a0), std::cos(a0), 0.0};
  const std::array north{-std::sin(d0) * std::cos(a0), -std::sin(d0) * std::sin(a0), std::cos(d0)};
  const auto s = unit(direction);
  const auto offset = offsetOfSky(centre, direction);
  ASSERT_TRUE(offset);
  // A few roundings of numbers of the order of one.
  EXPECT_NEAR(offset->xArcsec * kRadianPerArcsec, s[0] * east[0] + s[1] * east[1] + s[2] * east[2], 1e-15);
  EXPECT_NEAR(offset->yArcsec * kRadianPerArcsec, s[0] * north[0] + s[1] * north[1] + s[2] * north[2], 1e-15);
}

TEST(SkyProjectionTest, BothDirectionsAreEachOthersInverse) {
  for (const double dec : {-89.5, -40.0, 0.0, 38.0, 89.9}) {
    for (const double ra : {0.0001, 187.7, 359.9999}) {
      for (const double x : {-100000.0, -0.25, 3.0, 150000.0}) {
        const auto sky = skyAtOffset({ra, dec}, x, 0.7 * x);
        ASSERT_TRUE(sky);
        const auto offset = offsetOfSky({ra, dec}, *sky);
        ASSERT_TRUE(offset);
        // A right ascension of 360 degrees keeps 6e-14 of them, 2e-10 arcseconds.
        EXPECT_NEAR(offset->xArcsec, x, 1e-9);
        EXPECT_NEAR(offset->yArcsec, 0.7 * x, 1e-9);
      }
    }
  }
}

TEST(SkyProjectionTest, TheShortWayAcrossZeroHoursCounts) {
  const auto west = offsetOfSky({0.001, 0.0}, {359.999, 0.0});
  ASSERT_TRUE(west);
  EXPECT_NEAR(west->xArcsec, -7.2, 1e-8);  // 0.002 degrees; the curvature is of the order of 1e-9
}

TEST(SkyProjectionTest, TheFarSideOfTheSkyHasNoOffset) {
  EXPECT_FALSE(offsetOfSky({64.5, 38.0}, {244.5, -38.0}));
  EXPECT_FALSE(offsetOfSky({0.0, 0.0}, {91.0, 0.0}));
  EXPECT_TRUE(offsetOfSky({0.0, 0.0}, {89.0, 0.0}));
  EXPECT_FALSE(offsetOfSky({0.0, 0.0}, {std::numeric_limits<double>::quiet_NaN(), 0.0}));
}

}  // namespace
}  // namespace lumo
