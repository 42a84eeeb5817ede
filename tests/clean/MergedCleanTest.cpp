// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "clean/BeamMatrix.h"
#include "clean/CleanEngineChoice.h"
#include "clean/CleanTrace.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::flatMap;
using test::noisySky;
using test::parametersOf;
using test::plainRun;
using test::Shape;
using test::tiledRun;
using test::Trace;

CleanTiling mergedTiling(std::uint32_t rows, std::uint32_t columns, int threads = 1) {
  CleanTiling tiling = test::tilingOf(rows, columns, threads);
  tiling.rounding = CleanRounding::kOnce;
  return tiling;
}

double largest(const AMatrix<float>& map) {
  double value = 0.0;
  for (std::size_t i = 0; i < map.size(); ++i)
    value = std::max(value, std::fabs(static_cast<double>(map.data()[i])));
  return value;
}

double largestDifference(const AMatrix<float>& a, const AMatrix<float>& b) {
  double value = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i)
    value = std::max(value, std::fabs(static_cast<double>(a.data()[i]) - static_cast<double>(b.data()[i])));
  return value;
}

/// Of all maps that a run begins and ends with.
double brightest(const CleanProblem& problem, const Trace& run) {
  double peak = 0.0;
  for (const AMatrix<float>& map : problem.maps) peak = std::max(peak, largest(map));
  for (const AMatrix<float>& map : run.components) peak = std::max(peak, largest(map));
  return peak;
}

/// By how much the rounding of residuals grows in the components of each term: sqrt(W_jj M_00), which matters
/// from three terms on; 1 below.
std::vector<double> amplification(const CleanProblem& problem) {
  std::vector<double> factors(problem.maps.size(), 1.0);
  if (problem.terms() < 3) return factors;
  test::EngineInput input(problem);
  BeamMatrix matrix;
  matrix.prepare(input.beams, problem.terms());
  const AMatrix<float>& beam = problem.beams[0];
  const auto centre = static_cast<double>(beam(beam.rows() / 2, beam.columns() / 2));
  for (std::uint32_t j = 0; j < factors.size(); ++j)
    factors[j] = std::max(1.0, std::sqrt(matrix.inverse()(j, j) * centre));
  return factors;
}

/// Iterations before the first in which the two took different pixels.
std::size_t commonIterations(const Trace& a, const Trace& b) {
  std::size_t n = 0;
  while (n < std::min(a.seen.size(), b.seen.size()) && a.seen[n].found == b.seen[n].found &&
         a.seen[n].row == b.seen[n].row && a.seen[n].column == b.seen[n].column)
    ++n;
  return n;
}

/// The merged run takes the pixels of the plain one up to an iteration in which two scores are within
/// rounding, which must not come before `least`, and the maps before it are within 1e-6 of the peak.
void expectCloseRun(const CleanProblem& problem, CleanParameters parameters, const CleanTiling& tiling,
                    std::size_t least, const std::string& what, const Trace::Hook& hook = nullptr) {
  Trace plain = plainRun(problem, parameters, hook);
  Trace merged = tiledRun(problem, parameters, tiling, hook);
  ASSERT_TRUE(merged.tiled) << what;
  const std::size_t common = commonIterations(plain, merged);
  ASSERT_GE(common, std::min(least, plain.seen.size())) << what;
  if (common < plain.seen.size()) {
    // sqrt(E) is the size of the residual in a norm; residuals are known to a millionth of the first peak.
    ASSERT_NEAR(std::sqrt(plain.seen[common].score), std::sqrt(merged.seen[common].score),
                1e-6 * std::sqrt(plain.seen[0].score))
        << what << ": iteration " << common + 1;
    parameters.iterations = static_cast<std::int32_t>(common);
    plain = plainRun(problem, parameters, hook);
    merged = tiledRun(problem, parameters, tiling, hook);
  }
  const double peak = brightest(problem, plain);
  const std::vector<double> amplified = amplification(problem);
  for (std::size_t k = 0; k < plain.residuals.size(); ++k) {
    EXPECT_LE(largestDifference(plain.residuals[k], merged.residuals[k]), 1e-6 * peak) << what << ": " << k;
    EXPECT_LE(largestDifference(plain.components[k], merged.components[k]), 1e-6 * peak * amplified[k])
        << what << ": " << k;
  }
}

