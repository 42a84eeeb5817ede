// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/CleanViewModel.h"
#include "clean/PlainCleanEngine.h"

namespace lumo {
namespace {

using test::EngineInput;
using test::flatMap;
using test::sameBits;

constexpr test::Shape kShape{6, 8};
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// A CLEAN of one term whose component map a test can see, after `iterations` iterations on a dirty map with
/// a single source, and a restoring beam of 3 x 5 pixels that has no symmetry.
class CleanViewModelTest : public testing::Test {
 protected:
  CleanViewModelTest() {
    for (std::uint32_t i = 0; i < beam_.size(); ++i) beam_.data()[i] = static_cast<float>(i + 1);
    problem_.maps.push_back(flatMap(kShape, 0.0F));
    problem_.beams.push_back(flatMap({12, 16}, 0.0F));
    problem_.beams[0](6, 8) = 1.0F;
  }

  CleanViewModel viewAfter(std::int32_t iterations) {
    input_ = std::make_unique<EngineInput>(problem_);
    CleanParameters parameters;
    parameters.iterations = iterations;
    parameters.gain = 1.0;
    engine_ = std::make_unique<PlainCleanEngine>(input_->residuals, input_->beams, parameters);
    const std::atomic<int> stop{0};
    EXPECT_EQ(engine_->Run(stop, nullptr), 1);
    return CleanViewModel::prepare(CleanScene(*engine_, beam_, range_, ThreadPriority::kNormal));
  }

  AMatrix<float> beam_{3, 5};
  TMinMax range_{-4.0, 3.0, -3.0, 2.0, -0.5, 9.0};
  test::CleanProblem problem_;
  std::unique_ptr<EngineInput> input_;
  std::unique_ptr<PlainCleanEngine> engine_;
};

TEST_F(CleanViewModelTest, BeforeTheFirstIterationTheRestoredMapIsZeroAndItsValueRangeIsZeroToZero) {
  problem_.maps[0](2, 3) = 2.0F;
  const CleanViewModel view = viewAfter(0);
  EXPECT_TRUE(sameBits(view.restored, flatMap(kShape, 0.0F)));
  EXPECT_EQ(view.restoredRange.vMin, 0.0);
  EXPECT_EQ(view.restoredRange.vMax, 0.0);
}

TEST_F(CleanViewModelTest, ComponentInsideShowsTheWholeBeamAroundItsPixel) {
  problem_.maps[0](2, 3) = 2.0F;
  const CleanViewModel view = viewAfter(1);
  AMatrix<float> expected = flatMap(kShape, 0.0F);
  for (std::uint32_t r = 0; r < 3; ++r)
    for (std::uint32_t s = 0; s < 5; ++s) expected(1 + r, 1 + s) = 2.0F * static_cast<float>(5 * r + s + 1);
  EXPECT_TRUE(sameBits(view.restored, expected));
  EXPECT_EQ(view.restoredRange.vMax, 30.0);
}

TEST_F(CleanViewModelTest, ComponentNearAnEdgeShowsOnlyThePartOfTheBeamInsideTheMap) {
  problem_.maps[0](0, 7) = -1.0F;
  const CleanViewModel view = viewAfter(1);
  AMatrix<float> expected = flatMap(kShape, 0.0F);
  // Beam rows 1 and 2 and columns 0 to 2 lie inside; nothing comes back on the other side.
  for (std::uint32_t r = 1; r < 3; ++r)
    for (std::uint32_t s = 0; s < 3; ++s) expected(r - 1, 5 + s) = -static_cast<float>(5 * r + s + 1);
  EXPECT_TRUE(sameBits(view.restored, expected));
  EXPECT_EQ(view.restoredRange.vMin, -13.0);
  EXPECT_EQ(view.restoredRange.vMax, 0.0);
}

TEST_F(CleanViewModelTest, RestoredMapHasTheStoredExtentAndTheResidualTheWholeStoredRecord) {
  problem_.maps[0](2, 3) = 2.0F;
  const CleanViewModel view = viewAfter(1);
  EXPECT_EQ(view.residualRange, range_);
  EXPECT_EQ(view.restoredRange.xMin, -4.0);
  EXPECT_EQ(view.restoredRange.xMax, 3.0);
  EXPECT_EQ(view.restoredRange.yMin, -3.0);
  EXPECT_EQ(view.restoredRange.yMax, 2.0);
}

TEST_F(CleanViewModelTest, ResidualIsTheEnginesOwnMapAsItStands) {
  problem_.maps[0](2, 3) = 2.0F;
  const CleanViewModel view = viewAfter(1);
  EXPECT_EQ(view.residual, input_->residuals[0]);
  EXPECT_TRUE(sameBits(*view.residual, flatMap(kShape, 0.0F)));
}

TMinMax rangeOf(const std::vector<float>& values) {
  AMatrix<float> map(1, static_cast<std::uint32_t>(values.size()));
  for (std::uint32_t i = 0; i < map.size(); ++i) map(0, i) = values[i];
  return withValueRange({}, map);
}

TEST(WithValueRangeTest, SpansAllValues) {
  const TMinMax range = rangeOf({-1.0F, 5.0F, -3.0F, 2.0F});
  EXPECT_EQ(range.vMin, -3.0);
  EXPECT_EQ(range.vMax, 5.0);
}

TEST(WithValueRangeTest, ValueThatIsNotANumberBecomesTheMaximumUntilTheNextValue) {
  const TMinMax before = rangeOf({7.0F, kNan, 2.0F, 1.0F});
  EXPECT_EQ(before.vMin, 1.0);
  EXPECT_EQ(before.vMax, 2.0);
  const TMinMax last = rangeOf({7.0F, kNan});
  EXPECT_EQ(last.vMin, 7.0);
  EXPECT_TRUE(std::isnan(last.vMax));
}

TEST(WithValueRangeTest, MapWithoutPixelsHasAnUnsetRange) {
  const TMinMax range = withValueRange({}, AMatrix<float>());
  EXPECT_EQ(range.vMin, 1e38);
  EXPECT_EQ(range.vMax, -1e38);
}

}  // namespace
}  // namespace lumo
