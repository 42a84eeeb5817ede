// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "analysis/MaskedStatistics.h"

namespace lumo {
namespace {

MaskedStatistics ofRow(const std::vector<float>& values) {
  AMatrix<float> map(1, static_cast<std::uint32_t>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) map.data()[i] = values[i];
  ABitMatrix mask(1, map.columns());
  mask = 1;
  return maskedStatistics(map, mask);
}

TEST(MaskedStatisticsTest, DeviationOfAConstantAreaIsZero) {
  EXPECT_EQ(ofRow({2.5F, 2.5F, 2.5F}).deviation, 0.0);
}

TEST(MaskedStatisticsTest, DeviationOfOneAndThreeIsTheRootOfAHalf) {
  EXPECT_DOUBLE_EQ(ofRow({1.0F, 3.0F}).deviation, std::sqrt(0.5));
}

TEST(MaskedStatisticsTest, FirstResultIsTheSumNotTheMean) {
  EXPECT_EQ(ofRow({1.0F, 3.0F}).sum, 4.0);
}

TEST(MaskedStatisticsTest, ZerosAndValuesThatAreNotFiniteCountInNeitherPass) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinite = std::numeric_limits<float>::infinity();
  const MaskedStatistics found = ofRow({0.0F, 1.0F, nan, 3.0F, infinite, -0.0F});
  EXPECT_EQ(found.sum, 4.0);
  EXPECT_DOUBLE_EQ(found.deviation, std::sqrt(0.5));
}

TEST(MaskedStatisticsTest, EmptyMaskGivesZeroForBoth) {
  AMatrix<float> map(2, 2);
  map(0, 0) = 5.0F;
  const MaskedStatistics found = maskedStatistics(map, ABitMatrix(2, 2));
  EXPECT_EQ(found.sum, 0.0);
  EXPECT_EQ(found.deviation, 0.0);
}

TEST(MaskedStatisticsTest, PixelsOutsideTheMaskAreLeftOut) {
  AMatrix<float> map(2, 2);
  map(0, 1) = 5.0F;
  map(1, 0) = 7.0F;
  ABitMatrix mask(2, 2);
  mask.set(1, 0, 1);
  EXPECT_EQ(maskedStatistics(map, mask).sum, 7.0);
}

TEST(MaskedStatisticsTest, GaussianBeamHoldsAsManyPixelsAsItsVolume) {
  // Summed over a wide map, a Gaussian of peak 1 and widths of 6 and 4 arcseconds is its own beam area.
  AMatrix<float> map(61, 121);
  TMinMax range;
  range.xMin = -15;
  range.xMax = 15;
  range.yMin = -15;
  range.yMax = 15;
  double sum = 0.0;
  for (std::uint32_t row = 0; row < 61; ++row)
    for (std::uint32_t column = 0; column < 121; ++column) {
      const double x = (-15 + column * 0.25) / 4.0;
      const double y = (-15 + row * 0.5) / 6.0;
      sum += std::exp(-4.0 * std::log(2.0) * (x * x + y * y));
    }
  AMapHeader header;
  header.beamMajor = 6;
  header.beamMinor = 4;
  // The tails beyond 2.5 widths hold less than a millionth.
  EXPECT_NEAR(beamPixels(header, range, map), sum, 1e-6 * sum);
}

}  // namespace
}  // namespace lumo