/// Beams with side lobes so weak that a CLEAN of random maps comes to an end.
CleanProblem tameProblem(std::int32_t terms, Shape map, Shape beam, float sideLobes = 0.05F) {
  CleanProblem problem = test::randomProblem(terms, map, beam, 5);
  for (AMatrix<float>& matrix : problem.beams) {
    const float centre = matrix(beam.rows / 2, beam.columns / 2);
    for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] *= sideLobes;
    matrix(beam.rows / 2, beam.columns / 2) = centre;
  }
  return problem;
}

TEST(MergedCleanTest, PeaksAreThoseOfThePlainEngineAndMapsItsWithinAMillionthOfThePeak) {
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const CleanProblem problem = noisySky(terms, {47, 61});
    for (const double gain : {0.1, 0.6})
      for (const bool nonNegative : {false, true})
        expectCloseRun(problem, parametersOf(600, gain, nonNegative), mergedTiling(5, 24), 100,
                       std::to_string(terms) + " terms, gain " + std::to_string(gain));
  }
}

TEST(MergedCleanTest, PeaksAndMapsOfAnySizeOfMapsBeamsAndTiles) {
  for (const Shape map : {Shape{1, 37}, Shape{37, 1}, Shape{17, 33}})
    for (const Shape beam : {map, Shape{map.rows + 1, map.columns + 3}, Shape{2 * map.rows, 2 * map.columns}})
      for (const CleanTiling& tiling : {mergedTiling(1, 1), mergedTiling(4, 7), mergedTiling(100, 1000)})
        expectCloseRun(tameProblem(2, map, beam), parametersOf(100, 0.3), tiling, 50,
                       std::to_string(map.rows) + " rows, beam " + std::to_string(beam.rows));
}

TEST(MergedCleanTest, ResidualsAreTheDirtyMapsLessTheComponentsThroughTheBeams) {
  const CleanProblem problem = noisySky(2, {30, 40});
  const Trace merged = tiledRun(problem, parametersOf(3000, 0.1), mergedTiling(4, 16));
  for (std::size_t k = 0; k < 2; ++k) {
    double worst = 0.0;
    for (std::uint32_t row = 0; row < 30; ++row)
      for (std::uint32_t column = 0; column < 40; ++column) {
        auto expected = static_cast<double>(problem.maps[k](row, column));
        for (std::uint32_t y = 0; y < 30; ++y)
          for (std::uint32_t x = 0; x < 40; ++x)
            for (std::size_t j = 0; j < 2; ++j)
              expected -= static_cast<double>(merged.components[j](y, x)) *
                          static_cast<double>(problem.beams[k + j](30 + row - y, 40 + column - x));
        worst = std::max(worst, std::fabs(expected - static_cast<double>(merged.residuals[k](row, column))));
      }
    // Components are rounded to float at every step, which the residuals do not see.
    EXPECT_LE(worst, 2e-6 * largest(problem.maps[0])) << k;
  }
}

TEST(MergedCleanTest, BitsDependNeitherOnTheThreadsNorOnTheInstructionSet) {
  const CleanProblem problem = noisySky(2, {48, 64});
  for (const bool nonNegative : {false, true}) {
    const CleanParameters parameters = parametersOf(1000, 0.1, nonNegative);
    const Trace one = tiledRun(problem, parameters, mergedTiling(4, 16));
    for (const int threads : {2, 3, 8})
      test::expectSameRun(one, tiledRun(problem, parameters, mergedTiling(4, 16, threads)),
                          std::to_string(threads) + " threads");
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
      const test::TargetGuard guard(target);
      test::expectSameRun(one, tiledRun(problem, parameters, mergedTiling(4, 16)), hwy::TargetName(target));
    }
  }
}

TEST(MergedCleanTest, BitsDoNotDependOnTheThreadsWhereBeamsWrap) {
  for (const Shape beam : {Shape{64, 128}, Shape{128, 64}, Shape{64, 64}}) {
    const CleanProblem problem = test::randomProblem(2, {64, 64}, beam, 5);
    const Trace one = tiledRun(problem, parametersOf(500, 0.1), mergedTiling(16, 64));
    ASSERT_TRUE(one.tiled);
    for (const int threads : {2, 3, 8})
      test::expectSameRun(one, tiledRun(problem, parametersOf(500, 0.1), mergedTiling(16, 64, threads)),
                          std::to_string(beam.rows) + " rows, " + std::to_string(threads) + " threads");
  }
}

