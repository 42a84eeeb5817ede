// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "imaging/BeamMomentAccumulator.h"

namespace lumo {
namespace {

constexpr double kArcsecPerRadianHere = 648000 / std::numbers::pi;

/// Full width at half maximum in arcseconds of the transform of a Gaussian of spread sigma wavelengths: the
/// transform of exp(-u^2 / 2 sigma^2) is exp(-2 pi^2 sigma^2 l^2).
double beamWidth(double sigma) {
  return std::sqrt(2 * std::numbers::ln2) / (std::numbers::pi * sigma) * kArcsecPerRadianHere;
}

/// Adds a Gaussian coverage, spreads `along` and `across` (wavelengths), the direction of `along` at the
/// angle `degrees` from north (y) through east (x). The spacing of a fifth of the smaller spread makes the
/// moments of the samples those of the Gaussian to far below 1e-12 (Poisson summation: e^(-2 pi^2 25)).
void addCoverage(BeamMomentAccumulator& moments, double along, double across, double degrees,
                 double weight = 1.0) {
  const double angle = degrees * std::numbers::pi / 180;
  const double step = std::min(along, across) / 5;
  const int reach = static_cast<int>(8 * std::max(along, across) / step);
  for (int i = -reach; i <= reach; ++i) {
    for (int j = -reach; j <= reach; ++j) {
      const double x = i * step;
      const double y = j * step;
      const double a = x * std::sin(angle) + y * std::cos(angle);
      const double b = x * std::cos(angle) - y * std::sin(angle);
      moments.add(x, y, weight * std::exp(-0.5 * (a * a / (along * along) + b * b / (across * across))));
    }
  }
}

// The factor between width and spread is a constant that agrees with the closed form to 7e-10.
constexpr double kRelative = 1e-9;

TEST(BeamMomentAccumulatorTest, ARoundGaussianCoverageGivesTheMatchingGaussianBeam) {
  BeamMomentAccumulator moments;
  addCoverage(moments, 1e6, 1e6, 0);
  ASSERT_EQ(moments.solve(), 1);
  const double expected = beamWidth(1e6);
  // Near a round beam the two widths part with the square root of the rounding.
  EXPECT_NEAR(moments.firstWidth(), expected, 1e-6 * expected);
  EXPECT_NEAR(moments.secondWidth(), expected, 1e-6 * expected);
}

TEST(BeamMomentAccumulatorTest, FourPointsAtEqualDistanceAreRoundToTheBit) {
  BeamMomentAccumulator moments;
  for (const double s : {-1.0, 1.0}) {
    moments.add(s * 1000, 0, 2.0);
    moments.add(0, s * 1000, 2.0);
  }
  ASSERT_EQ(moments.solve(), 1);
  EXPECT_EQ(moments.firstWidth(), moments.secondWidth());
  EXPECT_NEAR(moments.firstWidth(), beamWidth(1000 / std::sqrt(2.0)), kRelative * moments.firstWidth());
}

TEST(BeamMomentAccumulatorTest, ACoverageLongToTheNorthGivesABeamLongToTheEast) {
  BeamMomentAccumulator moments;
  addCoverage(moments, 3e5, 1e5, 0);
  ASSERT_EQ(moments.solve(), 1);
  EXPECT_NEAR(moments.firstWidth(), beamWidth(1e5), kRelative * beamWidth(1e5));
  EXPECT_NEAR(moments.secondWidth(), beamWidth(3e5), kRelative * beamWidth(3e5));
  EXPECT_NEAR(std::abs(moments.positionAngle()), 90.0, 1e-6);
}

TEST(BeamMomentAccumulatorTest, ACoverageLongToTheEastGivesABeamLongToTheNorth) {
  BeamMomentAccumulator moments;
  addCoverage(moments, 3e5, 1e5, 90);
  ASSERT_EQ(moments.solve(), 1);
  EXPECT_NEAR(moments.positionAngle(), 0.0, 1e-6);
}

TEST(BeamMomentAccumulatorTest, TheBeamLiesAcrossTheCoverageNorthThroughEast) {
  for (const double coverage : {-75.0, -45.0, -20.0, 10.0, 30.0, 45.0, 80.0}) {
    BeamMomentAccumulator moments;
    addCoverage(moments, 2.5e5, 1e5, coverage);
    ASSERT_EQ(moments.solve(), 1);
    const double expected = coverage > 0 ? coverage - 90 : coverage + 90;
    EXPECT_NEAR(moments.positionAngle(), expected, 1e-6) << coverage;
    EXPECT_NEAR(moments.firstWidth(), beamWidth(1e5), kRelative * beamWidth(1e5)) << coverage;
    EXPECT_NEAR(moments.secondWidth(), beamWidth(2.5e5), kRelative * beamWidth(2.5e5)) << coverage;
  }
}

TEST(BeamMomentAccumulatorTest, TheCommonFactorOfTheWeightsDoesNotMatter) {
  BeamMomentAccumulator one;
  BeamMomentAccumulator many;
  addCoverage(one, 2e5, 1e5, 30);
  addCoverage(many, 2e5, 1e5, 30, 1e6);
  ASSERT_EQ(one.solve(), 1);
  ASSERT_EQ(many.solve(), 1);
  EXPECT_NEAR(many.firstWidth(), one.firstWidth(), kRelative * one.firstWidth());
  EXPECT_NEAR(many.positionAngle(), one.positionAngle(), 1e-6);
}

TEST(BeamMomentAccumulatorTest, MomentsAreTakenAboutTheMean) {
  BeamMomentAccumulator moments;
  for (const double x : {-1.0, 1.0})
    for (const double y : {-2.0, 2.0}) moments.add(100 + x, -50 + y, 1.0);
  ASSERT_EQ(moments.solve(), 1);
  // Variances 1 and 4.
  EXPECT_NEAR(moments.firstWidth(), beamWidth(1), kRelative * beamWidth(1));
  EXPECT_NEAR(moments.secondWidth(), beamWidth(2), kRelative * beamWidth(2));
}

TEST(BeamMomentAccumulatorTest, NoDataGiveNoBeam) {
  BeamMomentAccumulator moments;
  EXPECT_EQ(moments.solve(), 0);
  EXPECT_EQ(moments.sumOfWeights(), 0);
  moments.add(1e5, 2e5, 0.0);
  EXPECT_EQ(moments.solve(), 0);
}

TEST(BeamMomentAccumulatorTest, ACoverageWithoutExtentInUOrInVGivesNoBeam) {
  BeamMomentAccumulator alongV;
  BeamMomentAccumulator alongU;
  for (int i = -5; i <= 5; ++i) {
    alongV.add(0, i * 1e4, 1.0);
    alongU.add(i * 1e4, 0, 1.0);
  }
  EXPECT_EQ(alongV.solve(), 0);
  EXPECT_EQ(alongU.solve(), 0);
}

TEST(BeamMomentAccumulatorTest, ACoverageOnOneSlantedLineGivesNoBeamOrOneWithoutEndAcrossIt) {
  for (int i = 1; i < 200; ++i) {
    const double slope = 0.0137 * i * (i % 2 == 0 ? 1 : -1);
    BeamMomentAccumulator moments;
    for (int point = -5; point <= 5; ++point) moments.add(point * 1e4, point * 1e4 * slope, 1.0);
    // Rounding decides whether the correlation comes out as 1: otherwise 1 - rho^2 is about 2^-52.
    if (moments.solve() == 0) continue;
    EXPECT_GT(moments.firstWidth(), 1e5 * moments.secondWidth()) << slope;
  }
}

}  // namespace
}  // namespace lumo
