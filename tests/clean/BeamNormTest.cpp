// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "clean/BeamNorm.h"
#include "clean/BeamReach.h"
#include "clean/CleanProblem.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;

/// The norm of a problem's residuals, and the same by its definition.
class Norm {
 public:
  explicit Norm(const CleanProblem& problem) : input(problem), terms(problem.terms()) {
    matrix.prepare(input.beams, terms);
    usable = norm.prepare(input.beams, matrix, terms);
  }

  [[nodiscard]] double of(const std::vector<double>& r) const {
    double sum = 0.0;
    for (std::int32_t i = 0; i < terms; ++i)
      for (std::int32_t j = 0; j < terms; ++j)
        sum += r[static_cast<std::size_t>(i)] * r[static_cast<std::size_t>(j)] *
               matrix.inverse()(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j));
    return std::sqrt(sum);
  }

  /// B D at beam element `offset`.
  [[nodiscard]] std::vector<double> moved(const std::vector<double>& d, std::size_t offset) const {
    std::vector<double> r(d.size(), 0.0);
    for (std::size_t i = 0; i < d.size(); ++i)
      for (std::size_t j = 0; j < d.size(); ++j)
        r[i] += d[j] * static_cast<double>(input.beams[static_cast<std::int32_t>(i + j)]->data()[offset]);
    return r;
  }

  EngineInput input;
  std::int32_t terms;
  BeamMatrix matrix;
  BeamNorm norm;
  bool usable = false;
};

std::vector<double> randomVector(std::mt19937& random, std::int32_t size) {
  std::normal_distribution<double> normal;
  std::vector<double> values(static_cast<std::size_t>(size));
  for (double& value : values) value = normal(random);
  return values;
}

TEST(BeamNormTest, StepMovesResidualsByAtMostItsReachTimesItsNormAndOftenNearlyThat) {
  std::mt19937 random(5);
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const Norm n(test::randomProblem(terms, {5, 6}, {10, 12}, 3));
    ASSERT_TRUE(n.usable);
    double tightest = 0.0;
    for (int i = 0; i < 20000; ++i) {
      const std::size_t offset = random() % 120;
      const std::vector<double> d = randomVector(random, terms);
      double values[7] = {};
      for (std::int32_t m = 0; m < 2 * terms - 1; ++m)
        values[m] = static_cast<double>(n.input.beams[m]->data()[offset]);
      const double bound = n.norm.reach(values) * n.norm.stepNorm(d.data());
      const double size = n.of(n.moved(d, offset));
      ASSERT_LE(size, bound) << terms << " terms";
      const float* below[7] = {};
      for (std::int32_t m = 0; m < 2 * terms - 1; ++m) below[m] = n.input.beams[m]->data() + offset;
      double fourth = 0.0;
      n.norm.quickFourths(below, 1, &fourth);
      const double reach = std::pow(n.norm.reach(values), 4.0);
      // reach() may exceed nu by N^(1/64).
      ASSERT_LE(reach, fourth * std::pow(terms, 1.0 / 16.0) * (1.0 + 1e-8));
      ASSERT_LE(fourth, terms * reach * (1.0 + 1e-8));
      tightest = std::max(tightest, size / bound);
    }
    EXPECT_GT(tightest, 0.9) << terms << " terms";
  }
}

TEST(BeamNormTest, ReachOfTheCentreIsOne) {
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const Norm n(test::randomProblem(terms, {5, 6}, {10, 12}, 3));
    double values[7] = {};
    for (std::int32_t m = 0; m < 2 * terms - 1; ++m)
      values[m] = static_cast<double>((*n.input.beams[m])(5, 6));
    // W M is the identity; the bound may exceed its radius by N^(1/64).
    EXPECT_GE(n.norm.reach(values), 1.0 - 1e-9);
    EXPECT_LE(n.norm.reach(values), std::pow(terms, 1.0 / 64.0) * (1.0 + 1e-8));
  }
}

TEST(BeamNormTest, RoundingOfAStepStaysWithinItsBound) {
  std::mt19937 random(6);
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    const Norm n(test::randomProblem(terms, {5, 6}, {10, 12}, 3));
    for (int i = 0; i < 20000; ++i) {
      const std::size_t offset = random() % 120;
      const std::vector<double> d = randomVector(random, terms);
      const std::vector<double> start = randomVector(random, terms);
      std::vector<double> before;
      std::vector<double> error;
      const std::vector<double> exact = n.moved(d, offset);
      for (std::int32_t k = 0; k < terms; ++k) {
        const auto at = static_cast<std::size_t>(k);
        auto value = static_cast<float>(start[at]);
        before.push_back(static_cast<double>(value));
        for (std::int32_t j = 0; j < terms; ++j)
          value = static_cast<float>(static_cast<double>(value) -
                                     static_cast<double>(n.input.beams[k + j]->data()[offset]) *
                                         d[static_cast<std::size_t>(j)]);
        error.push_back(static_cast<double>(value) - (before[at] - exact[at]));
      }
      const double bound = n.norm.relativeRounding() * n.of(before) +
                           n.norm.stepRounding() * n.norm.stepNorm(d.data()) + n.norm.absoluteRounding();
      ASSERT_LE(n.of(error), bound) << terms << " terms";
    }
  }
}

