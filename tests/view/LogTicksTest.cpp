// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "view/LogTicks.h"

namespace lumo {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LogTicksTest, OneDecadeHasNumbersAtOneTwoAndFive) {
  const LogTicks ticks = logTicks(1.0, 10.0);
  EXPECT_THAT(ticks.major, ElementsAre(1.0, 2.0, 5.0, 10.0));
  EXPECT_THAT(ticks.minor, ElementsAre(3.0, 4.0, 6.0, 7.0, 8.0, 9.0));
}

TEST(LogTicksTest, SeveralDecadesHaveNumbersAtPowersOfTen) {
  const LogTicks ticks = logTicks(1e-4, 0.1);
  EXPECT_THAT(ticks.major, ElementsAre(DoubleEq(1e-4), DoubleEq(1e-3), DoubleEq(1e-2), DoubleEq(0.1)));
  EXPECT_EQ(ticks.minor.size(), 24U);  // eight in each of three decades
}

TEST(LogTicksTest, TicksLieWithinTheRange) {
  const LogTicks ticks = logTicks(0.3, 35.0);
  EXPECT_THAT(ticks.major, ElementsAre(0.5, 1.0, 2.0, 5.0, 10.0, 20.0));
  EXPECT_THAT(ticks.minor.front(), DoubleEq(0.3));
  EXPECT_THAT(ticks.minor.back(), DoubleEq(30.0));
}

TEST(LogTicksTest, VeryManyDecadesLeaveNumbersOut) {
  const LogTicks ticks = logTicks(1e-30, 1e30);
  EXPECT_LE(ticks.major.size(), 13U);
  EXPECT_GE(ticks.major.size(), 5U);
  const double step = ticks.major[1] / ticks.major[0];
  for (std::size_t i = 1; i < ticks.major.size(); ++i)
    EXPECT_NEAR(ticks.major[i] / ticks.major[i - 1] / step, 1.0, 1e-9);  // rounding of powers of ten
}

TEST(LogTicksTest, LittleOfADecadeIsLeftToEqualSteps) {
  EXPECT_THAT(logTicks(1.40, 1.45).major, IsEmpty());
  EXPECT_THAT(logTicks(1.1, 3.0).major, IsEmpty());  // 2 alone
}

TEST(LogTicksTest, RangesWithoutALogarithmHaveNone) {
  EXPECT_THAT(logTicks(0.0, 10.0).major, IsEmpty());
  EXPECT_THAT(logTicks(-1.0, 10.0).major, IsEmpty());
  EXPECT_THAT(logTicks(10.0, 1.0).major, IsEmpty());
  EXPECT_THAT(logTicks(1.0, std::numeric_limits<double>::infinity()).major, IsEmpty());
  EXPECT_THAT(logTicks(std::nan(""), 10.0).major, IsEmpty());
}

}  // namespace
}  // namespace lumo
