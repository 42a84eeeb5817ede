// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/CleanTrace.h"
#include "clean/MergedTileKernel.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;
using test::Shape;

constexpr double kUnit = 0x1p-24;

/// A problem, some steps, and the tile kernel on it.
class Pass {
 public:
  explicit Pass(const CleanProblem& problem) : problem_(problem), input_(problem), terms_(problem.terms()) {}

  static std::vector<CleanUpdate> steps(std::size_t count, Shape map) {
    std::vector<CleanUpdate> steps(count);
    for (std::size_t p = 0; p < count; ++p) {
      steps[p].row = static_cast<std::uint32_t>(7 * p % map.rows);
      steps[p].column = static_cast<std::uint32_t>(11 * p % map.columns);
      for (std::size_t j = 0; j < std::size(steps[p].increments); ++j)
        steps[p].increments[j] = std::sin(static_cast<double>(3 * p + j));
    }
    return steps;
  }

  void subtract(const CleanTileArea& area, const std::vector<CleanUpdate>& steps) {
    CleanTileMaps maps;
    maps.terms = terms_;
    for (std::int32_t k = 0; k < terms_; ++k) maps.maps[k] = input_.residuals[k]->data();
    for (std::int32_t m = 0; m < input_.beams.count(); ++m) maps.beams[m] = input_.beams[m]->data();
    maps.mapColumns = input_.residuals[0]->columns();
    maps.beamRows = input_.beams[0]->rows();
    maps.beamColumns = input_.beams[0]->columns();
    subtractMerged(maps, area, steps.data(), steps.size());
  }

  /// Largest deviation of the tile from the dirty maps less the steps, in units of what the sums may be wrong
  /// by.
  [[nodiscard]] double worst(const CleanTileArea& area, const std::vector<CleanUpdate>& steps) const {
    double worst = 0.0;
    for (std::uint32_t row = area.firstRow; row < area.lastRow; ++row)
      for (std::uint32_t column = area.firstColumn; column < area.lastColumn; ++column)
        for (std::int32_t k = 0; k < terms_; ++k) worst = std::max(worst, deviation(row, column, k, steps));
    return worst;
  }

  [[nodiscard]] double residual(std::int32_t k, std::uint32_t row, std::uint32_t column) const {
    return static_cast<double>((*input_.residuals[k])(row, column));
  }
  [[nodiscard]] const EngineInput& input() const { return input_; }

 private:
  [[nodiscard]] double deviation(std::uint32_t row, std::uint32_t column, std::int32_t k,
                                 const std::vector<CleanUpdate>& steps) const {
    const AMatrix<float>& first = problem_.beams[0];
    const auto dirty = static_cast<double>(problem_.maps[static_cast<std::size_t>(k)](row, column));
    double expected = dirty;
    double size = 0.0;
    for (const CleanUpdate& step : steps) {
      const std::uint32_t y = (first.rows() / 2 + first.rows() + row - step.row) % first.rows();
      const std::uint32_t x =
          (first.columns() / 2 + first.columns() + column - step.column) % first.columns();
      for (std::int32_t j = 0; j < terms_; ++j) {
        const double term =
            static_cast<double>(
                problem_.beams[static_cast<std::size_t>(k) + static_cast<std::size_t>(j)](y, x)) *
            step.increments[j];
        expected -= term;
        size += std::fabs(term);
      }
    }
    const double allowed = 2.0 * static_cast<double>(steps.size()) * terms_ * kUnit * size +
                           2.0 * kUnit * (std::fabs(dirty) + size);
    return std::fabs(residual(k, row, column) - expected) / allowed;
  }

  const CleanProblem& problem_;
  EngineInput input_;
  std::int32_t terms_;
};

TEST(MergedTileKernelTest, TakesTheSumOfTheStepsOffWithinTheRoundingOfTheSum) {
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    // Beams that wrap in the tile, and beams that do not; rows of whole vectors and of parts of one.
    for (const Shape beam : {Shape{40, 150}, Shape{80, 300}})
      for (const std::size_t count : {std::size_t{1}, std::size_t{23}}) {
        const Shape map{40, 150};
        const CleanProblem problem = test::randomProblem(terms, map, beam, 11);
        Pass pass(problem);
        const CleanTileArea area{3, 21, 5, 144};
        const std::vector<CleanUpdate> steps = Pass::steps(count, map);
        pass.subtract(area, steps);
        EXPECT_LE(pass.worst(area, steps), 1.0) << terms << " terms, " << count << " steps";
        EXPECT_EQ(pass.residual(0, 2, 10), static_cast<double>(problem.maps[0](2, 10)));
        EXPECT_EQ(pass.residual(0, 21, 10), static_cast<double>(problem.maps[0](21, 10)));
        EXPECT_EQ(pass.residual(0, 5, 4), static_cast<double>(problem.maps[0](5, 4)));
        EXPECT_EQ(pass.residual(0, 5, 144), static_cast<double>(problem.maps[0](5, 144)));
      }
}

TEST(MergedTileKernelTest, BitsOfAPixelDoNotDependOnTheTile) {
  // Beams that wrap in columns, in rows, in both and not at all; in a part of the tile less than in all of
  // it.
  for (const Shape beam : {Shape{70, 120}, Shape{30, 300}, Shape{30, 120}, Shape{40, 180}}) {
    const CleanProblem problem = test::randomProblem(2, {20, 90}, beam, 8);
    const std::vector<CleanUpdate> steps = Pass::steps(3, {20, 90});
    Pass whole(problem);
    whole.subtract({0, 20, 0, 90}, steps);
    Pass parts(problem);
    for (const std::uint32_t row : {0U, 7U, 8U})
      for (const std::uint32_t column : {0U, 33U}) {
        const std::uint32_t lastRow = row == 0 ? 7 : row == 7 ? 8 : 20;
        parts.subtract({row, lastRow, column, column == 0 ? 33U : 90U}, steps);
      }
    for (std::int32_t k = 0; k < 2; ++k)
      EXPECT_TRUE(test::sameBits(*parts.input().residuals[k], *whole.input().residuals[k]))
          << beam.rows << " x " << beam.columns << ", map " << k;
  }
}

TEST(MergedTileKernelTest, BitsDoNotDependOnTheInstructionSet) {
  const CleanProblem problem = test::randomProblem(3, {20, 90}, {20, 90}, 8);
  const CleanTileArea area{0, 20, 3, 90};
  const std::vector<CleanUpdate> steps = Pass::steps(17, {20, 90});
  Pass reference(problem);
  reference.subtract(area, steps);
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const test::TargetGuard guard(target);
    Pass pass(problem);
    pass.subtract(area, steps);
    for (std::int32_t k = 0; k < 3; ++k)
      EXPECT_EQ(std::memcmp(pass.input().residuals[k]->data(), reference.input().residuals[k]->data(),
                            sizeof(float) * pass.input().residuals[k]->size()),
                0)
          << hwy::TargetName(target) << ", map " << k;
  }
}

}  // namespace
}  // namespace lumo
