// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "clean/CleanCourse.h"
#include "clean/CleanProblem.h"
#include "clean/CleanRecord.h"
#include "clean/PlainCleanEngine.h"

namespace lumo {
namespace {

using testing::ElementsAre;

/// A CLEAN of one point source of `terms` terms.
CleanCourse courseOf(std::int32_t terms, const std::vector<double>& source, double gain,
                     std::int32_t iterations) {
  const test::CleanProblem problem = test::sourceProblem(terms, {12, 10}, {{3, 4, source}});
  test::EngineInput maps(problem);
  CleanParameters parameters;
  parameters.gain = gain;
  parameters.iterations = iterations;
  PlainCleanEngine engine(maps.residuals, maps.beams, parameters);
  CleanRecord record;
  const std::atomic<int> stop{0};
  EXPECT_EQ(engine.Run(stop, &record), 1);
  return CleanCourse(record.lines());
}

TEST(CleanCourseTest, WithoutIterationsThereAreNoPoints) {
  const CleanCourse course(std::vector<CleanProgress>{});
  EXPECT_TRUE(course.iteration.empty());
  EXPECT_TRUE(course.residual.empty());
}

TEST(CleanCourseTest, FluxAndTheSizeOfTheResidualAreThoseOfTheRecord) {
  const CleanCourse course(std::vector<CleanProgress>{{1, 0.5, 0.1, true, 3, 4, 2.0, 5.0},
                                                      {2, -0.25, 0.1, true, 3, 4, 1.0, -4.0}});
  EXPECT_THAT(course.iteration, ElementsAre(1, 2));
  EXPECT_THAT(course.totalFlux, ElementsAre(0.5, -0.25));
  EXPECT_THAT(course.residual, ElementsAre(5.0, 4.0));
}

TEST(CleanCourseTest, OfOneTermTheResidualFromTheScoreIsTheResidual) {
  // Of a lone point source every iteration leaves the share 1 - g at its pixel.
  const CleanCourse course = courseOf(1, {-3.0}, 0.2, 20);
  ASSERT_EQ(course.iteration.size(), 20u);
  for (std::size_t i = 0; i < 20; ++i) {
    const double expected = 3.0 * std::pow(0.8, i);
    // Maps and beams are single precision, and twenty roundings add up.
    EXPECT_NEAR(course.residual[i], expected, 3e-6) << i;
    EXPECT_NEAR(course.jointResidual[i], expected, 3e-6) << i;
  }
}

TEST(CleanCourseTest, WhereHigherTermsMatterTheResidualOfAllTermsIsTheLarger) {
  const CleanCourse course = courseOf(2, {3.0, -2.0}, 0.2, 5);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_GT(course.jointResidual[i], 1.001 * course.residual[i]) << i;
}

TEST(CleanCourseTest, AtAGainOfTwoNothingCanBeToldFromTheScore) {
  const CleanCourse course({{1, 0.5, 2.0, true, 3, 4, 0.0, 5.0}});
  EXPECT_FALSE(std::isfinite(course.jointResidual[0]));
  EXPECT_EQ(course.residual[0], 5.0);
}

}  // namespace
}  // namespace lumo
