// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "imaging/Fft.h"
#include "imaging/FourierTransform.h"
#include "imaging/Recorders.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;
using Grid = AMatrix<Complex>;
using Image = AMatrix<double>;

Grid randomGrid(std::uint32_t rows, std::uint32_t nx) {
  std::mt19937_64 engine(rows * 10007 + nx);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Grid grid(rows, nx + 1);
  for (std::size_t i = 0; i < grid.size(); ++i) grid.data()[i] = Complex(uniform(engine), uniform(engine));
  return grid;
}

std::uint32_t ruleLength(std::uint32_t n) {
  return 1u << static_cast<int>(std::log(static_cast<double>(n)) * 1.4426950408889634);
}

/// The whole operation from the plain passes, step by step.
Image plainImage(Grid grid, const TransformSettings& settings) {
  const std::uint32_t rows = grid.rows();
  const std::uint32_t columns = grid.columns();
  for (std::uint32_t r = 0; r < rows / 2; ++r)
    for (std::uint32_t c = 0; c < columns; ++c) std::swap(grid(r, c), grid(r + rows / 2, c));
  std::vector<Complex> scratch(rows);
  for (std::uint32_t c = 0; c < columns; ++c) {
    for (std::uint32_t r = 0; r < rows; ++r) scratch[r] = grid(r, c);
    Fft1D(scratch.data(), rows, settings.direction, settings.columnScale);
    for (std::uint32_t r = 0; r < rows; ++r) grid(r, c) = scratch[r];
  }
  for (std::uint32_t r = 0; r < rows; ++r) {
    PackHermitianRow(&grid(r, 0), columns - 1, settings.direction);
    Fft1D(&grid(r, 0), columns - 1, settings.direction, settings.rowScale);
  }
  Image image(rows, 2 * columns);
  for (std::uint32_t r = 0; r < rows; ++r) {
    for (std::uint32_t c = 0; c < columns; ++c) {
      image(r, 2 * c) = grid(r, c).real();
      image(r, 2 * c + 1) = grid(r, c).imag();
    }
  }
  const std::uint32_t halfR = ruleLength(rows) / 2;
  const std::uint32_t halfC = ruleLength(2 * columns) / 2;
  for (std::uint32_t r = 0; r < halfR; ++r) {
    for (std::uint32_t c = 0; c < halfC; ++c) {
      std::swap(image(r, c), image(r + halfR, c + halfC));
      std::swap(image(r + halfR, c), image(r, c + halfC));
    }
  }
  return image;
}

Image transformed(Grid grid, const TransformSettings& settings = {}) {
  Image image;
  EXPECT_EQ(fourierTransformGrid(grid, image, settings, RunIndicators()), 1);
  EXPECT_EQ(grid.size(), 0u);
  return image;
}

double largest(const Image& image) {
  double value = 0;
  for (std::size_t i = 0; i < image.size(); ++i) value = std::max(value, std::abs(image.data()[i]));
  return value;
}

double largestDifference(const Image& a, const Image& b) {
  EXPECT_EQ(a.rows(), b.rows());
  EXPECT_EQ(a.columns(), b.columns());
  double value = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    value = std::max(value, std::abs(a.data()[i] - b.data()[i]));
  return value;
}

struct Size {
  std::uint32_t rows, nx;
};

class FourierTransformSizeTest : public ::testing::TestWithParam<Size> {};

TEST_P(FourierTransformSizeTest, AgreesWithThePlainPasses) {
  const auto [rows, nx] = GetParam();
  const Grid grid = randomGrid(rows, nx);
  const Image expected = plainImage(grid, {});
  // What the declaration promises for each of the two passes.
  const double tolerance = (8 + rows + 8 + nx) * 2.2e-16 * largest(expected);
  EXPECT_LE(largestDifference(transformed(grid), expected), tolerance);
}

TEST_P(FourierTransformSizeTest, IsTheSameToTheBitWhenRepeated) {
  const auto [rows, nx] = GetParam();
  const Image first = transformed(randomGrid(rows, nx));
  const Image second = transformed(randomGrid(rows, nx));
  EXPECT_EQ(std::memcmp(first.data(), second.data(), first.size() * sizeof(double)), 0);
}

