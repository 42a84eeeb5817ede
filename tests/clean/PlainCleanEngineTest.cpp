// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/PlainCleanEngine.h"
#include "clean/StraightClean.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;
using test::flatMap;
using test::Shape;
using test::Source;
using test::StraightResult;

/// One engine with its input, run without a stop.
class PlainRun : private CleanObserver {
 public:
  using Hook = std::function<void(PlainRun&, const CleanProgress&)>;

  PlainRun(const CleanProblem& problem, const CleanParameters& parameters, Hook hook = nullptr)
      : input(problem), engine(input.residuals, input.beams, parameters), hook_(std::move(hook)) {
    result = engine.Run(stop, this);
  }

  [[nodiscard]] const AMatrix<float>& component(std::int32_t j) const { return engine.components()[j]; }
  [[nodiscard]] AMatrix<float>& residual(std::int32_t k) { return *input.residuals[k]; }

  EngineInput input;
  PlainCleanEngine engine;
  std::atomic<int> stop{0};
  std::vector<CleanProgress> seen;
  int result = -1;

 private:
  void iterationDone(const CleanProgress& progress) override {
    seen.push_back(progress);
    if (hook_) hook_(*this, progress);
  }
  Hook hook_;
};

CleanParameters parametersOf(std::int32_t iterations, double gain, bool nonNegative = false,
                             bool variableGain = false) {
  CleanParameters parameters;
  parameters.iterations = iterations;
  parameters.gain = gain;
  parameters.nonNegative = nonNegative;
  parameters.variableGain = variableGain;
  return parameters;
}

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

void expectSameAsStraight(const CleanProblem& problem, const CleanParameters& parameters) {
  const StraightResult expected = straightClean(problem, parameters);
  PlainRun run(problem, parameters);
  for (std::int32_t k = 0; k < problem.terms(); ++k) {
    EXPECT_TRUE(test::sameBits(run.residual(k), expected.residuals[k])) << "residual " << k;
    EXPECT_TRUE(test::sameBits(run.component(k), expected.components[k])) << "component " << k;
  }
  EXPECT_TRUE(sameBits(run.engine.totalFlux(), expected.totalFlux));
  ASSERT_EQ(run.seen.size(), expected.scores.size());
  for (std::size_t n = 0; n < run.seen.size(); ++n)
    ASSERT_TRUE(sameBits(run.seen[n].score, expected.scores[n])) << "score of iteration " << n + 1;
}

/// 2 D'r - D'M D with M from the centres of the problem's beams.
double quadraticDrop(const CleanProblem& problem, const std::vector<double>& r,
                     const std::vector<double>& d) {
  const AMatrix<float>& beam = problem.beams[0];
  double drop = 0.0;
  for (std::size_t i = 0; i < r.size(); ++i) {
    drop += 2.0 * d[i] * r[i];
    for (std::size_t j = 0; j < r.size(); ++j)
      drop -= d[i] * d[j] * static_cast<double>(problem.beams[i + j](beam.rows() / 2, beam.columns() / 2));
  }
  return drop;
}

using Case = std::tuple<int, double, int, int>;

class PlainCleanEngineBits : public testing::TestWithParam<Case> {};

TEST_P(PlainCleanEngineBits, EqualThoseOfTheStraightTranscription) {
  const auto [terms, gain, flags, shape] = GetParam();
  const Shape maps[] = {{5, 7}, {8, 6}, {7, 5}, {1, 9}};
  const Shape beams[] = {{10, 14}, {19, 13}, {7, 5}, {3, 11}};
  const CleanProblem problem =
      test::randomProblem(terms, maps[shape], beams[shape], static_cast<unsigned>(100 * terms + shape));
  expectSameAsStraight(problem, parametersOf(60, gain, (flags & 1) != 0, (flags & 2) != 0));
}

INSTANTIATE_TEST_SUITE_P(TermsGainsFlagsShapes, PlainCleanEngineBits,
                         testing::Combine(testing::Values(1, 2, 3, 4),
                                          testing::Values(0.1, 0.5, 1.0, 2.0, 3.0),
                                          testing::Values(0, 1, 2, 3), testing::Values(0, 1, 2, 3)));

TEST(PlainCleanEngineTest, EqualsTheStraightTranscriptionAcrossTheTurnOfTheVariableGain) {
  const CleanProblem problem = test::sourceProblem(2, {4, 5}, {{1, 2, {2.0, -1.0}}, {3, 4, {-1.0, 0.5}}});
  expectSameAsStraight(problem, parametersOf(7100, 0.05, false, true));
}

