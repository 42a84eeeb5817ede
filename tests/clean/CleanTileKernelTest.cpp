// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clean/CleanTileKernel.h"
#include "clean/CleanTrace.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

constexpr std::size_t kWidth = 203;  // whole vectors of every instruction set, and some pixels more
constexpr std::size_t kBeamWidth = 3 * kWidth;

/// One row of maps and beams of two terms, and the steps to subtract from it.
struct Row {
  std::vector<float> maps[2] = {std::vector<float>(kWidth), std::vector<float>(kWidth)};
  std::vector<float> beams[3] = {std::vector<float>(kBeamWidth), std::vector<float>(kBeamWidth),
                                 std::vector<float>(kBeamWidth)};
  std::vector<CleanUpdate> steps;

  [[nodiscard]] double smallestBeam() const {
    double smallest = std::numeric_limits<double>::infinity();
    for (const std::vector<float>& beam : beams)
      for (const float value : beam)
        if (value != 0.0F) smallest = std::min(smallest, std::fabs(static_cast<double>(value)));
    return smallest;
  }
  [[nodiscard]] float beam(std::size_t m, std::size_t pixel, const CleanUpdate& step) const {
    return beams[m][(kBeamWidth / 2 + pixel - step.column) % kBeamWidth];
  }
};

void subtractWithKernel(Row& row, double smallestBeam) {
  CleanTileMaps maps;
  maps.terms = 2;
  for (int k = 0; k < 2; ++k) maps.maps[k] = row.maps[k].data();
  for (int m = 0; m < 3; ++m) maps.beams[m] = row.beams[m].data();
  maps.smallestBeam = smallestBeam;
  maps.mapColumns = kWidth;
  maps.beamRows = 1;
  maps.beamColumns = kBeamWidth;
  subtractExactly(maps, {0, 1, 0, static_cast<std::uint32_t>(kWidth)}, row.steps.data(), row.steps.size());
}

/// What the differences were, of which the kernel must make the right floats.
struct Differences {
  std::size_t halfWay = 0;        ///< exactly between two floats
  std::size_t tiny = 0;           ///< not 0, and smaller than any float of 24 bits
  std::size_t negativeZeros = 0;  ///< results
  double smallest = std::numeric_limits<double>::infinity();  ///< that is not 0
};

Differences subtractPlainly(Row& row) {
  Differences seen;
  for (const CleanUpdate& step : row.steps)
    for (std::size_t j = 0; j < 2; ++j)
      for (std::size_t k = 0; k < 2; ++k)
        for (std::size_t pixel = 0; pixel < kWidth; ++pixel) {
          float& residual = row.maps[k][pixel];
          const double value = static_cast<double>(residual) -
                               static_cast<double>(row.beam(j + k, pixel, step)) * step.increments[j];
          residual = static_cast<float>(value);
          const double size = std::fabs(value);
          const double low =
              std::ldexp(std::floor(std::ldexp(size, 23 - std::ilogb(size))), std::ilogb(size) - 23);
          if (size >= 0x1p-126 && size - low == std::ldexp(1.0, std::ilogb(size) - 24)) ++seen.halfWay;
          if (size > 0.0 && size < 0x1p-126) ++seen.tiny;
          if (residual == 0.0F && std::signbit(residual)) ++seen.negativeZeros;
          if (size > 0.0) seen.smallest = std::min(seen.smallest, size);
        }
  return seen;
}

/// Whether the kernel gives the plain loop's bits, with every instruction set.
void expectPlainBits(const Row& row, double smallestBeam) {
  Row plain = row;
  static_cast<void>(subtractPlainly(plain));
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const test::TargetGuard guard(target);
    Row fast = row;
    subtractWithKernel(fast, smallestBeam);
    for (std::size_t k = 0; k < 2; ++k)
      EXPECT_EQ(std::memcmp(fast.maps[k].data(), plain.maps[k].data(), sizeof(float) * kWidth), 0)
          << hwy::TargetName(target) << ", map " << k;
  }
}

/// Steps at different columns, with these increments.
std::vector<CleanUpdate> stepsOf(const std::vector<double>& increments) {
  std::vector<CleanUpdate> steps(increments.size());
  for (std::size_t p = 0; p < steps.size(); ++p) {
    steps[p].column = static_cast<std::uint32_t>(17 * p % kWidth);
    steps[p].increments[0] = increments[p];
    steps[p].increments[1] = -0.5 * increments[p];
  }
  return steps;
}

