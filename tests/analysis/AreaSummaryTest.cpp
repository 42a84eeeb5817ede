// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "AnalysisSample.h"
#include "analysis/AreaSummary.h"
#include "analysis/MaskedStatistics.h"

namespace lumo {
namespace {

AMatrix<float> countingMap() {
  AMatrix<float> map(test::kRows, test::kColumns);
  for (std::uint32_t i = 0; i < map.size(); ++i) map.data()[i] = static_cast<float>(i) - 60.0F;
  return map;
}

// Pixels of 0.5 by 0.25 arcseconds; three columns about x = 1 and two rows about y = 0.125.
AreaShape sixPixels() {
  return AreaShape::rectangle({1.0, 0.125}, 1.1, 0.3);
}

TEST(AreaSummaryTest, CountsAndAddsThePixelsInTheArea) {
  // Columns 9 to 11 of rows 4 and 5: 77, 78, 79 and 94, 95, 96 less 60.
  const AreaSummary summary = summarise(sixPixels(), countingMap(), test::sampleRange());
  EXPECT_EQ(summary.pixels, 6U);
  EXPECT_EQ(summary.usable, 6U);
  EXPECT_EQ(summary.sum, 17 + 18 + 19 + 34 + 35 + 36);
  EXPECT_EQ(summary.maximum, 36);
}

TEST(AreaSummaryTest, TheSumIsThatOfTheTable) {
  AMatrix<float> map = countingMap();
  map(4, 10) = std::numeric_limits<float>::quiet_NaN();
  ABitMatrix mask(map.rows(), map.columns());
  fillMask(sixPixels(), mask, test::sampleRange());
  const AreaSummary summary = summarise(sixPixels(), map, test::sampleRange());
  EXPECT_EQ(summary.sum, maskedStatistics(map, mask).sum);
  EXPECT_EQ(summary.pixels, 6U);
  EXPECT_EQ(summary.usable, 5U);
}

TEST(AreaSummaryTest, MaximumOfNegativePixelsIsNegative) {
  AMatrix<float> map(test::kRows, test::kColumns);
  for (std::uint32_t i = 0; i < map.size(); ++i) map.data()[i] = -2.5F;
  EXPECT_EQ(summarise(sixPixels(), map, test::sampleRange()).maximum, -2.5);
}

TEST(AreaSummaryTest, TextHasTheFluxDensityOfTheBeam) {
  const AreaSummary summary = summarise(sixPixels(), countingMap(), test::sampleRange());
  const AMapHeader header = test::sampleHeader(1e9);
  EXPECT_EQ(summaryText(summary, header, 10.0),
            "6 pixels, sum 159 Jy/Beam, flux density 15.9 Jy, maximum 36 Jy/Beam");
}

TEST(AreaSummaryTest, WithoutABeamOrInAnotherUnitThereIsNoFluxDensity) {
  const AreaSummary summary = summarise(sixPixels(), countingMap(), test::sampleRange());
  AMapHeader header = test::sampleHeader(1e9);
  EXPECT_EQ(summaryText(summary, header, std::nan("")), "6 pixels, sum 159 Jy/Beam, maximum 36 Jy/Beam");
  header.unit.clear();
  EXPECT_EQ(summaryText(summary, header, 10.0), "6 pixels, sum 159, maximum 36");
}

TEST(AreaSummaryTest, EmptyAreasAndPixelsWithoutAValueAreTold) {
  const AMapHeader header = test::sampleHeader(1e9);
  AMatrix<float> map = countingMap();
  EXPECT_EQ(summaryText(summarise(AreaShape::circle({50, 50}, 1), map, test::sampleRange()), header, 10.0),
            "0 pixels");
  map(4, 8) = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(summaryText(summarise(AreaShape::circle({0, 0}, 0.1), map, test::sampleRange()), header, 10.0),
            "1 pixel, none with a value");
}

}  // namespace
}  // namespace lumo