TEST(PlainCleanEngineTest, EqualsTheStraightTranscriptionWithANotANumberInAMap) {
  CleanProblem problem = test::randomProblem(2, {6, 7}, {12, 14}, 9);
  problem.maps[1](2, 3) = std::numeric_limits<float>::quiet_NaN();
  expectSameAsStraight(problem, parametersOf(3, 0.1));
}

TEST(PlainCleanEngineTest, EqualsTheStraightTranscriptionWithAnIndefiniteBeamMatrix) {
  CleanProblem problem = test::randomProblem(2, {6, 7}, {12, 14}, 10);
  problem.beams[2](6, 7) = -0.5F;
  expectSameAsStraight(problem, parametersOf(3, 0.1, true));
}

TEST(PlainCleanEngineTest, NoIterationsLeaveTheMapsAndReportNothing) {
  for (const std::int32_t iterations : {0, -5}) {
    const CleanProblem problem = test::randomProblem(2, {5, 4}, {10, 8}, 3);
    PlainRun run(problem, parametersOf(iterations, 0.1));
    EXPECT_EQ(run.result, 1);
    EXPECT_TRUE(run.seen.empty());
    EXPECT_EQ(run.engine.totalFlux(), 0.0);
    for (std::int32_t k = 0; k < 2; ++k) {
      EXPECT_TRUE(test::sameBits(run.residual(k), problem.maps[k]));
      EXPECT_TRUE(test::sameBits(run.component(k), flatMap({5, 4}, 0.0F)));
    }
  }
}

TEST(PlainCleanEngineTest, StopSetBeforeTheStartEndsAfterThePreparation) {
  const CleanProblem problem = test::randomProblem(2, {5, 4}, {10, 8}, 3);
  EngineInput input(problem);
  PlainCleanEngine engine(input.residuals, input.beams, parametersOf(10, 0.1));
  const std::atomic<int> stop{1};
  EXPECT_EQ(engine.Run(stop, nullptr), 0);
  EXPECT_EQ(engine.iterationsDone(), 0);
  ASSERT_EQ(engine.components().count(), 2);
  for (std::int32_t k = 0; k < 2; ++k) {
    EXPECT_TRUE(test::sameBits(engine.components()[k], flatMap({5, 4}, 0.0F)));
    EXPECT_TRUE(test::sameBits(*input.residuals[k], problem.maps[k]));
  }
}

TEST(PlainCleanEngineTest, StopSetDuringAnIterationTakesEffectBeforeTheNext) {
  const CleanProblem problem = test::randomProblem(2, {5, 4}, {10, 8}, 3);
  PlainRun run(problem, parametersOf(10, 0.1), [](PlainRun& self, const CleanProgress& progress) {
    if (progress.iteration == 4) self.stop = 1;
  });
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.engine.iterationsDone(), 4);
  EXPECT_TRUE(test::sameBits(run.residual(1), straightClean(problem, parametersOf(4, 0.1)).residuals[1]));
}

TEST(PlainCleanEngineTest, ZeroResidualsGiveTheLastPixelZeroIncrements) {
  CleanProblem problem = test::randomProblem(3, {5, 4}, {10, 8}, 3);
  for (AMatrix<float>& map : problem.maps) map = flatMap({5, 4}, 0.0F);
  PlainRun run(problem, parametersOf(3, 0.1));
  ASSERT_EQ(run.seen.size(), 3U);
  for (const CleanProgress& progress : run.seen) {
    EXPECT_TRUE(progress.found);
    EXPECT_EQ(progress.row, 4U);
    EXPECT_EQ(progress.column, 3U);
    EXPECT_EQ(progress.score, 0.0);
    EXPECT_EQ(progress.totalFlux, 0.0);
  }
  for (std::int32_t k = 0; k < 3; ++k) {
    EXPECT_TRUE(test::sameBits(run.residual(k), problem.maps[k]));
    EXPECT_TRUE(test::sameBits(run.component(k), problem.maps[k]));
  }
}

TEST(PlainCleanEngineTest, GainTwoGivesTheLastPixelTwiceItsSolutionEachIteration) {
  CleanProblem problem = test::randomProblem(1, {3, 3}, {6, 6}, 3);
  problem.maps[0] = flatMap({3, 3}, 0.0F);
  problem.maps[0](0, 0) = 100.0F;
  problem.maps[0](2, 2) = 1.5F;
  PlainRun run(problem, parametersOf(1, 2.0));
  EXPECT_EQ(run.seen[0].row, 2U);
  EXPECT_EQ(run.seen[0].column, 2U);
  EXPECT_EQ(run.seen[0].score, 0.0);
  // Beam 0 has centre 1, so a = r.
  EXPECT_EQ(run.component(0)(2, 2), 3.0F);
  EXPECT_EQ(run.component(0)(0, 0), 0.0F);
  EXPECT_EQ(run.residual(0)(2, 2), -1.5F);
}

