// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/HeadlessCleanWatcher.h"
#include "clean/PlainCleanEngine.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

using test::EngineInput;

class BarRecorder : public ProgressBar {
 public:
  void setPos(int percent) override { seen.push_back(percent); }
  std::vector<int> seen;
};

class TextRecorder : public StatusText {
 public:
  void setText(std::string_view text) override { seen.emplace_back(text); }
  std::vector<std::string> seen;
};

/// Sets the cancel flag at one iteration.
class Canceller : public CleanObserver {
 public:
  Canceller(CancelFlag& flag, std::int32_t iteration) : flag_(flag), iteration_(iteration) {}
  void iterationDone(const CleanProgress& progress) override {
    if (progress.iteration == iteration_) flag_ = 1;
  }

 private:
  CancelFlag& flag_;
  std::int32_t iteration_;
};

class HeadlessCleanWatcherTest : public testing::Test {
 protected:
  void run(std::int32_t iterations, CleanObserver* observer = nullptr) {
    CleanParameters parameters;
    parameters.iterations = iterations;
    engine_ = std::make_unique<PlainCleanEngine>(input_.residuals, input_.beams, parameters);
    worker_ = std::make_unique<CleanWorker>(*engine_, observer);
    HeadlessCleanWatcher watcher(&cancel_, &bar_, &text_);
    watcher.watch(*worker_, CleanScene(*engine_, beam_, {}, ThreadPriority::kNormal));
  }

  EngineInput input_{test::sourceProblem(1, {8, 8}, {{2, 3, {2.0}}})};
  AMatrix<float> beam_;
  CancelFlag cancel_{0};
  BarRecorder bar_;
  TextRecorder text_;
  std::unique_ptr<PlainCleanEngine> engine_;
  std::unique_ptr<CleanWorker> worker_;
};

TEST_F(HeadlessCleanWatcherTest, ReturnsWhenTheWorkerHasFinishedWithTheLastProgressShown) {
  run(50);
  EXPECT_TRUE(worker_->finished());
  EXPECT_EQ(worker_->result(), 1);
  ASSERT_FALSE(bar_.seen.empty());
  EXPECT_EQ(bar_.seen.back(), 100);
  ASSERT_FALSE(text_.seen.empty());
  EXPECT_EQ(text_.seen.back(), "Iteration: 50  Total FLUX: " + nValToStr(engine_->totalFlux(), 6));
}

TEST_F(HeadlessCleanWatcherTest, NoIterationsWriteNoText) {
  run(0);
  EXPECT_EQ(worker_->result(), 1);
  EXPECT_TRUE(text_.seen.empty());
}

TEST_F(HeadlessCleanWatcherTest, CancelBeforeTheStartDoesNoIteration) {
  cancel_ = 1;
  run(1000);
  EXPECT_TRUE(worker_->finished());
  EXPECT_EQ(worker_->result(), 0);
  EXPECT_EQ(engine_->iterationsDone(), 0);
  EXPECT_TRUE(text_.seen.empty());
}

TEST_F(HeadlessCleanWatcherTest, CancelDuringTheRunStopsIt) {
  Canceller canceller(cancel_, 3);
  run(std::numeric_limits<std::int32_t>::max(), &canceller);
  EXPECT_TRUE(worker_->finished());
  EXPECT_EQ(worker_->result(), 0);
  EXPECT_GE(engine_->iterationsDone(), 3);
  EXPECT_EQ(bar_.seen.back(), 0);
}

TEST_F(HeadlessCleanWatcherTest, WatchesWithoutAnyIndicator) {
  engine_ = std::make_unique<PlainCleanEngine>(input_.residuals, input_.beams, CleanParameters{});
  worker_ = std::make_unique<CleanWorker>(*engine_);
  HeadlessCleanWatcher watcher(nullptr, nullptr, nullptr);
  watcher.watch(*worker_, CleanScene(*engine_, beam_, {}, ThreadPriority::kNormal));
  EXPECT_EQ(engine_->iterationsDone(), CleanParameters{}.iterations);
}

}  // namespace
}  // namespace lumo
