// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "view/SkyText.h"

namespace lumo {
namespace {

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
