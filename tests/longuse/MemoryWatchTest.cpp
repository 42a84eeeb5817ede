// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <random>

#include "longuse/MemoryWatch.h"

namespace lumo::test {
namespace {

/// 200 steps of 50 MB with noise of 40 kB, half of which is only ever added, and `perStep` bytes more each.
std::vector<double> memory(double perStep, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0.0, 4e4);
  std::vector<double> values;
  values.reserve(200);
  for (int i = 0; i < 200; ++i) values.push_back(5e7 + perStep * i + std::fabs(noise(random)));
  return values;
}

TEST(MemoryWatchTest, ALineIsFoundWithoutError) {
  const Trend trend = trendOf({1.0, 3.0, 5.0, 7.0});
  EXPECT_DOUBLE_EQ(trend.perStep, 2.0);
  EXPECT_NEAR(trend.error, 0.0, 1e-12);  // rounding of small numbers
}

TEST(MemoryWatchTest, TheErrorIsThatOfTheClosedForm) {
  // Residuals of 0, 1, 0 about their line are -1/3, 2/3, -1/3: error sqrt((6/9) / 1 / 2).
  const Trend trend = trendOf({0.0, 1.0, 0.0});
  EXPECT_NEAR(trend.perStep, 0.0, 1e-15);
  EXPECT_NEAR(trend.error, std::sqrt(1.0 / 3.0), 1e-15);
}

TEST(MemoryWatchTest, OfTwoValuesNothingIsKnown) {
  EXPECT_TRUE(std::isinf(trendOf({1.0, 2.0}).error));
  EXPECT_FALSE(grows({1.0, 2.0}, 0.0));
}

TEST(MemoryWatchTest, MemoryThatComesAndGoesDoesNotGrow) {
  for (unsigned seed = 1; seed <= 20; ++seed) EXPECT_FALSE(grows(memory(0.0, seed), 0.0)) << seed;
}

TEST(MemoryWatchTest, ASmallLeakInEveryStepIsSeen) {
  for (unsigned seed = 1; seed <= 20; ++seed) EXPECT_TRUE(grows(memory(1000.0, seed), 100.0)) << seed;
}

TEST(MemoryWatchTest, GrowthBelowTheAllowanceAndACacheThatFillsAtTheBeginningAreNone) {
  EXPECT_FALSE(grows(memory(1000.0, 1), 1500.0));
  std::vector<double> values = memory(0.0, 2);
  for (std::size_t i = 0; i < 80; ++i) values[i] -= 1e5 * static_cast<double>(80 - i);
  EXPECT_FALSE(grows(values, 100.0));
}

TEST(MemoryWatchTest, WhatIsHeldIsSeen) {
  const Holding before = currentHolding();
  const auto block = std::make_unique<std::vector<char>>(10'000'000, 'x');
  const std::ifstream file("/proc/self/statm");
  const Holding after = currentHolding();
  EXPECT_GE(after.heapBytes - before.heapBytes, 10'000'000);
  EXPECT_LT(after.heapBytes - before.heapBytes, 11'000'000);
  // Pages that the allocator had at hand already count before and after.
  EXPECT_GT(after.residentBytes, 10'000'000);
  EXPECT_EQ(after.descriptors, before.descriptors + 1);
  EXPECT_GE(after.threads, 1);
}

}  // namespace
}  // namespace lumo::test
