// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "analysis/SpectrumFit.h"

namespace lumo {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
// Sums in single precision of seven digits over points scaled to about 1.
constexpr double kSinglePrecision = 5e-6;

SpectrumCurve curveOf(std::vector<double> freqs, std::vector<double> fluxes) {
  SpectrumCurve curve;
  const std::vector<double> errors(freqs.size(), 0.0);
  curve.setData(std::move(freqs), std::move(fluxes), errors);
  return curve;
}

/// S = 2 Jy (nu / 1 GHz)^(-0.7 + 0.3 ln(nu / 1 GHz)).
double parabola(double freq) {
  const double u = std::log(freq / 1e9);
  return 2.0 * std::exp(-0.7 * u + 0.3 * u * u);
}

SpectrumCurve parabolaAt(const std::vector<double>& freqs) {
  std::vector<double> fluxes;
  fluxes.reserve(freqs.size());
  for (const double freq : freqs) fluxes.push_back(parabola(freq));
  return curveOf(freqs, fluxes);
}

TEST(SpectrumFitTest, ParabolaInLogLogIsFound) {
  const SpectrumFit fit = fitLogLog(parabolaAt({4e8, 7e8, 1.1e9, 2.3e9, 4.9e9}), 2);
  ASSERT_TRUE(fit.isFitted());
  // The middle of the logarithms of 0.4 and 4.9 GHz.
  EXPECT_NEAR(fit.refFreq, std::sqrt(4e8 * 4.9e9), 1.0);
  // About u0 = ln 1.4: slope -0.7 + 2 * 0.3 u0, curvature 0.3.
  const double u0 = std::log(std::sqrt(0.4 * 4.9));
  EXPECT_NEAR(fit.coef[0], std::log(2.0) - 0.7 * u0 + 0.3 * u0 * u0, kSinglePrecision);
  EXPECT_NEAR(fit.coef[1], -0.7 + 0.6 * u0, kSinglePrecision);
  EXPECT_NEAR(fit.coef[2], 0.3, kSinglePrecision);
  for (const double freq : {4e8, 1e9, 3e9, 4.9e9})
    EXPECT_NEAR(fit.valueAt(freq) / parabola(freq), 1.0, kSinglePrecision) << freq;
}

TEST(SpectrumFitTest, NarrowBandKeepsItsDigits) {
  const SpectrumFit fit = fitLogLog(parabolaAt({1.40e9, 1.41e9, 1.42e9, 1.43e9}), 2);
  ASSERT_TRUE(fit.isFitted());
  for (const double freq : {1.40e9, 1.415e9, 1.43e9})
    EXPECT_NEAR(fit.valueAt(freq) / parabola(freq), 1.0, kSinglePrecision) << freq;
}

TEST(SpectrumFitTest, PowerLawIsTheFitOfOrderOne) {
  const SpectrumFit fit =
      fitLogLog(curveOf({1e9, 2e9, 4e9}, {3.0, 3.0 * std::pow(2.0, -0.8), 3.0 * std::pow(4.0, -0.8)}), 1);
  ASSERT_EQ(fit.coef.size(), 2U);
  EXPECT_NEAR(fit.coef[1], -0.8, kSinglePrecision);
  EXPECT_NEAR(fit.valueAt(1e9), 3.0, 3.0 * kSinglePrecision);
  EXPECT_EQ(fit.text(), "index -0.8 at 2000 MHz");
}

TEST(SpectrumFitTest, ThreePointsDetermineAParabola) {
  const SpectrumFit fit = fitLogLog(curveOf({1e9, 2e9, 4e9}, {1.0, 5.0, 2.0}), 2);
  EXPECT_NEAR(fit.valueAt(1e9), 1.0, kSinglePrecision);
  EXPECT_NEAR(fit.valueAt(2e9), 5.0, 5.0 * kSinglePrecision);
  EXPECT_NEAR(fit.valueAt(4e9), 2.0, 2.0 * kSinglePrecision);
}

TEST(SpectrumFitTest, PointsWithoutALogarithmAreLeftOut) {
  SpectrumCurve curve = parabolaAt({4e8, 7e8, 1.1e9, 2.3e9});
  auto freqs = curve.freqs();
  auto fluxes = curve.fluxes();
  for (const auto& [freq, flux] :
       {std::pair(5e8, 0.0), std::pair(6e8, -3.0), std::pair(8e8, kNan), std::pair(9e8, 1.0 / 0.0),
        std::pair(0.0, 7.0), std::pair(-1e9, 7.0), std::pair(kNan, 7.0)}) {
    freqs.push_back(freq);
    fluxes.push_back(flux);
  }
  const SpectrumFit fit = fitLogLog(curveOf(freqs, fluxes), 2);
  ASSERT_TRUE(fit.isFitted());
  EXPECT_NEAR(fit.coef[2], 0.3, kSinglePrecision);
}

TEST(SpectrumFitTest, TooFewFrequenciesGiveNoFit) {
  EXPECT_FALSE(fitLogLog(curveOf({1e9, 2e9}, {1.0, 2.0}), 2).isFitted());
  EXPECT_FALSE(fitLogLog(curveOf({1e9, 2e9, 3e9}, {1.0, 2.0, -1.0}), 2).isFitted());
  EXPECT_FALSE(fitLogLog(curveOf({1e9, 1e9, 2e9, 2e9}, {1.0, 2.0, 3.0, 4.0}), 2).isFitted());
  EXPECT_FALSE(fitLogLog(curveOf({1e9, 1e9}, {1.0, 2.0}), 1).isFitted());
  EXPECT_FALSE(fitLogLog(curveOf({}, {}), 1).isFitted());
  EXPECT_FALSE(fitLogLog(curveOf({1e9, 2e9}, {1.0, 2.0}), 0).isFitted());
}

TEST(SpectrumFitTest, WithoutAFitThereIsNoValueAndNoLine) {
  const SpectrumCurve curve = curveOf({1e9, 2e9}, {-1.0, -2.0});
  const SpectrumFit fit = fitLogLog(curve, 1);
  EXPECT_TRUE(std::isnan(fit.valueAt(1e9)));
  EXPECT_TRUE(fit.samples(curve).empty());
  EXPECT_EQ(fit.text(), "too few points with a positive flux density");
}

TEST(SpectrumFitTest, LineRunsOverThePositiveFrequencies) {
  const SpectrumCurve curve = curveOf({4e9, -1e9, 1e9, 2e9}, {2.0, 1.0, 1.0, 1.5});
  const auto samples = fitLogLog(curve, 1).samples(curve);
  ASSERT_EQ(samples.size(), 256U);
  EXPECT_DOUBLE_EQ(samples.front().freq, 1e9);
  EXPECT_NEAR(samples.back().freq, 4e9, 1.0);
  // Equal steps of the logarithm: 85 of 255 are a third of two octaves.
  EXPECT_NEAR(samples[85].freq, 1e9 * std::pow(4.0, 1.0 / 3.0), 1.0);
}

TEST(SpectrumFitTest, TextNamesIndexAndCurvature) {
  SpectrumFit fit;
  fit.refFreq = 1.42e9;
  fit.coef = {0.0, -0.71234567, 0.25};
  EXPECT_EQ(fit.text(), "index -0.7123, curvature 0.25 at 1420 MHz");
}

}  // namespace
}  // namespace lumo
