// SPDX-License-Identifier: GPL-3.0-or-later
// The error map of the spectral index against the scatter of the index over seeds of the noise.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>
#include <vector>

#include "RunSample.h"
#include "clean/HeadlessCleanWatcher.h"
#include "core/Units.h"
#include "io/MapProduct.h"
#include "run/RunDriver.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

constexpr int kColumns = 256;
constexpr int kRows = 256;
constexpr int kPoints = 3000;                       // a band
constexpr double kLargestUv = 0x1p-17;              // seconds
constexpr double kBandsHz[] = {1.0e9, 1.5e9, 2e9};  // the first is the reference frequency
constexpr std::uint32_t kSeeds = 60;

// Flux density S (1 + index f), f = nu/nu0 - 1: two terms hold it without remainder.
struct Source {
  int east, north;  // pixels
  double flux, index;
};
// The index decides whether the covariance of the terms adds to its error or takes from it.
constexpr double kRising = 1.5, kFalling = -0.9;
constexpr Source kSources[] = {{0, 0, 1.4, kRising},    {19, 8, 1.5, kFalling}, {-8, 20, 1.6, kRising},
                               {-21, 3, 1.5, kFalling}, {9, -19, 1.5, kRising}, {-12, -16, 1.6, kFalling},
                               {22, -9, 1.6, kRising},  {10, 23, 1.4, kFalling}};

/// What the runs found at the pixel of one source, a value per seed.
struct Found {
  std::vector<double> flux, index, error;
};

double mean(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

double scatter(const std::vector<double>& values) {
  const double centre = mean(values);
  double sum = 0;
  for (const double value : values) sum += (value - centre) * (value - centre);
  return std::sqrt(sum / static_cast<double>(values.size() - 1));
}

class SpectralIndexScatterTest : public testing::Test {
 protected:
  SpectralIndexScatterTest() {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> inside(-kLargestUv, kLargestUv);
    sample_.selections.clear();
    int id = 0;
    for (const double frequency : kBandsHz) sample_.selections.push_back({++id, {frequency}});
    sample_.points = {{kLargestUv, 0}, {0, kLargestUv}};
    while (sample_.points.size() < kPoints) {
      const test::UvxSample::Point point{inside(random), inside(random)};
      if (std::hypot(point.u, point.v) < kLargestUv) sample_.points.push_back(point);
    }
    parameters_.referenceMhz = kBandsHz[0] / kMegahertz;
    // Down to the noise: a CLEAN that goes on takes the noise out of the residual (docs/accuracy.md).
    parameters_.iterations = 500;
    parameters_.folder = folder_.path();
    parameters_.indexError = true;
  }

  /// `noise`: standard deviation of real and imaginary part in each band. All weights are 1.
  void observe(std::uint32_t seed, const double (&noise)[3]) {
    const double pixel = 1.0 / (2 * ABMakeParameters::kDefaultUvLimit * kLargestUv * kBandsHz[2]);
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    sample_.visibility = [&](double u, double v, double frequency) {
      std::complex<double> sum;
      for (const Source& source : kSources)
        sum += std::polar(source.flux * (1 + source.index * (frequency / kBandsHz[0] - 1)),
                          2 * std::numbers::pi * (u * source.east + v * source.north) * pixel);
      const double sigma = frequency == kBandsHz[0]   ? noise[0]
                           : frequency == kBandsHz[1] ? noise[1]
                                                      : noise[2];
      const double real = normal(random);
      return sum + sigma * std::complex<double>(real, normal(random));
    };
    test::writeUvx(folder_.file("sky.uvx"), sample_);
  }

  void image() {
    UvxFileList files;
    ASSERT_EQ(files.AddFile(folder_.file("sky.uvx")), 1);
    files.imaging().halfSizeX = kColumns;
    files.imaging().halfSizeY = kRows;
    HeadlessCleanWatcher watcher(nullptr, nullptr, nullptr);
    RunCompany company;
    company.clean = &watcher;
    const RunReport report = RunDriver(company).Run(parameters_, files);
    ASSERT_TRUE(report.status.ok()) << report.status.text();
  }

  void simulate(const double (&noise)[3]) {
    found_.assign(std::size(kSources), Found());
    for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
      observe(seed, noise);
      ASSERT_NO_FATAL_FAILURE(image());
      LoadedMap flux, index, error;
      ASSERT_TRUE(readMap(folder_.file("MFS^cln0.exm"), flux).ok());
      ASSERT_TRUE(readMap(folder_.file("MFS^sindex.exm"), index).ok());
      ASSERT_TRUE(readMap(folder_.file("MFS^sindex_err.exm"), error).ok());
      for (std::size_t s = 0; s < std::size(kSources); ++s) {
        const auto row = static_cast<std::uint32_t>(kRows / 2 + kSources[s].north);
        const auto column = static_cast<std::uint32_t>(kColumns / 2 + kSources[s].east);
        found_[s].flux.push_back((*flux.matrix)(row, column));
        found_[s].index.push_back((*index.matrix)(row, column));
        found_[s].error.push_back((*error.matrix)(row, column));
      }
    }
  }

  /// The scatter of the index over the seeds in units of the mapped error, over all sources of one index.
  double scatterOverMap(double index) {
    double sum = 0;
    int sources = 0;
    for (std::size_t s = 0; s < found_.size(); ++s) {
      if (kSources[s].index != index) continue;
      const double ratio = scatter(found_[s].index) / mean(found_[s].error);
      const double signalToNoise = mean(found_[s].flux) / scatter(found_[s].flux);
      EXPECT_GT(signalToNoise, 20);
      std::printf("flux %.1f, signal to noise %5.1f, index %+.3f: scatter %.4f, map %.4f, ratio %.3f\n",
                  kSources[s].flux, signalToNoise, mean(found_[s].index), scatter(found_[s].index),
                  mean(found_[s].error), ratio);
      sum += ratio * ratio;
      ++sources;
    }
    std::printf("index %+.1f: scatter over map %.3f\n", index, std::sqrt(sum / sources));
    return std::sqrt(sum / sources);
  }

  test::TempFolder folder_;
  test::UvxSample sample_;
  RunParameters parameters_;
  std::vector<Found> found_;
};

// The sample standard deviation of n values of a normal distribution is uncertain by 1 / sqrt(2 (n - 1)),
// here over four sources, which are far enough apart to count as independent: 4.6 %. So 15 % is three of its
// standard deviations. Without the covariance of the terms the map would be wrong by a factor of 0.75 for the
// rising sources and 1.75 for the falling ones.

TEST_F(SpectralIndexScatterTest, IsTheMapsErrorWithEqualNoiseInAllBands) {
  simulate({2.7, 2.7, 2.7});
  EXPECT_NEAR(scatterOverMap(kRising), 1, 0.15);
  EXPECT_NEAR(scatterOverMap(kFalling), 1, 0.15);
}

// The weights do not tell of the noise, so it is not in proportion to the beams.
TEST_F(SpectralIndexScatterTest, IsTheMapsErrorWithNoiseThatTheWeightsDoNotTell) {
  simulate({1.7, 2.7, 4.3});
  EXPECT_NEAR(scatterOverMap(kRising), 1, 0.15);
  EXPECT_NEAR(scatterOverMap(kFalling), 1, 0.15);
}

}  // namespace
}  // namespace lumo
