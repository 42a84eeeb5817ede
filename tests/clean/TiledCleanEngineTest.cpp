// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "clean/CleanEngineChoice.h"
#include "clean/CleanProblem.h"
#include "clean/CleanTrace.h"
#include "clean/CleanWorker.h"
#include "clean/TiledCleanEngine.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;
using test::expectSameRun;
using test::flatMap;
using test::noisySky;
using test::parametersOf;
using test::plainRun;
using test::Shape;
using test::TargetGuard;
using test::tiledRun;
using test::tilingOf;
using test::Trace;

/// Compares the run with the plain one, and checks that at its end the tiles were in use or not.
void expectSame(const CleanProblem& problem, const CleanParameters& parameters, const CleanTiling& tiling,
                bool tiled, const std::string& what = "") {
  const Trace fast = tiledRun(problem, parameters, tiling);
  EXPECT_EQ(fast.tiled, tiled) << what;
  expectSameRun(plainRun(problem, parameters), fast, what);
}

using Case = std::tuple<int, double, int>;

class TiledCleanEngineBits : public testing::TestWithParam<Case> {};

TEST_P(TiledCleanEngineBits, EqualThoseOfThePlainEngineOnASkyOfSources) {
  const auto [terms, gain, flags] = GetParam();
  // 61 columns are no multiple of any vector, nor of the tiles.
  const CleanProblem problem = noisySky(terms, {47, 61});
  expectSame(problem, parametersOf(1500, gain, (flags & 1) != 0, (flags & 2) != 0), tilingOf(5, 24), true);
}

INSTANTIATE_TEST_SUITE_P(TermsGainsFlags, TiledCleanEngineBits,
                         testing::Combine(testing::Values(1, 2, 3, 4),
                                          testing::Values(0.05, 0.3, 1.0, 1.4, 1.9),
                                          testing::Values(0, 1, 2, 3)));

TEST(TiledCleanEngineTest, EqualsThePlainEngineForAnySizeOfMapsBeamsAndTiles) {
  const Shape maps[] = {{1, 1}, {1, 37}, {37, 1}, {16, 16}, {17, 33}, {23, 31}};
  for (const Shape map : maps) {
    const Shape beams[] = {map,
                           {2 * map.rows, 2 * map.columns},
                           {map.rows + 1, map.columns + 3},
                           {3 * map.rows + 1, 2 * map.columns + 37}};
    for (const Shape beam : beams)
      for (const CleanTiling& tiling : {tilingOf(1, 1), tilingOf(4, 7), tilingOf(8, 16), tilingOf(100, 1000)})
        for (const bool nonNegative : {false, true})
          expectSame(test::randomProblem(2, map, beam, 5), parametersOf(60, 0.1, nonNegative), tiling, true,
                     std::to_string(map.rows) + " x " + std::to_string(map.columns) + ", beam " +
                         std::to_string(beam.rows) + " x " + std::to_string(beam.columns) + ", tiles " +
                         std::to_string(tiling.rows) + " x " + std::to_string(tiling.columns));
  }
}

TEST(TiledCleanEngineTest, EqualsThePlainEngineWithEveryInstructionSet) {
  const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
  ASSERT_FALSE(targets.empty());
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const CleanProblem problem = noisySky(terms, {20, 45});
    for (const bool nonNegative : {false, true}) {
      const Trace plain = plainRun(problem, parametersOf(400, 0.2, nonNegative));
      for (const std::int64_t target : targets) {
        const TargetGuard guard(target);
        expectSameRun(plain, tiledRun(problem, parametersOf(400, 0.2, nonNegative), tilingOf(4, 23)),
                      hwy::TargetName(target));
      }
    }
  }
}

TEST(TiledCleanEngineTest, ResultDoesNotDependOnTheNumberOfThreads) {
  const CleanProblem problem = noisySky(2, {48, 64});
  for (const bool nonNegative : {false, true}) {
    const Trace plain = plainRun(problem, parametersOf(1500, 0.1, nonNegative));
    for (const int threads : {1, 2, 3, 8})
      expectSameRun(plain, tiledRun(problem, parametersOf(1500, 0.1, nonNegative), tilingOf(4, 16, threads)),
                    std::to_string(threads) + " threads");
  }
}

