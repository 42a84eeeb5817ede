// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstddef>

#include "numerics/AMeanIntervals.h"

namespace lumo {
namespace {

TEST(AMeanIntervalsTest, StartsWithEmptyNodesOverTheGivenRange) {
  const AMeanIntervals means(3, {-2.0, 5.0});
  EXPECT_EQ(means.rangeMin(), -2.0);
  EXPECT_EQ(means.rangeMax(), 5.0);
  ASSERT_EQ(means.n(), 3);
  for (const auto array : {means.sum(), means.count(), means.sumRaw(), means.sumSq(), means.countRaw()}) {
    ASSERT_EQ(array.size(), 3U);
    for (const double value : array) EXPECT_EQ(value, 0.0);
  }
}

TEST(AMeanIntervalsTest, AValueGoesToTheNearestNode) {
  AMeanIntervals means(5, {10.0, 18.0});
  means.add(10.0, 1.0);
  means.add(12.9, 2.0);
  means.add(13.1, 4.0);
  means.add(18.0, 8.0);
  const double expected[] = {1.0, 2.0, 4.0, 0.0, 8.0};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(means.sum()[i], expected[i]) << i;
}

TEST(AMeanIntervalsTest, AValueExactlyHalfwayGoesToTheUpperNode) {
  AMeanIntervals means(5, {0.0, 4.0});
  means.add(1.5, 7.0);
  EXPECT_EQ(means.count()[1], 0.0);
  EXPECT_EQ(means.count()[2], 1.0);
}

TEST(AMeanIntervalsTest, SumsAndSquaresOfANodeAddUp) {
  AMeanIntervals means(2, {0.0, 1.0});
  means.add(0.9, 3.0);
  means.add(1.0, -4.0);
  EXPECT_EQ(means.sum()[1], -1.0);
  EXPECT_EQ(means.sumRaw()[1], -1.0);
  EXPECT_EQ(means.sumSq()[1], 25.0);
  EXPECT_EQ(means.count()[1], 2.0);
  EXPECT_EQ(means.countRaw()[1], 2.0);
  EXPECT_EQ(means.countRaw()[0], 0.0);
}

TEST(AMeanIntervalsTest, FinishingDropsEmptyNodesAndTheOthersKeepTheirPositions) {
  AMeanIntervals means(5, {10.0, 18.0});
  means.add(12.0, 3.0);
  means.add(12.5, 4.0);
  means.add(16.0, -6.0);
  means.finish();
  ASSERT_EQ(means.n(), 2);
  ASSERT_EQ(means.sum().size(), 2U);
  EXPECT_EQ(means.sum()[0], 3.5);
  EXPECT_EQ(means.sum()[1], -6.0);
  EXPECT_EQ(means.count()[0], 12.0);
  EXPECT_EQ(means.count()[1], 16.0);
  EXPECT_EQ(means.sumRaw()[0], 7.0);
  EXPECT_EQ(means.sumRaw()[1], -6.0);
  EXPECT_EQ(means.sumSq()[0], 25.0);
  EXPECT_EQ(means.sumSq()[1], 36.0);
  EXPECT_EQ(means.countRaw()[0], 2.0);
  EXPECT_EQ(means.countRaw()[1], 1.0);
}

TEST(AMeanIntervalsTest, PositionsAreMultipliedBeforeTheyAreDivided) {
  AMeanIntervals means(11, {0.0, 1.0});
  for (int i = 0; i < 11; ++i) means.add(i / 10.0, 1.0);
  means.finish();
  ASSERT_EQ(means.n(), 11);
  EXPECT_EQ(means.count()[3], 0.3);  // 3 times 0.1 would be the next double
  EXPECT_EQ(means.count()[10], 1.0);
}

TEST(AMeanIntervalsTest, FinishingWithoutValuesLeavesNoNode) {
  AMeanIntervals means(4, {0.0, 1.0});
  means.finish();
  EXPECT_EQ(means.n(), 0);
  EXPECT_TRUE(means.sum().empty());
}

TEST(AMeanIntervalsTest, ASingleNodeTakesAllValuesAndLiesAtTheMinimum) {
  AMeanIntervals means(1, {2.0, 9.0});
  means.add(2.0, 1.0);
  means.add(9.0, 5.0);
  means.finish();
  ASSERT_EQ(means.n(), 1);
  EXPECT_EQ(means.sum()[0], 3.0);
  EXPECT_EQ(means.count()[0], 2.0);
}

#ifndef NDEBUG
TEST(AMeanIntervalsDeathTest, AnAbscissaOutsideTheRangeIsAssertedAgainst) {
  AMeanIntervals means(4, {0.0, 1.0});
  EXPECT_DEATH(means.add(1.5, 1.0), "nearest");
  EXPECT_DEATH(means.add(-2.0, 1.0), "nearest");
}
#endif

}  // namespace
}  // namespace lumo
