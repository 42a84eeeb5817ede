// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "convert/ChannelAverage.h"

namespace lumo {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(ChannelAverageTest, TheLastIfTakesTheChannelsThatAreLeft) {
  EXPECT_EQ(ChannelAverage(8, 1, 4).ifs(), 2U);
  EXPECT_EQ(ChannelAverage(9, 1, 4).ifs(), 3U);
  EXPECT_EQ(ChannelAverage(3, 1, 4).ifs(), 1U);
  EXPECT_EQ(ChannelAverage(5, 1, 1).ifs(), 5U);
}

TEST(ChannelAverageTest, AnIfLiesAtTheCentreOfItsChannelsAndIsAsWideAsAllOfThem) {
  const std::vector<double> frequencies = {100e6, 102e6, 107e6, 110e6, 111e6};
  const std::vector<double> widths = {2e6, 2e6, 3e6, 1e6, 1e6};
  const auto bands = ChannelAverage(5, 1, 3).bands(frequencies, widths);
  ASSERT_EQ(bands.size(), 2U);
  EXPECT_DOUBLE_EQ(bands[0].frequency, 100e6 + 25e6 / 7);  // (2 · 0 + 2 · 2 + 3 · 7) / (2 + 2 + 3) MHz
  EXPECT_DOUBLE_EQ(bands[0].increment, 7e6);
  EXPECT_DOUBLE_EQ(bands[1].frequency, 110.5e6);
  EXPECT_DOUBLE_EQ(bands[1].increment, 2e6);
}

TEST(ChannelAverageTest, FallingFrequenciesAreAveragedAlike) {
  const std::vector<double> frequencies = {104e6, 102e6, 100e6};
  const std::vector<double> widths = {-2e6, -2e6, -2e6};
  const auto bands = ChannelAverage(3, 1, 3).bands(frequencies, widths);
  EXPECT_DOUBLE_EQ(bands.at(0).frequency, 102e6);
  EXPECT_DOUBLE_EQ(bands.at(0).increment, -6e6);
}

TEST(ChannelAverageTest, TheMeanIsWeightedAndTheWeightsAddUp) {
  // Two channels, two products.
  const std::vector<AUVXComplex> channels = {{1, 10, 1}, {5, 0, 2}, {4, -2, 3}, {7, 8, 2}};
  std::vector<AUVXComplex> averages(2);
  ChannelAverage(2, 2, 2).apply(channels, averages);
  EXPECT_EQ(averages[0].Re(), 3.25F);  // (1 + 12) / 4
  EXPECT_EQ(averages[0].Im(), 1.0F);   // (10 - 6) / 4
  EXPECT_EQ(averages[0].Weight(), 4.0F);
  EXPECT_EQ(averages[1].Re(), 6.0F);
  EXPECT_EQ(averages[1].Im(), 4.0F);
  EXPECT_EQ(averages[1].Weight(), 4.0F);
}

TEST(ChannelAverageTest, RejectedChannelsDoNotCount) {
  const std::vector<AUVXComplex> channels = {
      {100, 100, -1}, {2, 3, 4}, {kNan, 0, 1}, {9, 9, 0}, {9, 9, kNan}};
  std::vector<AUVXComplex> averages(1);
  ChannelAverage(5, 1, 5).apply(channels, averages);
  EXPECT_EQ(averages[0].Re(), 2.0F);
  EXPECT_EQ(averages[0].Im(), 3.0F);
  EXPECT_EQ(averages[0].Weight(), 4.0F);
}

TEST(ChannelAverageTest, WithoutAUsableChannelTheWeightIsZero) {
  const std::vector<AUVXComplex> channels = {{1, 1, -1}, {2, 2, 0}};
  std::vector<AUVXComplex> averages(1, AUVXComplex(7, 7, 7));
  ChannelAverage(2, 1, 2).apply(channels, averages);
  EXPECT_EQ(averages[0].Re(), 0.0F);
  EXPECT_EQ(averages[0].Weight(), 0.0F);
}

TEST(ChannelAverageTest, AveragesOfOneChannelKeepItsBits) {
  const std::vector<AUVXComplex> channels = {{0.1, -0.3, 0.7}, {1e-7, 3e8, 1.3e-5}};
  std::vector<AUVXComplex> averages(2);
  ChannelAverage(2, 1, 1).apply(channels, averages);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(averages[i].Re(), channels[i].Re());
    EXPECT_EQ(averages[i].Im(), channels[i].Im());
    EXPECT_EQ(averages[i].Weight(), channels[i].Weight());
  }
}

}  // namespace
}  // namespace lumo