TEST(TiledCleanEngineTest, EqualsThePlainEngineDeepInTheNoise) {
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const CleanProblem problem = noisySky(terms, {40, 56}, 0.3);
    for (const bool nonNegative : {false, true})
      expectSame(problem, parametersOf(4000, 0.1, nonNegative), tilingOf(4, 16), true, std::to_string(terms));
  }
}

TEST(TiledCleanEngineTest, TilesOfAFaintPartOfTheMapAreSeldomSearched) {
  const CleanProblem problem = noisySky(2, {64, 96}, 0.0);
  const Trace fast = tiledRun(problem, parametersOf(300, 0.1), tilingOf(4, 16));
  ASSERT_TRUE(fast.tiled);
  EXPECT_LT(fast.pixelsSearched, 300 * 64 * 96 / 3);
}

TEST(TiledCleanEngineTest, EqualsThePlainEngineAcrossTheTurnOfTheVariableGain) {
  const CleanProblem problem = noisySky(2, {12, 21}, 0.1);
  for (const bool nonNegative : {false, true})
    expectSame(problem, parametersOf(7200, 0.05, nonNegative, true), tilingOf(3, 8), true);
}

TEST(TiledCleanEngineTest, EqualScoresGoToTheLastPixelInScanOrder) {
  CleanProblem problem = test::randomProblem(1, {24, 40}, {48, 80}, 3);
  problem.maps[0] = flatMap({24, 40}, 0.0F);
  // Across tile borders to the right, below, and to the left below.
  problem.maps[0](5, 3) = problem.maps[0](5, 30) = problem.maps[0](17, 31) = problem.maps[0](17, 2) = 1.0F;
  const Trace fast = tiledRun(problem, parametersOf(1, 0.5), tilingOf(8, 16));
  EXPECT_EQ(fast.seen[0].row, 17U);
  EXPECT_EQ(fast.seen[0].column, 31U);
  expectSame(problem, parametersOf(50, 0.5), tilingOf(8, 16), true);
}

TEST(TiledCleanEngineTest, EqualsThePlainEngineOnMapsOfFewWholeNumbers) {
  // Values and beams of a few whole numbers, so that scores tie all the time, exactly.
  std::mt19937 random(8);
  std::uniform_int_distribution<int> value(-2, 2);
  for (std::int32_t terms = 1; terms <= 3; ++terms) {
    CleanProblem problem = test::randomProblem(terms, {19, 35}, {38, 70}, 6);
    for (AMatrix<float>& map : problem.maps)
      for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = static_cast<float>(value(random));
    for (std::size_t m = 0; m < problem.beams.size(); ++m) {
      AMatrix<float>& beam = problem.beams[m];
      for (std::size_t i = 0; i < beam.size(); ++i) beam.data()[i] = value(random) == 2 ? 0.25F : 0.0F;
      beam(19, 35) = m == 0 || m == 2 ? 1.0F : m == 4 ? 3.0F : 0.0F;
    }
    for (const double gain : {0.5, 1.0})
      for (const bool nonNegative : {false, true})
        expectSame(problem, parametersOf(300, gain, nonNegative), tilingOf(4, 16), true,
                   std::to_string(terms));
  }
}

TEST(TiledCleanEngineTest, AllZeroMapsTakeTheLastPixelAndStayZero) {
  CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  for (AMatrix<float>& map : problem.maps) map = flatMap({9, 20}, 0.0F);
  const Trace fast = tiledRun(problem, parametersOf(200, 0.1), tilingOf(4, 8));
  EXPECT_EQ(fast.seen[199].row, 8U);
  EXPECT_EQ(fast.seen[199].column, 19U);
  for (const bool nonNegative : {false, true})
    for (const bool variableGain : {false, true})
      expectSame(problem, parametersOf(200, 0.1, nonNegative, variableGain), tilingOf(4, 8), true);
}