TEST(MergedCleanTest, MapsSettledOnTheWayAreThoseOfThePlainEngineWithinAMillionthOfThePeak) {
  const CleanProblem problem = noisySky(2, {24, 40});
  const auto settle = [](ABCleanEngine& engine, const CleanProgress& progress) {
    if (progress.iteration % 53 == 0) engine.settle();
    return progress.iteration == 424;
  };
  expectCloseRun(problem, parametersOf(1000, 0.1), mergedTiling(4, 16), 150, "settled, then stopped", settle);
}

TEST(MergedCleanTest, FaintTilesLagBehindForLong) {
  const CleanProblem problem = noisySky(2, {192, 256}, 0.0);
  // Steps so small that a faint tile cannot win before the exact engine's list is full.
  const CleanParameters parameters = parametersOf(1000, 0.01);
  const Trace exact = tiledRun(problem, parameters, test::tilingOf(4, 16));
  const Trace merged = tiledRun(problem, parameters, mergedTiling(4, 16));
  EXPECT_LT(merged.pixelsSearched, 3 * exact.pixelsSearched / 4);
}

TEST(MergedCleanTest, AllZeroMapsTakeTheLastPixelAndStayZero) {
  CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  for (AMatrix<float>& map : problem.maps) map = flatMap({9, 20}, 0.0F);
  const CleanParameters parameters = parametersOf(300, 0.1);
  test::expectSameRun(plainRun(problem, parameters), tiledRun(problem, parameters, mergedTiling(4, 8)), "");
}

TEST(MergedCleanTest, InputWithoutBoundsIsLeftToThePlainLoopsToTheBit) {
  CleanProblem notFinite = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  notFinite.maps[1](4, 5) = std::numeric_limits<float>::quiet_NaN();
  CleanProblem indefinite = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  indefinite.beams[2](9, 20) = -0.5F;
  const CleanProblem fine = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  const CleanProblem five = test::randomProblem(5, {9, 20}, {18, 40}, 3);
  const auto expectPlain = [](const CleanProblem& problem, double gain) {
    const Trace merged = tiledRun(problem, parametersOf(6, gain), mergedTiling(4, 8));
    EXPECT_FALSE(merged.tiled);
    test::expectSameRun(plainRun(problem, parametersOf(6, gain)), merged, std::to_string(gain));
  };
  expectPlain(notFinite, 0.1);
  expectPlain(indefinite, 0.1);
  expectPlain(fine, 2.0);
  expectPlain(five, 0.1);
}

TEST(MergedCleanTest, MemoryBesideMapsAndBeamsIsBoundedAndBelowTwoPercent) {
  for (const std::int32_t terms : {1, 2, 4}) {
    const CleanProblem problem = tameProblem(terms, {256, 256}, {512, 512}, 1e-4F);
    const double mapsAndBeams = 4.0 * (2.0 * terms * 256 * 256 + (2.0 * terms - 1.0) * 512 * 512);
    for (const CleanTiling& tiling : {CleanTiling{}, mergedTiling(0, 0)}) {
      std::size_t early = 0;
      const auto note = [&](ABCleanEngine& engine, const CleanProgress& progress) {
        if (progress.iteration == 1) early = dynamic_cast<TiledCleanEngine&>(engine).workingBytes();
        return false;
      };
      // More iterations than the list has room for.
      const Trace run = tiledRun(problem, parametersOf(400, 0.1), tiling, note);
      ASSERT_TRUE(run.tiled);
      EXPECT_EQ(run.workingBytes, early);
      EXPECT_GT(run.workingBytes, 1000U);
      EXPECT_LT(static_cast<double>(run.workingBytes), 0.02 * mapsAndBeams) << terms << " terms";
    }
  }
}

TEST(MergedCleanTest, FactoryMakesItOnRequest) {
  test::EngineInput input(noisySky(1, {24, 40}));
  const auto engine = makeCleanEngine(CleanEngineKind::kMerged, 1, input.residuals, input.beams, {});
  const auto* const tiled = dynamic_cast<const TiledCleanEngine*>(engine.get());
  ASSERT_NE(tiled, nullptr);
  EXPECT_EQ(tiled->rounding(), CleanRounding::kOnce);
}

}  // namespace
}  // namespace lumo