TEST(PlainCleanEngineTest, OneTermPicksTheLargestAbsoluteResidualAndSubtractsGainTimesTheBeam) {
  CleanProblem problem = test::randomProblem(1, {5, 6}, {10, 12}, 4);
  problem.beams[0](5, 6) = 0.5F;
  problem.maps[0](3, 1) = -4.0F;
  PlainRun run(problem, parametersOf(1, 0.25));
  EXPECT_EQ(run.seen[0].row, 3U);
  EXPECT_EQ(run.seen[0].column, 1U);
  // g R_0 / B_0(centre) = 0.25 * -4 / 0.5; negative components are allowed.
  EXPECT_EQ(run.component(0)(3, 1), -2.0F);
  EXPECT_EQ(run.engine.totalFlux(), run.seen[0].totalFlux);
  EXPECT_DOUBLE_EQ(run.engine.totalFlux(), -2.0);
  for (std::uint32_t row = 0; row < 5; ++row)
    for (std::uint32_t column = 0; column < 6; ++column)
      // One rounding to float.
      EXPECT_FLOAT_EQ(run.residual(0)(row, column),
                      problem.maps[0](row, column) + 2.0F * problem.beams[0](5 + row - 3, 6 + column - 1));
}

TEST(PlainCleanEngineTest, TiesGoToTheLaterPixelInScanOrder) {
  CleanProblem problem = test::randomProblem(1, {4, 4}, {8, 8}, 4);
  problem.maps[0] = flatMap({4, 4}, 0.5F);
  for (const auto& [row, column] : {std::pair{0, 3}, std::pair{2, 1}, std::pair{2, 0}})
    problem.maps[0](row, column) = 3.0F;
  problem.maps[0](1, 1) = -3.0F;
  PlainRun run(problem, parametersOf(1, 0.5));
  EXPECT_EQ(run.seen[0].row, 2U);
  EXPECT_EQ(run.seen[0].column, 1U);
}

TEST(PlainCleanEngineTest, NotANumberIsChosenAndMakesTheSearchForgetThePixelsBeforeIt) {
  CleanProblem problem = test::randomProblem(1, {4, 4}, {8, 8}, 4);
  problem.maps[0] = flatMap({4, 4}, 0.125F);
  problem.maps[0](0, 2) = 50.0F;
  problem.maps[0](1, 1) = std::numeric_limits<float>::quiet_NaN();
  problem.maps[0](2, 3) = 0.5F;
  PlainRun run(problem, parametersOf(1, 1.0));
  EXPECT_EQ(run.seen[0].row, 2U);
  EXPECT_EQ(run.seen[0].column, 3U);
  EXPECT_EQ(run.component(0)(2, 3), 0.5F);
  EXPECT_EQ(run.component(0)(1, 1), 0.0F);
}

TEST(PlainCleanEngineTest, NotANumberInTheLastPixelIsThePeak) {
  CleanProblem problem = test::randomProblem(1, {4, 4}, {8, 8}, 4);
  problem.maps[0](3, 3) = std::numeric_limits<float>::quiet_NaN();
  PlainRun run(problem, parametersOf(1, 1.0));
  EXPECT_EQ(run.seen[0].row, 3U);
  EXPECT_EQ(run.seen[0].column, 3U);
  EXPECT_TRUE(std::isnan(run.component(0)(3, 3)));
  EXPECT_TRUE(std::isnan(run.residual(0)(0, 0)));
}

TEST(PlainCleanEngineTest, IndefiniteBeamMatrixRunsToTheEndAndMarksTheMapsAsNotANumber) {
  CleanProblem problem = test::randomProblem(2, {4, 4}, {8, 8}, 4);
  problem.beams[0](4, 4) = -1.0F;
  PlainRun run(problem, parametersOf(5, 0.1));
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.engine.iterationsDone(), 5);
  EXPECT_TRUE(std::isnan(run.engine.inversionError()));
  EXPECT_TRUE(std::isnan(run.component(0)(3, 3)));
  EXPECT_TRUE(std::isnan(run.residual(1)(0, 0)));
}