TEST_P(FourierTransformSizeTest, IsTheSameToTheBitForAnyNumberOfThreadsAndWithPlansAndImageKept) {
  const auto [rows, nx] = GetParam();
  const Image expected = transformed(randomGrid(rows, nx));
  for (const int threads : {1, 2, 3, 8}) {
    ThreadTeam team(threads);
    GridTransform transform({}, team);
    Image image;
    for (int repeat = 0; repeat < 2; ++repeat) {
      Grid grid = randomGrid(rows, nx);
      ASSERT_EQ(transform.run(grid, image, RunIndicators()), 1);
      ASSERT_EQ(image.size(), expected.size());
      EXPECT_EQ(std::memcmp(image.data(), expected.data(), image.size() * sizeof(double)), 0) << threads;
    }
  }
}

TEST(FourierTransformTest, OneTransformServesGridsOfDifferentSizes) {
  ThreadTeam team(2);
  GridTransform transform({}, team);
  Image image;
  for (const Size& size : {Size{16, 32}, Size{32, 16}, Size{16, 32}}) {
    Grid grid = randomGrid(size.rows, size.nx);
    ASSERT_EQ(transform.run(grid, image, RunIndicators()), 1);
    const Image expected = transformed(randomGrid(size.rows, size.nx));
    ASSERT_EQ(image.rows(), expected.rows());
    EXPECT_EQ(std::memcmp(image.data(), expected.data(), image.size() * sizeof(double)), 0);
  }
}