TEST(TiledCleanEngineTest, NegativeMapsWithTheConstraintLeaveOnlyScoresOfTheOtherTerms) {
  CleanProblem problem = noisySky(2, {24, 40});
  for (std::size_t i = 0; i < problem.maps[0].size(); ++i)
    problem.maps[0].data()[i] = -1.0F - std::fabs(problem.maps[0].data()[i]);
  expectSame(problem, parametersOf(500, 0.4, true), tilingOf(4, 16), true);
  CleanProblem single = noisySky(1, {24, 40});
  single.maps[0] = flatMap({24, 40}, -1.0F);
  expectSame(single, parametersOf(100, 0.4, true), tilingOf(4, 16), true);
}

TEST(TiledCleanEngineTest, TinyValuesEqualThePlainEngine) {
  CleanProblem problem = noisySky(2, {16, 40});
  for (AMatrix<float>& map : problem.maps)
    for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] *= 1e-40F;
  for (const bool nonNegative : {false, true})
    expectSame(problem, parametersOf(300, 0.3, nonNegative), tilingOf(4, 16), true);
}

TEST(TiledCleanEngineTest, ValuesThatAreNotFiniteAreLeftToThePlainLoops) {
  const float special[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity()};
  for (const float value : special) {
    CleanProblem inMap = test::randomProblem(2, {9, 20}, {18, 40}, 3);
    inMap.maps[1](4, 5) = value;
    expectSame(inMap, parametersOf(6, 0.1), tilingOf(4, 8), false, "map");
    CleanProblem inBeam = test::randomProblem(2, {9, 20}, {18, 40}, 3);
    inBeam.beams[2](17, 39) = value;
    expectSame(inBeam, parametersOf(6, 0.1, true), tilingOf(4, 8), false, "beam");
  }
}

TEST(TiledCleanEngineTest, BeamMatrixThatIsNotPositiveDefiniteIsLeftToThePlainLoops) {
  for (const float centre : {-1.0F, 0.0F}) {
    CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
    problem.beams[0](9, 20) = centre;
    expectSame(problem, parametersOf(5, 0.1), tilingOf(4, 8), false);
  }
  CleanProblem indefinite = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  indefinite.beams[2](9, 20) = -0.5F;
  expectSame(indefinite, parametersOf(5, 0.1, true), tilingOf(4, 8), false);
}

TEST(TiledCleanEngineTest, GainsThatGiveNoPositiveScoreAreLeftToThePlainLoops) {
  const CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  for (const double gain : {-0.5, 0.0, 2.0, 2.5, std::numeric_limits<double>::quiet_NaN()})
    for (const bool variableGain : {false, true})
      expectSame(problem, parametersOf(20, gain, false, variableGain), tilingOf(4, 8), false,
                 std::to_string(gain));
}

TEST(TiledCleanEngineTest, FiveTermsAreLeftToThePlainLoops) {
  expectSame(test::randomProblem(5, {9, 20}, {18, 40}, 3), parametersOf(20, 0.1), tilingOf(4, 8), false);
}

TEST(TiledCleanEngineTest, RunThatGrowsWithoutEndEndsAsThatOfThePlainEngine) {
  // Beams far above their centre, so that each step makes the residuals larger, up to infinity.
  for (const bool nonNegative : {false, true}) {
    CleanProblem problem = test::randomProblem(2, {12, 20}, {24, 40}, 3);
    for (AMatrix<float>& beam : problem.beams) {
      const float centre = beam(12, 20);
      for (std::size_t i = 0; i < beam.size(); ++i) beam.data()[i] *= 8.0F;
      beam(12, 20) = centre;
    }
    // Up to the iteration in which residuals leave the range of a float, where the bits of a value that is
    // not a number are the processor's business.
    const Trace all = plainRun(problem, parametersOf(400, 1.0, nonNegative));
    std::int32_t finite = 0;
    while (static_cast<std::size_t>(finite) < all.seen.size() && std::isfinite(all.seen[finite].totalFlux) &&
           std::fabs(all.seen[finite].totalFlux) < 1e38)
      ++finite;
    ASSERT_LT(finite, 400);
    ASSERT_GT(finite, 10);
    expectSame(problem, parametersOf(finite, 1.0, nonNegative), tilingOf(4, 8), false);
  }
}