TEST(PlainCleanEngineTest, NoPixelOfScoreZeroOrMoreAppliesNothing) {
  // Above gain 2 every score of a residual other than 0 is negative.
  const CleanProblem problem = test::randomProblem(2, {4, 4}, {8, 8}, 4);
  PlainRun run(problem, parametersOf(3, 2.5));
  EXPECT_EQ(run.engine.iterationsDone(), 3);
  EXPECT_FALSE(run.seen[2].found);
  EXPECT_TRUE(test::sameBits(run.residual(0), problem.maps[0]));
  EXPECT_TRUE(test::sameBits(run.component(0), flatMap({4, 4}, 0.0F)));
}

TEST(PlainCleanEngineTest, PeakAtTheFirstCornerTakesBeamElementsAcrossTheWrap) {
  CleanProblem problem = test::randomProblem(1, {4, 3}, {4, 3}, 4);
  for (std::uint32_t i = 0; i < 12; ++i) problem.beams[0].data()[i] = static_cast<float>(i);
  problem.beams[0](2, 1) = 1.0F;
  problem.maps[0] = flatMap({4, 3}, 0.0F);
  problem.maps[0](0, 0) = 1.0F;
  PlainRun run(problem, parametersOf(1, 1.0));
  // Map row i meets beam row (2 + i) mod 4, map column i beam column (1 + i) mod 3.
  EXPECT_EQ(run.residual(0)(0, 0), 0.0F);
  EXPECT_EQ(run.residual(0)(1, 1), -(3.0F * 3 + 2));
  EXPECT_EQ(run.residual(0)(2, 2), -(0.0F * 3 + 0));
  EXPECT_EQ(run.residual(0)(3, 2), -(1.0F * 3 + 0));
  EXPECT_EQ(run.residual(0)(3, 1), -(1.0F * 3 + 2));
}

TEST(PlainCleanEngineTest, PeakAtTheLastCornerTakesBeamElementsAcrossTheWrap) {
  CleanProblem problem = test::randomProblem(1, {4, 3}, {4, 3}, 4);
  for (std::uint32_t i = 0; i < 12; ++i) problem.beams[0].data()[i] = static_cast<float>(i);
  problem.beams[0](2, 1) = 1.0F;
  problem.maps[0] = flatMap({4, 3}, 0.0F);
  problem.maps[0](3, 2) = 1.0F;
  PlainRun run(problem, parametersOf(1, 1.0));
  // Map row i meets beam row (2 - 3 + i) mod 4, map column i beam column (1 - 2 + i) mod 3.
  EXPECT_EQ(run.residual(0)(3, 2), 0.0F);
  EXPECT_EQ(run.residual(0)(0, 0), -(3.0F * 3 + 2));
  EXPECT_EQ(run.residual(0)(0, 1), -(3.0F * 3 + 0));
  EXPECT_EQ(run.residual(0)(1, 0), -(0.0F * 3 + 2));
  EXPECT_EQ(run.residual(0)(2, 2), -(1.0F * 3 + 1));
}

TEST(PlainCleanEngineTest, ScoreIsTheDropOfTheQuadraticFormOfTheResiduals) {
  for (const double gain : {0.1, 0.7, 1.0, 1.6}) {
    for (std::int32_t terms = 1; terms <= 4; ++terms) {
      const CleanProblem problem = test::randomProblem(terms, {6, 5}, {12, 10}, 40);
      const PlainRun run(problem, parametersOf(1, gain));
      std::vector<double> r;
      std::vector<double> d;
      for (std::int32_t k = 0; k < terms; ++k) {
        r.push_back(problem.maps[k](run.seen[0].row, run.seen[0].column));
        d.push_back(run.component(k)(run.seen[0].row, run.seen[0].column));
      }
      // The increments come back through float components; near gain 2 the two parts cancel in part.
      EXPECT_NEAR(run.seen[0].score, quadraticDrop(problem, r, d), 1e-5 * run.seen[0].score);
    }
  }
}

TEST(PlainCleanEngineTest, GainOneTakesAllResidualsOfThePeakToZero) {
  const CleanProblem problem = test::randomProblem(3, {6, 5}, {12, 10}, 41);
  PlainRun run(problem, parametersOf(1, 1.0));
  for (std::int32_t k = 0; k < 3; ++k)
    // Three roundings to float of terms up to the increments, here below 100.
    EXPECT_NEAR(run.residual(k)(run.seen[0].row, run.seen[0].column), 0.0, 3e-5);
}

/// A problem with one positive pixel, whose residuals are turned negative after the first iteration so that
/// the second must take the component back.
class NegativeSecondStep : public testing::Test {
 protected:
  static constexpr double kGain = 0.5;
  CleanProblem problem_ = test::randomProblem(2, {3, 3}, {6, 6}, 12);

