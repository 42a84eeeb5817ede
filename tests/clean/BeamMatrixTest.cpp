// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "clean/BeamMatrix.h"
#include "clean/CleanProblem.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;

/// Beams of 4 x 6 pixels that are NaN everywhere but at the centre, which must be all that is read.
CleanProblem centres(const std::vector<float>& values) {
  CleanProblem problem;
  problem.maps.resize((values.size() + 1) / 2);
  for (const float value : values) {
    problem.beams.push_back(test::flatMap({4, 6}, NAN));
    problem.beams.back()(2, 3) = value;
  }
  return problem;
}

/// Gauss-Jordan elimination with pivoting in long double.
std::vector<std::vector<long double>> invert(std::vector<std::vector<long double>> m) {
  const std::size_t n = m.size();
  std::vector<std::vector<long double>> inverse(n, std::vector<long double>(n, 0.0L));
  for (std::size_t i = 0; i < n; ++i) inverse[i][i] = 1.0L;
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c; r < n; ++r)
      if (std::fabs(m[r][c]) > std::fabs(m[pivot][c])) pivot = r;
    std::swap(m[c], m[pivot]);
    std::swap(inverse[c], inverse[pivot]);
    const long double scale = 1.0L / m[c][c];
    for (std::size_t k = 0; k < n; ++k) {
      m[c][k] *= scale;
      inverse[c][k] *= scale;
    }
    for (std::size_t r = 0; r < n; ++r) {
      if (r == c) continue;
      const long double times = m[r][c];
      for (std::size_t k = 0; k < n; ++k) {
        m[r][k] -= times * m[c][k];
        inverse[r][k] -= times * inverse[c][k];
      }
    }
  }
  return inverse;
}

class BeamMatrixSizes : public testing::TestWithParam<std::int32_t> {};

TEST_P(BeamMatrixSizes, InverseEqualsThatOfAnEliminationWithPivoting) {
  const std::int32_t n = GetParam();
  const CleanProblem problem = test::randomProblem(n, {3, 3}, {6, 5}, 5);
  const EngineInput input(problem);
  BeamMatrix matrix;
  const double defect = matrix.prepare(input.beams, n);

  std::vector<std::vector<long double>> m(n, std::vector<long double>(n));
  for (std::int32_t i = 0; i < n; ++i)
    for (std::int32_t j = 0; j < n; ++j) m[i][j] = problem.beams[i + j](3, 2);
  const auto expected = invert(m);
  double worst = 0.0;
  for (std::int32_t i = 0; i < n; ++i) {
    for (std::int32_t j = 0; j < n; ++j) {
      // The moments' matrix has a condition number below 1e4 for four terms: 1e4 times 2^-52, with room.
      EXPECT_NEAR(matrix.inverse()(i, j), static_cast<double>(expected[i][j]),
                  1e-11 * std::fabs(static_cast<double>(expected[i][i])));
      EXPECT_EQ(matrix.inverse()(i, j), matrix.inverse()(j, i));
      double sum = 0.0;
      for (std::int32_t k = 0; k < n; ++k) sum += matrix.inverse()(i, k) * static_cast<double>(m[k][j]);
      worst = std::max(worst, std::fabs(sum - (i == j ? 1.0 : 0.0)));
    }
  }
  EXPECT_LT(defect, 1e-10);
  EXPECT_DOUBLE_EQ(defect, worst);
}

TEST_P(BeamMatrixSizes, ConstraintIsTheChangeOfTheOtherTermsWhenTermZeroIsHeld) {
  const std::int32_t n = GetParam();
  const CleanProblem problem = test::randomProblem(n, {3, 3}, {6, 5}, 6);
  const EngineInput input(problem);
  BeamMatrix matrix;
  ASSERT_LT(matrix.prepare(input.beams, n), 1e-10);
  EXPECT_EQ(matrix.constraint()[0], 1.0);
  // Along v only residual 0 changes, by q: (M v)_i = 0 for i >= 1 and (M v)_0 = q.
  for (std::int32_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (std::int32_t j = 0; j < n; ++j)
      sum += static_cast<double>(problem.beams[i + j](3, 2)) * matrix.constraint()[j];
    EXPECT_NEAR(sum, i == 0 ? matrix.q() : 0.0, 1e-11);
  }
}

INSTANTIATE_TEST_SUITE_P(Terms, BeamMatrixSizes, testing::Values(1, 2, 3, 4));

TEST(BeamMatrixTest, OneTermHasTheCentreOfBeamZero) {
  // The root of a quarter and all that follows are exact.
  const EngineInput input(centres({0.25F}));
  BeamMatrix matrix;
  EXPECT_EQ(matrix.prepare(input.beams, 1), 0.0);
  EXPECT_EQ(matrix.inverse()(0, 0), 4.0);
  EXPECT_EQ(matrix.q(), 0.25);
  EXPECT_EQ(matrix.constraint().count(), 1);
}

TEST(BeamMatrixTest, ConstraintOfTermZeroIsExactlyOneWhateverTheCentre) {
  // For some of these W (1 / W) is not 1 in double.
  for (int i = 1; i <= 200; ++i) {
    const EngineInput input(centres({static_cast<float>(i) / 64.0F}));
    BeamMatrix matrix;
    matrix.prepare(input.beams, 1);
    ASSERT_EQ(matrix.constraint()[0], 1.0);
  }
}

TEST(BeamMatrixTest, IndefiniteMatrixGivesNotANumberWithoutComplaint) {
  const EngineInput input(centres({1.0F, 0.9F, 0.5F}));
  BeamMatrix matrix;
  EXPECT_TRUE(std::isnan(matrix.prepare(input.beams, 2)));
  EXPECT_TRUE(std::isnan(matrix.inverse()(1, 1)));
}

TEST(BeamMatrixTest, ZeroCentreGivesAnInfiniteInverse) {
  const EngineInput input(centres({0.0F}));
  BeamMatrix matrix;
  EXPECT_TRUE(std::isnan(matrix.prepare(input.beams, 1)));
  EXPECT_TRUE(std::isinf(matrix.inverse()(0, 0)));
}

}  // namespace
}  // namespace lumo
