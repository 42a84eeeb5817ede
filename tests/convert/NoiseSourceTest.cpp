// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>

#include "convert/NoiseSource.h"

namespace lumo {
namespace {

constexpr int kPairs = 200000;

TEST(NoiseSourceTest, SplitMixGivesThePublishedSequence) {
  // First outputs of SplitMix64 started at 0 (state advanced by its constant from call to call).
  EXPECT_EQ(splitMix(0), 0xE220A8397B1DCDAFu);
  EXPECT_EQ(splitMix(0x9E3779B97F4A7C15), 0x6E789E6AA1B965F4u);
  EXPECT_EQ(splitMix(2 * 0x9E3779B97F4A7C15u), 0x06C45D188009454Fu);
}

TEST(NoiseSourceTest, HasMeanZeroAndUnitVarianceInBothParts) {
  NoiseSource noise(3);
  double sumRe = 0, sumIm = 0, squareRe = 0, squareIm = 0, cross = 0;
  for (int i = 0; i < kPairs; ++i) {
    const auto value = noise.next();
    sumRe += value.real();
    sumIm += value.imag();
    squareRe += value.real() * value.real();
    squareIm += value.imag() * value.imag();
    cross += value.real() * value.imag();
  }
  // Five standard errors: of a mean 1/sqrt(n), of a variance sqrt(2/n), of a correlation 1/sqrt(n).
  const double n = kPairs;
  EXPECT_NEAR(sumRe / n, 0, 5 / std::sqrt(n));
  EXPECT_NEAR(sumIm / n, 0, 5 / std::sqrt(n));
  EXPECT_NEAR(squareRe / n, 1, 5 * std::sqrt(2 / n));
  EXPECT_NEAR(squareIm / n, 1, 5 * std::sqrt(2 / n));
  EXPECT_NEAR(cross / n, 0, 5 / std::sqrt(n));
}

TEST(NoiseSourceTest, IsNormallyDistributed) {
  NoiseSource noise(11);
  int beyond[3] = {};
  for (int i = 0; i < kPairs; ++i)
    for (int limit = 0; limit < 3; ++limit) beyond[limit] += std::abs(noise.next().real()) > limit + 1;
  for (int limit = 0; limit < 3; ++limit) {
    const double share = std::erfc((limit + 1) / std::sqrt(2.0));
    // Five standard errors of a binomial count.
    EXPECT_NEAR(beyond[limit] / double(kPairs), share, 5 * std::sqrt(share * (1 - share) / kPairs)) << limit;
  }
}

TEST(NoiseSourceTest, NeighbouringDrawsAreUncorrelated) {
  NoiseSource noise(5);
  double sum = 0;
  auto last = noise.next();
  for (int i = 0; i < kPairs; ++i) {
    const auto value = noise.next();
    sum += value.real() * last.imag();
    last = value;
  }
  EXPECT_NEAR(sum / kPairs, 0, 5 / std::sqrt(double(kPairs)));
}

TEST(NoiseSourceTest, TheSameSeedRepeatsAndAnotherDoesNot) {
  NoiseSource first(42), second(42), other(43);
  bool differs = false;
  for (int i = 0; i < 100; ++i) {
    const auto value = first.next();
    EXPECT_EQ(value, second.next());
    differs = differs || value != other.next();
  }
  EXPECT_TRUE(differs);
}

}  // namespace
}  // namespace lumo
