// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "analysis/SpectrumCurve.h"

namespace lumo {
namespace {

SpectrumCurve curveOf(std::vector<double> freqs, std::vector<double> fluxes, std::vector<double> errors) {
  SpectrumCurve curve;
  curve.setData(std::move(freqs), std::move(fluxes), std::move(errors));
  return curve;
}

TMinMax linearRange(const SpectrumCurve& curve) {
  TMinMax range;
  curve.getRange(range, kLinearScale, kLinearScale);
  return range;
}

TEST(SpectrumCurveTest, PointWhoseErrorReachesZeroHasNoBarAndDoesNotWidenTheRange) {
  const SpectrumCurve curve = curveOf({1e9, 2e9, 3e9}, {2.0, 1.0, 4.0}, {0.5, 1.0, 5.0});
  EXPECT_TRUE(curve.hasErrorBar(0));
  EXPECT_FALSE(curve.hasErrorBar(1));
  EXPECT_FALSE(curve.hasErrorBar(2));
  // 1 to 4 by the points; the only bar, 1.5 to 2.5, lies inside. A margin of 5 % of 3 at each end.
  const TMinMax range = linearRange(curve);
  EXPECT_DOUBLE_EQ(range.yMin, 1.0 - 0.15);
  EXPECT_DOUBLE_EQ(range.yMax, 4.0 + 0.15);
}

TEST(SpectrumCurveTest, BarsWidenTheRangeAndALinearAxisHasAMargin) {
  const TMinMax range = linearRange(curveOf({1e9, 3e9}, {2.0, 4.0}, {1.0, 2.0}));
  EXPECT_DOUBLE_EQ(range.yMin, 1.0 - 0.25);
  EXPECT_DOUBLE_EQ(range.yMax, 6.0 + 0.25);
  EXPECT_DOUBLE_EQ(range.xMin, 0.9e9);
  EXPECT_DOUBLE_EQ(range.xMax, 3.1e9);
}

TEST(SpectrumCurveTest, LogarithmicAxisCoversWholeDecades) {
  TMinMax range;
  curveOf({3e8, 2e9}, {0.02, 1.0}, {0.0, 0.0}).getRange(range, kLogarithmicScale, kLogarithmicScale);
  EXPECT_DOUBLE_EQ(range.xMin, 1e8);
  EXPECT_DOUBLE_EQ(range.xMax, 1e10);
  EXPECT_DOUBLE_EQ(range.yMin, 0.01);
  EXPECT_DOUBLE_EQ(range.yMax, 1.0);
}

TEST(SpectrumCurveTest, DecadesOfASingleValueAreAtLeastOne) {
  EXPECT_DOUBLE_EQ(decadeRange(100.0, 100.0).min, 100.0);
  EXPECT_DOUBLE_EQ(decadeRange(100.0, 100.0).max, 1000.0);
  EXPECT_DOUBLE_EQ(decadeRange(-1.0, 100.0).min, 0.1);
  EXPECT_DOUBLE_EQ(decadeRange(-1.0, -1.0).max, 10.0);
}

TEST(SpectrumCurveTest, RangeOfTheFrameGrowsToCoverEveryCurveAndHasAMarginOfItsOwnSpan) {
  // x: 0 to 100 with 5; then -5 to 200 with 10.25. y: 0 to 21 with 1.05; then -1.05 to 50 with 2.5525.
  TMinMax range = linearRange(curveOf({0.0, 100.0}, {0.0, 20.0}, {1.0, 1.0}));
  curveOf({100.0, 200.0}, {10.0, 50.0}, {99.0, 99.0}).getRange(range, kLinearScale, kLinearScale);
  EXPECT_DOUBLE_EQ(range.xMin, -15.25);
  EXPECT_DOUBLE_EQ(range.xMax, 210.25);
  EXPECT_DOUBLE_EQ(range.yMin, -3.6025);
  EXPECT_DOUBLE_EQ(range.yMax, 52.5525);
}

TEST(SpectrumCurveTest, AFlatCurveDoesNotLieOnTheEdgeOfAFrameWithAnother) {
  TMinMax range = linearRange(curveOf({1.0, 2.0}, {4.0, 4.0}, {0.0, 0.0}));
  curveOf({1.0, 2.0}, {1.0, 1.0}, {0.0, 0.0}).getRange(range, kLinearScale, kLinearScale);
  EXPECT_DOUBLE_EQ(range.yMin, 1.0 - 0.15);
  EXPECT_DOUBLE_EQ(range.yMax, 4.0 + 0.15);
}

TEST(SpectrumCurveTest, DecadesOfTheFrameHoldEveryCurve) {
  TMinMax range;
  curveOf({3e8, 2e9}, {0.02, 1.0}, {0.0, 0.0}).getRange(range, kLogarithmicScale, kLogarithmicScale);
  curveOf({5e7, 6e7}, {3.0, 4.0}, {0.0, 0.0}).getRange(range, kLogarithmicScale, kLogarithmicScale);
  EXPECT_DOUBLE_EQ(range.xMin, 1e7);
  EXPECT_DOUBLE_EQ(range.xMax, 1e10);
  EXPECT_DOUBLE_EQ(range.yMin, 0.01);
  EXPECT_DOUBLE_EQ(range.yMax, 10.0);
}

TEST(SpectrumCurveTest, ValuesThatAreNotFiniteDoNotSpoilTheRange) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TMinMax range = linearRange(curveOf({1.0, 2.0, 3.0}, {nan, 1.0, 1.0 / 0.0}, {nan, 0.0, 0.0}));
  EXPECT_DOUBLE_EQ(range.yMin, 1.0);
  EXPECT_DOUBLE_EQ(range.yMax, 1.0);
}

TEST(SpectrumCurveTest, ValuesWithoutALogarithmDoNotWidenOrHideALogarithmicAxis) {
  TMinMax range;
  const SpectrumCurve curve = curveOf({1e9, 2e9, 3e9, 0.0}, {-5.0, 0.0, 2e-7, 3e3}, {0, 0, 0, 0});
  curve.getRange(range, kLogarithmicScale, kLogarithmicScale);
  EXPECT_DOUBLE_EQ(range.xMin, 1e9);
  EXPECT_DOUBLE_EQ(range.xMax, 1e10);
  EXPECT_DOUBLE_EQ(range.yMin, 1e-7);
  EXPECT_DOUBLE_EQ(range.yMax, 1e4);
  TMinMax none;
  curveOf({1e9}, {-1.0}, {0.0}).getRange(none, kLinearScale, kLogarithmicScale);
  EXPECT_GT(none.yMin, none.yMax);
}

TEST(SpectrumCurveTest, SinglePointCollapsesTheLineOntoIt) {
  const auto samples = curveOf({5e9}, {0.25}, {0.0}).samples();
  ASSERT_EQ(samples.size(), 256U);
  for (const SpectrumSample& sample : samples) {
    EXPECT_EQ(sample.freq, 5e9);
    EXPECT_EQ(sample.flux, 0.25);
  }
}

TEST(SpectrumCurveTest, LineRunsThroughTheFirstAndTheLastPointInEqualSteps) {
  const auto samples = curveOf({1e9, 2e9, 3.55e9}, {1.0, 3.0, 2.0}, {0, 0, 0}).samples();
  ASSERT_EQ(samples.size(), 256U);
  EXPECT_EQ(samples.front().freq, 1e9);
  EXPECT_EQ(samples.front().flux, 1.0);
  EXPECT_DOUBLE_EQ(samples[100].freq, 2e9);
  EXPECT_NEAR(samples[100].flux, 3.0,
              1e-9);  // a step of 1e7 Hz: the knot, but for the rounding of a frequency
  EXPECT_EQ(samples.back().freq, 3.55e9);
  EXPECT_NEAR(samples.back().flux, 2.0, 1e-12);
}

TEST(SpectrumCurveTest, LineThroughCollinearPointsIsStraight) {
  const auto samples = curveOf({1.0, 2.0, 4.0, 5.0}, {3.0, 5.0, 9.0, 11.0}, {0, 0, 0, 0}).samples();
  for (const SpectrumSample& sample : samples) EXPECT_NEAR(sample.flux, 1.0 + 2.0 * sample.freq, 1e-12);
}

TEST(SpectrumCurveTest, PointsInAnyOrderAndTwiceGiveTheSameLine) {
  const auto sorted = curveOf({1.0, 2.0, 4.0}, {3.0, 1.0, 9.0}, {0, 0, 0}).samples();
  const auto mixed = curveOf({4.0, 1.0, 2.0, 1.0}, {9.0, 3.0, 1.0, 3.0}, {0, 0, 0, 0}).samples();
  ASSERT_EQ(mixed.size(), sorted.size());
  for (std::size_t s = 0; s < sorted.size(); ++s) {
    EXPECT_EQ(mixed[s].freq, sorted[s].freq);
    EXPECT_EQ(mixed[s].flux, sorted[s].flux);
  }
}

TEST(SpectrumCurveTest, NoPointsGiveNoLine) {
  EXPECT_TRUE(curveOf({}, {}, {}).samples().empty());
  EXPECT_TRUE(curveOf({std::nan("")}, {1.0}, {0.0}).samples().empty());
}

TEST(SpectrumCurveTest, LegendNamesReferenceAndIndex) {
  SpectrumCurve curve;
  curve.refFreq = 1.5e9;
  curve.refIntensity = 0.25;
  curve.specIndex = -0.75;
  EXPECT_EQ(curve.legend(), "Reference freq: 1500[MHz], Reference intensity: 0.25, Spectral index: -0.75 ");
}

TEST(SpectrumCurveTest, TitleOfALogarithmicAxisSaysSo) {
  EXPECT_EQ(scaledTitle("Frequency [%sHz]", kLogarithmicScale), "Frequency [%sHz] (log scale)");
  EXPECT_EQ(scaledTitle("Frequency [%sHz]", kLinearScale), "Frequency [%sHz]");
}

TEST(SpectrumCurveTest, TitleCanBeHadWithoutWhatTheScaleAdds) {
  EXPECT_EQ(bareTitle("Frequency [%sHz] (log scale)"), "Frequency [%sHz]");
  EXPECT_EQ(bareTitle("Frequency [%sHz]"), "Frequency [%sHz]");
}

}  // namespace
}  // namespace lumo
