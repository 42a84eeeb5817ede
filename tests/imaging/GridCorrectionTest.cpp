// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/GridCorrection.h"
#include "imaging/Recorders.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;

constexpr double kPiHere = std::numbers::pi;
constexpr double kRadian = kPiHere / 648000;
// Cell of 1000 wavelengths; the first zero of its box's profile lies at 1/1000 rad = 206 arcsec.
constexpr double kCell = 1000;

// A profile value is a mean of 2049 cosines whose arguments are sums of up to 1024 rounded steps.
constexpr double kRounding = 1e-11;

TMinMax symmetricRange(double reach) {
  TMinMax range;
  range.xMin = -reach;
  range.xMax = reach;
  range.yMin = -reach / 2;
  range.yMax = reach / 2;
  return range;
}

AArray<double> profileX(const AB3DFunc& kernel, int count, const TMinMax& range) {
  AArray<double> profile(count);
  EXPECT_EQ(computeCorrectorX(profile, kernel, range, RunIndicators()), 1);
  return profile;
}

TEST(GridCorrectionTest, TheProfileIsOneAtXZero) {
  const APillBox3DFunc box(kCell, kCell);
  const AGauss3DFunc gauss(2 * kCell, kCell);
  const ALorentz3DFunc lorentz(kCell, 3 * kCell);
  const AHat3DFunc hat(kCell, kCell);
  for (const AB3DFunc* kernel : {static_cast<const AB3DFunc*>(&box), static_cast<const AB3DFunc*>(&gauss),
                                 static_cast<const AB3DFunc*>(&lorentz), static_cast<const AB3DFunc*>(&hat)})
    EXPECT_NEAR(profileX(*kernel, 101, symmetricRange(300))[50], 1.0, kRounding);
}

TEST(GridCorrectionTest, ABoxGivesASinc) {
  const APillBox3DFunc box(kCell, kCell);
  const AArray<double> profile = profileX(box, 101, symmetricRange(500));
  for (int j = 0; j < 101; ++j) {
    const double x = (-500 + j * 10) * kRadian;
    // 2047 samples at distance w/2048 are 1 (the upper edge does not belong to the box): a Dirichlet kernel.
    const double half = kPiHere * x * kCell / 2048;
    const double dirichlet = j == 50 ? 1.0 : std::sin(2047 * half) / (2047 * std::sin(half));
    EXPECT_NEAR(profile[j], dirichlet, kRounding) << j;
    const double sinc = j == 50 ? 1.0 : std::sin(kPiHere * x * kCell) / (kPiHere * x * kCell);
    EXPECT_NEAR(profile[j], sinc, 1.0 / 1024) << j;
  }
}

TEST(GridCorrectionTest, AHatGivesASquaredSinc) {
  const AHat3DFunc hat(kCell, kCell);
  const AArray<double> profile = profileX(hat, 101, symmetricRange(500));
  for (int j = 0; j < 101; ++j) {
    if (j == 50) continue;
    // Samples (1 - i/1024) are Fejer's weights.
    const double half = kPiHere * (-500 + j * 10) * kRadian * kCell / 1024;
    const double ratio = std::sin(1024 * half) / (1024 * std::sin(half));
    EXPECT_NEAR(profile[j], ratio * ratio, kRounding) << j;
  }
}

TEST(GridCorrectionTest, AGaussianGivesTheTransformOfTheGaussianCutAtOneWidth) {
  const AGauss3DFunc gauss(kCell, kCell);
  const AArray<double> profile = profileX(gauss, 51, symmetricRange(300));
  for (int j = 0; j < 51; ++j) {
    const double x = (-300 + j * 12) * kRadian;
    // Simpson's rule over -w .. w.
    constexpr int kN = 4000;
    double area = 0;
    double sum = 0;
    for (int i = 0; i <= kN; ++i) {
      const double u = -kCell + 2 * kCell * i / kN;
      const double weight = (i == 0 || i == kN ? 1
                             : i % 2 == 1      ? 4
                                               : 2) *
                            std::exp(-4 * std::numbers::ln2 * u * u / (kCell * kCell));
      area += weight;
      sum += weight * std::cos(2 * kPiHere * u * x);
    }
    // The end samples, 1/16 of the peak, count in full where an integral would halve them: 1/16/1024 of w
    // against an area of w.
    EXPECT_NEAR(profile[j], sum / area, 2.0 / 16 / 1024) << j;
  }
}