TEST(BeamNormTest, IsRefusedForMatricesThatAreNotPositiveDefiniteOrNearlySingular) {
  CleanProblem problem = test::randomProblem(2, {5, 6}, {10, 12}, 3);
  problem.beams[2](5, 6) = -0.5F;
  EXPECT_FALSE(Norm(problem).usable);
  // M of determinant 1e-9.
  problem.beams[0](5, 6) = 1.0F;
  problem.beams[1](5, 6) = 1.0F;
  problem.beams[2](5, 6) = 1.0F + 1e-7F;
  EXPECT_FALSE(Norm(problem).usable);
}

TEST(BeamReachTest, BoundsEveryElementBelowATileAtAnyPlaceOfThePeriodicBeam) {
  for (const test::Shape beam :
       {test::Shape{10, 12}, test::Shape{33, 71}, test::Shape{64, 64}, test::Shape{9, 130}}) {
    const Norm n(test::randomProblem(2, {5, 6}, beam, 3));
    ThreadTeam team(2);
    for (const test::Shape tile : {test::Shape{1, 1}, test::Shape{3, 5}, test::Shape{8, 64}}) {
      const std::uint32_t rows = std::min(tile.rows, beam.rows);
      const std::uint32_t columns = std::min(tile.columns, beam.columns);
      BeamReach reach;
      reach.prepare(n.input.beams, n.norm, rows, columns, team);
      for (std::uint32_t row = 0; row < beam.rows; ++row)
        for (std::uint32_t column = 0; column < beam.columns; ++column) {
          double largest = 0.0;
          for (std::uint32_t i = 0; i < rows; ++i)
            for (std::uint32_t j = 0; j < columns; ++j) {
              double values[3];
              for (std::int32_t m = 0; m < 3; ++m)
                values[m] = static_cast<double>(
                    (*n.input.beams[m])((row + i) % beam.rows, (column + j) % beam.columns));
              largest = std::max(largest, n.norm.reach(values));
            }
          ASSERT_GE(reach.below(row, column), largest) << row << ", " << column;
        }
    }
  }
}

TEST(BeamNormTest, ErrorOfSinglePrecisionIsThatOfItsRoundingsOrNotKnown) {
  const CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  const Norm measured(problem);
  ASSERT_TRUE(measured.usable);
  // At most 16 roundings of 2^-24, each of a value within condition() x^2; and not needlessly much more.
  const double margin = 16.0 * 0x1p-24 * measured.norm.condition() * 4.0;
  EXPECT_GE(measured.norm.singleError(2.0), margin);
  EXPECT_LE(measured.norm.singleError(2.0), margin * (1.0 + 1e-8));
  for (const double outside : {1e-9, 1e9, HUGE_VAL, std::nan("")})
    EXPECT_EQ(measured.norm.singleError(outside), HUGE_VAL) << outside;
}

TEST(BeamNormTest, BeamsWhoseNormsSinglePrecisionCannotHoldAreGivenUp) {
  CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  for (AMatrix<float>& beam : problem.beams)
    for (std::size_t i = 0; i < beam.size(); ++i) beam.data()[i] *= 1e-9F;
  const Norm measured(problem);
  ASSERT_TRUE(measured.usable);
  EXPECT_EQ(measured.norm.singleError(2.0), HUGE_VAL);
}

TEST(BeamNormTest, SinglePrecisionIsGivenUpForBeamMatricesThatMakeItsErrorLarge) {
  CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  problem.beams[0](9, 20) = 1.0F;
  problem.beams[1](9, 20) = 0.5F;
  problem.beams[2](9, 20) = 0.25F * (1.0F + 1e-4F);
  const Norm measured(problem);
  ASSERT_TRUE(measured.usable);
  ASSERT_GT(16.0 * 0x1p-24 * measured.norm.condition(), 0.02);
  EXPECT_EQ(measured.norm.singleError(1.0), HUGE_VAL);
}

TEST(BeamNormTest, SmallestBeamIsTheSmallestValueOfAnyBeamThatIsNotZero) {
  CleanProblem problem = test::randomProblem(2, {9, 20}, {18, 40}, 3);
  for (AMatrix<float>& beam : problem.beams)
    for (std::size_t i = 0; i < beam.size(); ++i)
      if (std::fabs(beam.data()[i]) < 1e-4F) beam.data()[i] = 1e-4F;
  problem.beams[1](3, 7) = -2e-7F;
  problem.beams[2](0, 0) = 0.0F;
  problem.beams[2](0, 1) = -0.0F;
  const Norm measured(problem);
  ASSERT_TRUE(measured.usable);
  EXPECT_EQ(measured.norm.smallestBeam(), static_cast<double>(2e-7F));
}

}  // namespace
}  // namespace lumo