  NegativeSecondStep() {
    for (AMatrix<float>& map : problem_.maps) map = flatMap({3, 3}, 0.0F);
    problem_.maps[0](1, 1) = 2.0F;
  }

  PlainRun run(bool nonNegative) {
    return {problem_, parametersOf(2, kGain, nonNegative),
            [this](PlainRun& self, const CleanProgress& progress) {
              if (progress.iteration != 1) return;
              firstComponent_[0] = self.component(0)(1, 1);
              firstComponent_[1] = self.component(1)(1, 1);
              for (std::int32_t k = 0; k < 2; ++k)
                std::fill_n(self.residual(k).data(), self.residual(k).size(), 0.0F);
              self.residual(0)(1, 1) = kResidual[0];
              self.residual(1)(1, 1) = kResidual[1];
            }};
  }

  /// M^-1 r by Cramer's rule from the beam centres.
  [[nodiscard]] std::vector<double> solution() const {
    const double m0 = problem_.beams[0](3, 3);
    const double m1 = problem_.beams[1](3, 3);
    const double m2 = problem_.beams[2](3, 3);
    const double determinant = m0 * m2 - m1 * m1;
    return {(m2 * kResidual[0] - m1 * kResidual[1]) / determinant,
            (m0 * kResidual[1] - m1 * kResidual[0]) / determinant};
  }

  static constexpr float kResidual[] = {-9.0F, 0.5F};
  double firstComponent_[2] = {0.0, 0.0};
};

TEST_F(NegativeSecondStep, NonNegativityBringsTermZeroToExactlyZeroAndMovesTheOthersAlong) {
  PlainRun result = run(true);
  EXPECT_GT(firstComponent_[0], 0.0);
  EXPECT_EQ(result.seen[1].row, 1U);
  EXPECT_EQ(result.seen[1].column, 1U);
  // Up to the float rounding of the component.
  EXPECT_NEAR(result.component(0)(1, 1), 0.0, 1e-6);
  // Beyond the unconstrained g a_1, term 1 moves by -t v_1, v_1 = -M_01 / M_11.
  const std::vector<double> a = solution();
  const double t = kGain * a[0] + firstComponent_[0];
  ASSERT_LT(t, 0.0);
  const double v1 = -static_cast<double>(problem_.beams[1](3, 3)) / problem_.beams[2](3, 3);
  EXPECT_NEAR(result.component(1)(1, 1), firstComponent_[1] + kGain * a[1] - t * v1, 1e-5);
}

TEST_F(NegativeSecondStep, ConstrainedScoreIsTheDropOfTheStepTaken) {
  const PlainRun result = run(true);
  const std::vector<double> d = {result.component(0)(1, 1) - firstComponent_[0],
                                 result.component(1)(1, 1) - firstComponent_[1]};
  const double drop = quadraticDrop(problem_, {kResidual[0], kResidual[1]}, d);
  EXPECT_NEAR(result.seen[1].score, drop, 1e-5 * std::fabs(drop));
}

TEST_F(NegativeSecondStep, WithoutNonNegativityTermZeroTurnsNegative) {
  const PlainRun result = run(false);
  EXPECT_NEAR(result.component(0)(1, 1), firstComponent_[0] + kGain * solution()[0], 1e-5);
  EXPECT_LT(result.component(0)(1, 1), 0.0F);
}

TEST(PlainCleanEngineTest, PointSourcesAreRecoveredWithTheirSpectra) {
  const std::vector<Source> sources = {{4, 5, {3.0, -2.1}}, {11, 9, {1.0, 0.8}}, {2, 13, {-0.5, 0.0}}};
  const CleanProblem problem = test::sourceProblem(2, {16, 18}, sources);
  PlainRun run(problem, parametersOf(4000, 0.3));
  double expectedFlux = 0.0;
  for (const Source& source : sources) {
    expectedFlux += source.values[0];
    for (std::int32_t j = 0; j < 2; ++j)
      // Single-precision dirty maps and beams, amplified by the inverse beam matrix.
      EXPECT_NEAR(run.component(j)(source.row, source.column), source.values[j], 1e-4);
  }
  EXPECT_NEAR(run.engine.totalFlux(), expectedFlux, 1e-3);
  for (std::int32_t k = 0; k < 2; ++k)
    for (std::size_t i = 0; i < run.residual(k).size(); ++i)
      ASSERT_LT(std::fabs(run.residual(k).data()[i]), 1e-4) << "map " << k << " pixel " << i;
}

}  // namespace
}  // namespace lumo