TEST(FourierTransformTest, StopsOnSeveralThreadsWhenCancelled) {
  ThreadTeam team(3);
  GridTransform transform({}, team);
  CancelFlag cancel{1};
  RunIndicators indicators;
  indicators.cancel = &cancel;
  Grid grid = randomGrid(256, 256);
  Image image;
  EXPECT_EQ(transform.run(grid, image, indicators), 0);
  EXPECT_EQ(image.size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(UsableAndRefused, FourierTransformSizeTest,
                         ::testing::Values(Size{2, 2}, Size{2, 16}, Size{4, 2}, Size{4, 4}, Size{16, 4},
                                           Size{16, 16}, Size{32, 256}, Size{512, 32}, Size{256, 1024},
                                           Size{8, 16}, Size{128, 16}, Size{16, 8}, Size{16, 64},
                                           Size{128, 64}, Size{128, 128}, Size{2048, 2}),
                         [](const auto& size) {
                           return std::to_string(size.param.rows) + "x" + std::to_string(size.param.nx);
                         });

TEST(FourierTransformTest, ScalesAndDirectionAgreeWithThePlainPasses) {
  const Grid grid = randomGrid(16, 32);
  for (const TransformSettings& settings :
       {TransformSettings{-1, 3.0, 0.5}, TransformSettings{1, 1.0, 1.0}, TransformSettings{1, 0.25, 7.0}}) {
    const Image expected = plainImage(grid, settings);
    EXPECT_LE(largestDifference(transformed(grid, settings), expected), 9e-15 * largest(expected));
  }
}

/// Pixel (r, c) as a direct sum over the grid and its Hermitian extension along u, negative exponents, the
/// origin at (rows/2, Nx) of the image. The columns u = 0 and u = Nx du enter with the rules for their
/// imaginary parts.
double directPixel(const Grid& grid, int r, int c) {
  const int rows = static_cast<int>(grid.rows());
  const int nx = static_cast<int>(grid.columns()) - 1;
  const int y = r - rows / 2;
  const int x = c - nx;
  double sum = 0;
  for (int k = 0; k <= nx; ++k) {
    std::complex<long double> column = 0;
    for (int s = 0; s < rows; ++s) {
      const int fromMiddle = s - rows / 2;
      const long double angle =
          -2 * std::numbers::pi_v<long double> * fromMiddle * y / static_cast<long double>(rows);
      column +=
          std::complex<long double>(grid(static_cast<std::uint32_t>(s), static_cast<std::uint32_t>(k))) *
          std::complex<long double>(std::cos(angle), std::sin(angle));
    }
    const long double angle = -std::numbers::pi_v<long double> * k * x / static_cast<long double>(nx);
    const double sign = x % 2 == 0 ? 1.0 : -1.0;
    const auto re = static_cast<double>(column.real());
    const auto im = static_cast<double>(column.imag());
    if (k == 0)
      sum += re - sign * im;
    else if (k == nx)
      sum += sign * re - im;
    else
      sum += 2 * static_cast<double>(column.real() * std::cos(angle) - column.imag() * std::sin(angle));
  }
  return sum;
}

TEST(FourierTransformTest, IsTheDirectFourierSumOfTheHermitianGridWithTheOriginInTheCentre) {
  for (const Size& size : {Size{4, 4}, Size{16, 4}, Size{4, 16}, Size{32, 16}, Size{2, 2}}) {
    const Grid grid = randomGrid(size.rows, size.nx);
    const Image image = transformed(grid);
    ASSERT_EQ(image.rows(), size.rows);
    ASSERT_EQ(image.columns(), 2 * size.nx + 2);
    // At most 32 x 34 terms of at most sqrt 2, each rounded a few times.
    const double tolerance = 1e-14 * size.rows * size.nx;
    for (std::uint32_t r = 0; r < size.rows; ++r)
      for (std::uint32_t c = 0; c < 2 * size.nx; ++c)
        ASSERT_NEAR(image(r, c), directPixel(grid, static_cast<int>(r), static_cast<int>(c)), tolerance)
            << size.rows << " x " << size.nx << " at " << r << ", " << c;
  }
}

TEST(FourierTransformTest, APhaseRampThatGrowsWithUAndVPutsThePeakToTheUpperRight) {
  // V = e^(+2 pi i (u l + v m)) of a source 5 pixels to the east and 3 to the north.
  constexpr int kNx = 16;
  constexpr int kRows = 32;
  constexpr int kMiddle = kRows / 2;
  Grid grid(kRows, kNx + 1);
  for (int s = 0; s < kRows; ++s)
    for (int k = 0; k < kNx; ++k)
      grid(static_cast<std::uint32_t>(s), static_cast<std::uint32_t>(k)) =
          std::polar(1.0, 2 * std::numbers::pi * (5.0 * k / (2 * kNx) + 3.0 * (s - kMiddle) / kRows));
  const Image image = transformed(grid);
  std::uint32_t bestRow = 0;
  std::uint32_t bestColumn = 0;
  for (std::uint32_t r = 0; r < kRows; ++r) {
    for (std::uint32_t c = 0; c < 2 * kNx; ++c) {
      if (image(r, c) <= image(bestRow, bestColumn)) continue;
      bestRow = r;
      bestColumn = c;
    }
  }
  EXPECT_EQ(bestRow, kRows / 2 + 3u);
  EXPECT_EQ(bestColumn, kNx + 5u);
}

TEST(FourierTransformTest, WithTwoRowsTheHalvesAreSwappedAndColumnsAreTransformedWithLengthTwo) {
  // A lone 1 at v = 0, u = 0: every pixel 1. At v = -Vmax: the rows alternate in sign around the centre row.
  Grid atZero(2, 5);
  atZero(1, 0) = 1.0;
  const Image flat = transformed(atZero);
  Grid atLow(2, 5);
  atLow(0, 0) = 1.0;
  const Image alternating = transformed(atLow);
  for (std::uint32_t c = 0; c < 8; ++c) {
    EXPECT_NEAR(flat(0, c), 1.0, 1e-15);
    EXPECT_NEAR(flat(1, c), 1.0, 1e-15);
    EXPECT_NEAR(alternating(0, c), -1.0, 1e-15);
    EXPECT_NEAR(alternating(1, c), 1.0, 1e-15);
  }
}

TEST(FourierTransformTest, ARefusedRowCountLeavesTheColumnsUntransformedAndSwapsQuadrantsWithTheShorterR) {
  constexpr std::uint32_t kRows = 128;
  constexpr std::uint32_t kNx = 4;
  Grid grid(kRows, kNx + 1);
  for (std::uint32_t r = 0; r < kRows; ++r) grid(r, 0) = r + 1.0;
  const Image image = transformed(grid);
  // Each row is flat with its own value; the row halves were swapped, then the quadrants of the first 64
  // rows.
  for (std::uint32_t r = 0; r < kRows; ++r) {
    const std::uint32_t beforeQuadrants = r < 32 ? r + 32 : r < 64 ? r - 32 : r;
    const double expected = (beforeQuadrants + 64) % 128 + 1.0;
    for (std::uint32_t c = 0; c < 2 * kNx; ++c) ASSERT_NEAR(image(r, c), expected, 1e-13) << r;
  }
}

TEST(FourierTransformTest, ARefusedColumnCountLeavesThePackedRowsUntransformed) {
  constexpr std::uint32_t kNx = 64;
  Grid grid(2, kNx + 1);
  grid(1, 5) = Complex(0.5, -2.0);
  const Image image = transformed(grid);
  std::vector<Complex> packed(kNx + 1);
  packed[5] = Complex(0.5, -2.0);
  PackHermitianRow(packed.data(), kNx, -1);
  // Both rows hold v = 0's packed row; image columns 130 give C = 128 and the swap moves them by 64 columns.
  for (std::uint32_t c = 0; c < 128; ++c) {
    const Complex cell = packed[((c + 64) % 128) / 2];
    const double expected = c % 2 == 0 ? cell.real() : cell.imag();
    ASSERT_EQ(image(0, c), expected) << c;
    ASSERT_EQ(image(1, c), expected) << c;
  }
}

TEST(FourierTransformTest, WithBothLengthsRefusedIsThePlainResultToTheBit) {
  const Grid grid = randomGrid(128, 64);
  const Image expected = plainImage(grid, {});
  const Image image = transformed(grid);
  ASSERT_EQ(image.size(), expected.size());
  EXPECT_EQ(std::memcmp(image.data(), expected.data(), image.size() * sizeof(double)), 0);
}

TEST(FourierTransformTest, SendsAProgressValueOnlyWhenItsIntegerPercentChanges) {
  for (const Size& size : {Size{4, 2}, Size{512, 256}}) {
    test::RecordingBar bar;
    RunIndicators indicators;
    indicators.readingBar = &bar;
    Grid grid = randomGrid(size.rows, size.nx);
    const double range = grid.columns() + grid.rows();
    Image image;
    ASSERT_EQ(fourierTransformGrid(grid, image, {}, indicators), 1);
    std::vector<int> expected = {0};
    int last = -1;
    for (int step = 1; step <= static_cast<int>(range); ++step) {
      const int percent = static_cast<int>(std::lround(step / range * 100));
      if (percent != last) expected.push_back(percent);
      last = percent;
    }
    expected.push_back(0);
    EXPECT_EQ(bar.positions, expected);
  }
}

TEST(FourierTransformTest, ShowsItsTextAndClearsIt) {
  test::RecordingText text;
  RunIndicators indicators;
  indicators.statusText = &text;
  Grid grid = randomGrid(4, 4);
  Image image;
  ASSERT_EQ(fourierTransformGrid(grid, image, {}, indicators), 1);
  EXPECT_THAT(text.texts, ElementsAre("Fast Fourier Transform...", ""));
}

TEST(FourierTransformTest, StopsInTheColumnPassAndInTheRowPassWhenCancelled) {
  for (const int stopAt : {1, 20, 90}) {
    CancelFlag cancel{0};
    test::RecordingBar bar;
    bar.onPos = [&](int percent) {
      if (percent >= stopAt) cancel = 1;
    };
    RunIndicators indicators;
    indicators.cancel = &cancel;
    indicators.readingBar = &bar;
    Grid grid = randomGrid(256, 256);
    Image image;
    EXPECT_EQ(fourierTransformGrid(grid, image, {}, indicators), 0);
    EXPECT_EQ(bar.positions.back(), stopAt);
  }
}

}  // namespace
}  // namespace lumo
