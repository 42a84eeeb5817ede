// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "numerics/SeriesBasis.h"

namespace lumo {
namespace {

constexpr float kUntouched = -77.0F;

TEST(SeriesBasisTest, PowersAreFormedOneFromTheOther) {
  std::array<float, 5> out{};
  powerBasis(out.data(), 5, -3.0F);
  EXPECT_EQ(out, (std::array{1.0F, -3.0F, 9.0F, -27.0F, 81.0F}));
  const float t = 0.1F;
  const float square = t * t;
  const float cube = square * t;
  powerBasis(out.data(), 4, t);
  EXPECT_EQ(out[2], square);
  EXPECT_EQ(out[3], cube);
}

TEST(SeriesBasisTest, ChebyshevPolynomialsAtOneHalf) {
  std::array<float, 6> out{};
  chebyshevBasis(out.data(), 6, 0.5F);
  EXPECT_EQ(out, (std::array{1.0F, 0.5F, -0.5F, -1.0F, -0.5F, 0.5F}));
}

TEST(SeriesBasisTest, ChebyshevPolynomialsAreCosinesOfMultiples) {
  for (const double angle : {0.1, 1.0, 2.2, 3.0}) {
    const auto t = static_cast<float>(std::cos(angle));
    std::array<float, 8> out{};
    chebyshevBasis(out.data(), 8, t);
    // The recurrence multiplies a rounding by up to k^2.
    for (int k = 0; k < 8; ++k)
      EXPECT_NEAR(out[static_cast<std::size_t>(k)], std::cos(k * std::acos(static_cast<double>(t))),
                  64 * 6e-8);
  }
}

TEST(SeriesBasisTest, ChebyshevPolynomialsAreOrthogonalOverTheirNodes) {
  constexpr int kNodes = 16;
  std::array<std::array<double, 6>, 6> products{};
  for (int i = 0; i < kNodes; ++i) {
    std::array<float, 6> out{};
    chebyshevBasis(out.data(), 6, static_cast<float>(std::cos(std::numbers::pi * (i + 0.5) / kNodes)));
    for (std::size_t j = 0; j < 6; ++j)
      for (std::size_t k = 0; k < 6; ++k) products[j][k] += static_cast<double>(out[j]) * out[k];
  }
  for (std::size_t j = 0; j < 6; ++j)
    for (std::size_t k = 0; k < 6; ++k)
      EXPECT_NEAR(products[j][k], j != k ? 0.0 : j == 0 ? kNodes : kNodes / 2.0, 1e-4) << j << ", " << k;
}

TEST(SeriesBasisTest, TrigonometricBasisIsOneThenSineBeforeCosineOfEachMultiple) {
  std::array<float, 6> out{};
  const float t = 0.4F;
  trigonometricBasis(out.data(), 6, t);
  EXPECT_EQ(out[0], 1.0F);
  const double angle = t;
  EXPECT_FLOAT_EQ(out[1], static_cast<float>(std::sin(angle)));
  EXPECT_FLOAT_EQ(out[2], static_cast<float>(std::cos(angle)));
  EXPECT_FLOAT_EQ(out[3], static_cast<float>(2.0 * std::sin(angle) * std::cos(angle)));
  EXPECT_FLOAT_EQ(out[4], static_cast<float>(1.0 - 2.0 * std::sin(angle) * std::sin(angle)));
  EXPECT_FLOAT_EQ(out[5], static_cast<float>(std::sin(angle) * (3.0 - 4.0 * std::pow(std::sin(angle), 2))));
}

TEST(SeriesBasisTest, TrigonometricBasisIsOrthogonalOverAPeriod) {
  constexpr int kPoints = 16;
  std::array<std::array<double, 7>, 7> products{};
  for (int i = 0; i < kPoints; ++i) {
    std::array<float, 7> out{};
    trigonometricBasis(out.data(), 7, static_cast<float>(2.0 * std::numbers::pi * i / kPoints));
    for (std::size_t j = 0; j < 7; ++j)
      for (std::size_t k = 0; k < 7; ++k) products[j][k] += static_cast<double>(out[j]) * out[k];
  }
  // Rounded angles are off by up to 2.4e-7, three times that in the third multiple, in 16 products.
  for (std::size_t j = 0; j < 7; ++j)
    for (std::size_t k = 0; k < 7; ++k)
      EXPECT_NEAR(products[j][k], j != k ? 0.0 : j == 0 ? kPoints : kPoints / 2.0, 3e-5) << j << ", " << k;
}

TEST(SeriesBasisTest, NothingIsWrittenBeyondTheTermsAskedFor) {
  for (auto* const basis : {powerBasis, chebyshevBasis, trigonometricBasis})
    for (int n = 0; n < 4; ++n) {
      std::array<float, 4> out{};
      out.fill(kUntouched);
      basis(out.data(), n, 0.25F);
      for (int k = 0; k < 4; ++k) EXPECT_EQ(out[static_cast<std::size_t>(k)] == kUntouched, k >= n) << n;
    }
}

TEST(SeriesBasisTest, ChebyshevScalingMapsTheExtremesOntoMinusOneAndOne) {
  const std::array<float, 5> x{-900.0F, 6.0F, 2.0F, 10.0F, 900.0F};
  const ArgumentScaling scaling = chebyshevScaling(x.data(), 1, 3);
  EXPECT_EQ(scaling.scale, 0.25F);
  EXPECT_EQ(scaling.offset, -1.5F);
  EXPECT_EQ(2.0F * scaling.scale + scaling.offset, -1.0F);
  EXPECT_EQ(10.0F * scaling.scale + scaling.offset, 1.0F);
}

}  // namespace
}  // namespace lumo
