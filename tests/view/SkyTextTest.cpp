// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "view/SkyText.h"

namespace lumo {
namespace {

constexpr double kHalf =
    103132.40312354818;             // arcseconds whose direction cosine is 1/2, the sine of 30 degrees
constexpr double kRounding = 1e-9;  // degrees; a few roundings of angles of 360

TEST(SkyTextTest, EastOnTheEquatorIsLargerRightAscension) {
  const auto sky = skyAtOffset({180.0, 0.0}, kHalf, 0.0);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 210.0, kRounding);
  EXPECT_NEAR(sky->decDeg, 0.0, kRounding);
}

TEST(SkyTextTest, NorthIsLargerDeclination) {
  const auto sky = skyAtOffset({180.0, 10.0}, 0.0, kHalf);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 180.0, kRounding);
  EXPECT_NEAR(sky->decDeg, 40.0, kRounding);
}

TEST(SkyTextTest, AtSixtyDegreesAnArcsecondEastIsTwoOfRightAscension) {
  const auto sky = skyAtOffset({15.0, 60.0}, 1.0, 0.0);
  ASSERT_TRUE(sky);
  // The curvature of the parallel is of the order of 1e-11 of the offset.
  EXPECT_NEAR((sky->raDeg - 15.0) * 3600.0, 2.0, 1e-8);
}

TEST(SkyTextTest, BeyondThePoleRightAscensionTurnsByTwelveHours) {
  const auto sky = skyAtOffset({30.0, 75.0}, 0.0, kHalf);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->decDeg, 75.0, kRounding);
  EXPECT_NEAR(sky->raDeg, 210.0, kRounding);
}

TEST(SkyTextTest, WestOfZeroHoursIsBelow360Degrees) {
  const auto sky = skyAtOffset({0.0, 0.0}, -kHalf, 0.0);
  ASSERT_TRUE(sky);
  EXPECT_NEAR(sky->raDeg, 330.0, kRounding);
}

TEST(SkyTextTest, BeyondTheHorizonThereIsNothing) {
  EXPECT_FALSE(skyAtOffset({0.0, 0.0}, 1.5 * kHalf, 1.5 * kHalf));
  EXPECT_FALSE(skyAtOffset({0.0, 0.0}, std::numeric_limits<double>::quiet_NaN(), 0.0));
}

TEST(SkyTextTest, DecimalsShowATenthOfACell) {
  EXPECT_EQ(arcsecDecimals(10.0), 0);
  EXPECT_EQ(arcsecDecimals(1.0), 1);
  EXPECT_EQ(arcsecDecimals(0.3), 2);
  EXPECT_EQ(arcsecDecimals(0.001), 4);
  EXPECT_EQ(arcsecDecimals(3600.0), 0);
  EXPECT_EQ(arcsecDecimals(1e-30), 9);
  EXPECT_EQ(arcsecDecimals(0.0), 1);
}

TEST(SkyTextTest, RightAscensionIsInHoursOfTime) {
  // 12 h 30 min 49.4233 s
  EXPECT_EQ(raText(187.705930417, 2), "12:30:49.42");
  EXPECT_EQ(raText(0.0, 0), "00:00:00");
  EXPECT_EQ(raText(-15.0, 0), "23:00:00");
}

TEST(SkyTextTest, RightAscensionRoundsOverToZeroHours) {
  // three hundredths of a second of time short of 24 h
  EXPECT_EQ(raText(360.0 - 0.03 / 240.0, 1), "00:00:00.0");
  EXPECT_EQ(raText(360.0 - 0.03 / 240.0, 2), "23:59:59.97");
}

TEST(SkyTextTest, DeclinationAlwaysHasItsSign) {
  EXPECT_EQ(decText(12.391123, 1), "+12:23:28.0");
  EXPECT_EQ(decText(-0.5, 0), "-00:30:00");
  EXPECT_EQ(decText(-90.0, 0), "-90:00:00");
}

TEST(SkyTextTest, ADeclinationThatRoundsToZeroIsPositive) {
  EXPECT_EQ(decText(-1e-9, 1), "+00:00:00.0");
}

TEST(SkyTextTest, SixtySecondsCarryOver) {
  EXPECT_EQ(decText(29.0 + 59.99999 / 60.0, 1), "+30:00:00.0");
}

TEST(SkyTextTest, FixedTextKeepsItsDecimals) {
  EXPECT_EQ(fixedText(1.5, 3), "1.500");
  EXPECT_EQ(fixedText(-0.04, 1), "0.0");
  EXPECT_EQ(fixedText(-0.06, 1), "-0.1");
}

}  // namespace
}  // namespace lumo