TEST(CleanTileKernelTest, RoundsDifferencesOfAnySizeAsThePlainLoop) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::uniform_int_distribution<int> power(-24, 24);
  Row row;
  for (std::vector<float>& map : row.maps)
    for (float& pixel : map) pixel = static_cast<float>(std::ldexp(value(random), power(random)));
  for (std::vector<float>& beam : row.beams)
    for (float& pixel : beam) pixel = static_cast<float>(std::ldexp(value(random), power(random)));
  std::vector<double> increments;
  for (int p = 0; p < 40; ++p) increments.push_back(std::ldexp(value(random), power(random)));
  row.steps = stepsOf(increments);
  expectPlainBits(row, row.smallestBeam());
  expectPlainBits(row, 0.0);
}

TEST(CleanTileKernelTest, DifferencesHalfWayBetweenTwoFloatsGoToTheEvenOne) {
  std::mt19937 random(4);
  std::uniform_int_distribution<int> whole(1 << 23, (1 << 24) - 1);
  std::uniform_int_distribution<int> odd(0, 9);
  Row row;
  for (std::vector<float>& map : row.maps)
    for (float& pixel : map) pixel = static_cast<float>(whole(random) * (odd(random) < 5 ? -1 : 1));
  for (std::vector<float>& beam : row.beams)
    for (float& pixel : beam) pixel = static_cast<float>(2 * odd(random) + 1);
  row.steps = stepsOf({0.5, -0.5, 1.5, 0.25, 0.5, 2.5, -1.0});
  Row counted = row;
  ASSERT_GT(subtractPlainly(counted).halfWay, 500u);
  expectPlainBits(row, row.smallestBeam());
}

TEST(CleanTileKernelTest, ZerosKeepTheirSigns) {
  for (const float beam : {0.0F, -0.0F}) {
    Row row;
    for (std::vector<float>& map : row.maps)
      for (std::size_t pixel = 0; pixel < kWidth; ++pixel) map[pixel] = pixel % 2 == 0 ? 0.0F : -0.0F;
    for (std::vector<float>& values : row.beams)
      for (std::size_t pixel = 0; pixel < kBeamWidth; ++pixel) values[pixel] = pixel % 50 == 0 ? 0.5F : beam;
    row.steps = stepsOf({0.5});
    row.steps[0].increments[1] = 0.25;
    Row counted = row;
    const std::size_t negative = subtractPlainly(counted).negativeZeros;
    ASSERT_TRUE(beam == 0.0F && std::signbit(beam) ? negative == 0 : negative > kWidth) << negative;
    expectPlainBits(row, row.smallestBeam());
  }
}

TEST(CleanTileKernelTest, ValuesTooSmallForAllBitsOfAFloatAreRoundedToTheBitsLeft) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  Row row;
  for (std::vector<float>& map : row.maps)
    for (float& pixel : map) pixel = static_cast<float>(1e-38 * value(random));
  for (std::vector<float>& beam : row.beams)
    for (float& pixel : beam) pixel = static_cast<float>(1e-20 * value(random));
  row.steps = stepsOf({1e-18, 3e-19, 1e-23, 1e-30, 7e-18});
  Row counted = row;
  ASSERT_GT(subtractPlainly(counted).tiny, 1000u);
  expectPlainBits(row, row.smallestBeam());
}

TEST(CleanTileKernelTest, ProductsOfAllSizesThatCancelAreRoundedAsInThePlainLoop) {
  // Every residual is the float next to its product, so what is left are the last bits of the product, from
  // sizes of which a float has 24 bits down to those of which it has none.
  std::mt19937 random(6);
  std::uniform_real_distribution<double> value(0.5, 1.0);
  double smallest = 1.0;
  for (int power = -60; power >= -140; --power) {
    Row row;
    for (std::vector<float>& beam : row.beams)
      for (float& pixel : beam) pixel = static_cast<float>(value(random));
    row.steps = stepsOf({std::ldexp(value(random), power)});
    row.steps[0].increments[1] = 0.0;
    for (std::size_t k = 0; k < 2; ++k)
      for (std::size_t pixel = 0; pixel < kWidth; ++pixel)
        row.maps[k][pixel] = static_cast<float>(static_cast<double>(row.beam(k, pixel, row.steps[0])) *
                                                row.steps[0].increments[0]);
    Row counted = row;
    smallest = std::min(smallest, subtractPlainly(counted).smallest);
    SCOPED_TRACE("products of 2^" + std::to_string(power));
    expectPlainBits(row, row.smallestBeam());
  }
  EXPECT_LT(smallest, 0x1p-149);
}

}  // namespace
}  // namespace lumo
