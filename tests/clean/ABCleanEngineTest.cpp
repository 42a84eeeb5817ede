// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <utility>
#include <vector>

#include "clean/ABCleanEngine.h"
#include "clean/CleanProblem.h"

namespace lumo {
namespace {

using test::EngineInput;

/// An engine whose search follows a script: which iterations find a pixel, all of them (1, 2) with
/// increment 3.
class ScriptedEngine : public ABCleanEngine {
 public:
  ScriptedEngine(EngineInput& input, const CleanParameters& parameters, std::vector<bool> finds)
      : ABCleanEngine(input.residuals, input.beams, parameters), finds_(std::move(finds)) {}

  int subtractions = 0;

 protected:
  bool search(double /*gain*/, CleanStep& step) override {
    const bool found = finds_[next_++];
    if (found) step = {1, 2, 7.0, {3.0}};
    return found;
  }
  void subtract(const CleanStep& step) override {
    EXPECT_EQ(step.row, 1U);
    EXPECT_EQ(step.column, 2U);
    ++subtractions;
  }

 private:
  std::vector<bool> finds_;
  std::size_t next_ = 0;
};

class Recorder : public CleanObserver {
 public:
  void iterationDone(const CleanProgress& progress) override { seen.push_back(progress); }
  std::vector<CleanProgress> seen;
};

class ABCleanEngineTest : public testing::Test {
 protected:
  int run(std::vector<bool> finds) {
    parameters_.iterations = static_cast<std::int32_t>(finds.size());
    engine_.emplace(input_, parameters_, std::move(finds));
    return engine_->Run(stop_, &recorder_);
  }

  EngineInput input_{test::randomProblem(1, {3, 4}, {6, 8}, 1)};
  CleanParameters parameters_;
  std::atomic<int> stop_{0};
  Recorder recorder_;
  std::optional<ScriptedEngine> engine_;
};

TEST_F(ABCleanEngineTest, NothingIsAppliedWhileNoIterationHasFoundAPixel) {
  EXPECT_EQ(run({false, false}), 1);
  EXPECT_EQ(engine_->subtractions, 0);
  EXPECT_EQ(engine_->totalFlux(), 0.0);
  EXPECT_EQ(engine_->iterationsDone(), 2);
  ASSERT_EQ(recorder_.seen.size(), 2U);
  EXPECT_FALSE(recorder_.seen[1].found);
}

TEST_F(ABCleanEngineTest, AnIterationWithoutAPixelAppliesTheStepBeforeAgain) {
  EXPECT_EQ(run({false, true, false, false}), 1);
  EXPECT_EQ(engine_->subtractions, 3);
  EXPECT_EQ(engine_->components()[0](1, 2), 9.0F);
  EXPECT_EQ(engine_->totalFlux(), 9.0);
  EXPECT_TRUE(recorder_.seen[1].found);
  EXPECT_FALSE(recorder_.seen[2].found);
  EXPECT_EQ(recorder_.seen[2].row, 1U);
}

TEST_F(ABCleanEngineTest, ProgressTellsIterationFluxPeakScoreAndGain) {
  parameters_.gain = 0.25;
  EXPECT_EQ(run({true, true}), 1);
  ASSERT_EQ(recorder_.seen.size(), 2U);
  EXPECT_EQ(recorder_.seen[1].iteration, 2);
  EXPECT_EQ(recorder_.seen[1].totalFlux, 6.0);
  EXPECT_EQ(recorder_.seen[1].gain, 0.25);
  EXPECT_EQ(recorder_.seen[1].row, 1U);
  EXPECT_EQ(recorder_.seen[1].column, 2U);
  EXPECT_EQ(recorder_.seen[1].score, 7.0);
}

TEST_F(ABCleanEngineTest, StopIsReadBeforeAnyWorkOfAnIteration) {
  stop_ = 1;
  EXPECT_EQ(run({true}), 0);
  EXPECT_EQ(engine_->iterationsDone(), 0);
  EXPECT_EQ(engine_->subtractions, 0);
  EXPECT_TRUE(recorder_.seen.empty());
}

}  // namespace
}  // namespace lumo