TEST(TiledCleanEngineTest, SettledMapsOfAnyIterationAreThoseOfThePlainEngine) {
  const CleanProblem problem = noisySky(2, {24, 40});
  for (const bool nonNegative : {false, true}) {
    std::vector<AMatrix<float>> expected;
    const CleanParameters parameters = parametersOf(700, 0.1, nonNegative);
    const auto picture = [](ABCleanEngine& engine, std::vector<AMatrix<float>>& into) {
      engine.settle();
      for (const AMatrix<float>* map : engine.residuals()) into.push_back(*map);
    };
    const auto chosen = [](std::int32_t n) { return n <= 3 || n % 97 == 0 || n == 1 + 97; };
    const Trace plain =
        plainRun(problem, parameters, [&](ABCleanEngine& engine, const CleanProgress& progress) {
          if (chosen(progress.iteration)) picture(engine, expected);
          return false;
        });
    std::vector<AMatrix<float>> settled;
    const Trace fast = tiledRun(problem, parameters, tilingOf(4, 16, 2),
                                [&](ABCleanEngine& engine, const CleanProgress& progress) {
                                  if (chosen(progress.iteration)) picture(engine, settled);
                                  return false;
                                });
    expectSameRun(plain, fast, "settled on the way");
    ASSERT_EQ(settled.size(), expected.size());
    for (std::size_t i = 0; i < settled.size(); ++i)
      EXPECT_TRUE(test::sameBits(settled[i], expected[i])) << i;
  }
}

TEST(TiledCleanEngineTest, StoppedRunLeavesTheMapsOfItsLastIteration) {
  const CleanProblem problem = noisySky(3, {24, 40});
  const auto stopAt100 = [](ABCleanEngine&, const CleanProgress& progress) {
    return progress.iteration == 100;
  };
  const Trace plain = plainRun(problem, parametersOf(500, 0.1), stopAt100);
  const Trace fast = tiledRun(problem, parametersOf(500, 0.1), tilingOf(4, 16), stopAt100);
  EXPECT_EQ(fast.result, 0);
  EXPECT_EQ(fast.seen.size(), 100U);
  expectSameRun(plain, fast, "stopped");
}

TEST(TiledCleanEngineTest, PausedWorkerShowsTheMapsOfItsIteration) {
  const CleanProblem problem = noisySky(2, {24, 40});
  EngineInput input(problem);
  TiledCleanEngine engine(input.residuals, input.beams, parametersOf(50, 0.1), tilingOf(4, 16));
  CleanWorker worker(engine);
  worker.requestPause();
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.pause();
  ASSERT_TRUE(worker.paused());
  const Trace expected = plainRun(problem, parametersOf(worker.iteration(), 0.1));
  for (std::int32_t k = 0; k < 2; ++k) {
    EXPECT_TRUE(test::sameBits(*input.residuals[k], expected.residuals[static_cast<std::size_t>(k)]));
    EXPECT_TRUE(test::sameBits(engine.components()[k], expected.components[static_cast<std::size_t>(k)]));
  }
  worker.resume();
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
}

TEST(TiledCleanEngineTest, FactoryTakesTheTiledEngineUpToFourTermsAndThePlainOneOnRequest) {
  const auto made = [](CleanEngineKind kind, std::int32_t terms) {
    EngineInput input(test::randomProblem(terms, {3, 4}, {6, 8}, 1));
    const auto engine = makeCleanEngine(kind, 1, input.residuals, input.beams, {});
    return dynamic_cast<const TiledCleanEngine*>(engine.get()) != nullptr;
  };
  EXPECT_TRUE(made(CleanEngineKind::kFast, 1));
  EXPECT_TRUE(made(CleanEngineKind::kFast, 4));
  EXPECT_FALSE(made(CleanEngineKind::kFast, 5));
  EXPECT_FALSE(made(CleanEngineKind::kPlain, 2));
}

}  // namespace
}  // namespace lumo