TEST(GridCorrectionTest, TheYProfileUsesTheKernelsYSectionAndTheYRange) {
  const APillBox3DFunc box(7 * kCell, 2 * kCell);
  AArray<double> profile(101);
  test::RecordingText text;
  RunIndicators indicators;
  indicators.statusText = &text;
  ASSERT_EQ(computeCorrectorY(profile, box, symmetricRange(500), indicators), 1);
  for (int j = 0; j < 101; ++j) {
    if (j == 50) continue;
    const double half = kPiHere * (-250 + j * 5) * kRadian * 2 * kCell / 2048;
    EXPECT_NEAR(profile[j], std::sin(2047 * half) / (2047 * std::sin(half)), kRounding) << j;
  }
  EXPECT_THAT(text.texts, ElementsAre("Y Corrector...", ""));
}

/// A kernel that reports no support.
class NoSupport : public AB3DFunc {
 public:
  using AB3DFunc::AB3DFunc;
  [[nodiscard]] double halfWidthX() const override { return 0; }
  [[nodiscard]] double halfWidthY() const override { return 0; }
  [[nodiscard]] double value(double x, double y) const override {
    return std::abs(x) <= widthX() / 2 && std::abs(y) <= widthY() / 2 ? 1.0 : 0.0;
  }
};

TEST(GridCorrectionTest, AKernelWithoutSupportIsSampledOverItsWidth) {
  const NoSupport kernel(kCell, 3 * kCell);
  const AArray<double> profile = profileX(kernel, 101, symmetricRange(500));
  for (int j = 0; j < 101; ++j) {
    if (j == 50) continue;
    const double half = kPiHere * (-500 + j * 10) * kRadian * kCell / 2048;
    EXPECT_NEAR(profile[j], std::sin(2049 * half) / (2049 * std::sin(half)), kRounding) << j;
  }
}

TEST(GridCorrectionTest, AnUnboundedKernelGivesAFlatProfile) {
  const AGauss3DFunc unbounded(0, 0);
  const AArray<double> profile = profileX(unbounded, 11, symmetricRange(500));
  for (const double value : profile) EXPECT_NEAR(value, 1.0, kRounding);
}

TEST(GridCorrectionTest, SendsAProgressValueOnlyWhenItsIntegerPercentChanges) {
  const APillBox3DFunc box(kCell, kCell);
  test::RecordingBar bar;
  RunIndicators indicators;
  indicators.readingBar = &bar;
  AArray<double> profile(250);
  ASSERT_EQ(computeCorrectorX(profile, box, symmetricRange(1), indicators), 1);
  ASSERT_EQ(bar.positions.front(), 0);
  ASSERT_EQ(bar.positions.back(), 0);
  std::vector<int> percents(bar.positions.begin() + 1, bar.positions.end() - 1);
  ASSERT_EQ(percents.size(), 101u);
  for (int i = 0; i <= 100; ++i) EXPECT_EQ(percents[static_cast<std::size_t>(i)], i);
}

TEST(GridCorrectionTest, StopsWhenCancelled) {
  const APillBox3DFunc box(kCell, kCell);
  CancelFlag cancel{1};
  RunIndicators indicators;
  indicators.cancel = &cancel;
  AArray<double> profile(10);
  EXPECT_EQ(computeCorrectorX(profile, box, symmetricRange(1), indicators), 0);
  EXPECT_EQ(computeCorrectorY(profile, box, symmetricRange(1), indicators), 0);
}

}  // namespace
}  // namespace lumo
