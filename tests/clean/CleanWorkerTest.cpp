// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <memory>
#include <semaphore>
#include <stdexcept>
#include <thread>

#include "clean/CleanProblem.h"
#include "clean/CleanWorker.h"
#include "clean/PlainCleanEngine.h"
#include "clean/StraightClean.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::EngineInput;
using test::sameBits;

/// Holds the worker inside one iteration until the test lets it go.
class Gate : public CleanObserver {
 public:
  explicit Gate(std::int32_t iteration) : iteration_(iteration) {}

  void iterationDone(const CleanProgress& progress) override {
    if (progress.iteration != iteration_) return;
    reached_.release();
    opened_.acquire();
  }
  /// Returns when the worker is held.
  void waitUntilReached() { reached_.acquire(); }
  void open() { opened_.release(); }

 private:
  std::int32_t iteration_;
  std::binary_semaphore reached_{0};
  std::binary_semaphore opened_{0};
};

class CleanWorkerTest : public testing::Test {
 protected:
  static CleanParameters iterations(std::int32_t count) {
    CleanParameters parameters;
    parameters.iterations = count;
    return parameters;
  }

  void expectMapsAfter(std::int32_t count) {
    const test::StraightResult expected = straightClean(problem_, iterations(count));
    for (std::int32_t k = 0; k < 2; ++k) {
      EXPECT_TRUE(sameBits(*input_.residuals[k], expected.residuals[k])) << "residual " << k;
      EXPECT_TRUE(sameBits(engine_->components()[k], expected.components[k])) << "component " << k;
    }
  }

  void makeEngine(std::int32_t count) {
    engine_ = std::make_unique<PlainCleanEngine>(input_.residuals, input_.beams, iterations(count));
  }

  static constexpr std::int32_t kEndless = std::numeric_limits<std::int32_t>::max();

  CleanProblem problem_ = test::sourceProblem(2, {8, 9}, {{2, 3, {2.0, -1.4}}, {6, 5, {1.0, 0.3}}});
  EngineInput input_{problem_};
  std::unique_ptr<PlainCleanEngine> engine_;
};

TEST_F(CleanWorkerTest, RunsTheEngineToItsEnd) {
  makeEngine(30);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.wait();
  EXPECT_TRUE(worker.finished());
  EXPECT_EQ(worker.result(), 1);
  EXPECT_TRUE(worker.status().ok());
  EXPECT_EQ(worker.iteration(), 30);
  EXPECT_EQ(worker.totalFlux(), engine_->totalFlux());
  expectMapsAfter(30);
}

TEST_F(CleanWorkerTest, PauseParksAtTheEndOfTheRunningIteration) {
  makeEngine(40);
  Gate gate(5);
  CleanWorker worker(*engine_, &gate);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  gate.waitUntilReached();
  worker.requestPause();
  gate.open();
  worker.pause();
  EXPECT_FALSE(worker.finished());
  EXPECT_EQ(worker.iteration(), 5);
  expectMapsAfter(5);
  worker.resume();
  worker.wait();
}

TEST_F(CleanWorkerTest, ContinueAfterAPauseGoesOnFromTheSameIteration) {
  makeEngine(40);
  Gate gate(5);
  CleanWorker worker(*engine_, &gate);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  gate.waitUntilReached();
  worker.requestPause();
  gate.open();
  worker.pause();
  worker.resume();
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
  EXPECT_EQ(worker.iteration(), 40);
  expectMapsAfter(40);
}

TEST_F(CleanWorkerTest, StopWhilePausedCompletesExactlyTheIterationInProgress) {
  makeEngine(kEndless);
  Gate gate(5);
  CleanWorker worker(*engine_, &gate);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  gate.waitUntilReached();
  worker.requestPause();
  gate.open();
  worker.pause();
  worker.stop();
  // A stop alone leaves the worker parked, so that a preview may go on reading.
  EXPECT_FALSE(worker.waitFor(std::chrono::milliseconds(5)));
  worker.resume();
  worker.wait();
  EXPECT_EQ(worker.result(), 0);
  EXPECT_TRUE(worker.status().ok());
  EXPECT_EQ(engine_->iterationsDone(), 5);
  expectMapsAfter(5);
}

TEST_F(CleanWorkerTest, PauseAskedForBeforeTheStartComesAfterTheFirstIteration) {
  makeEngine(10);
  CleanWorker worker(*engine_);
  worker.pause();
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.pause();
  EXPECT_EQ(worker.iteration(), 1);
  worker.resume();
  worker.wait();
  EXPECT_EQ(worker.iteration(), 10);
}

TEST_F(CleanWorkerTest, PauseInTheLastIterationStillEndsAsCompleted) {
  makeEngine(5);
  Gate gate(5);
  CleanWorker worker(*engine_, &gate);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  gate.waitUntilReached();
  worker.requestPause();
  gate.open();
  worker.pause();
  EXPECT_FALSE(worker.finished());
  worker.resume();
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
}

TEST_F(CleanWorkerTest, PauseAfterTheEndReturnsAtOnce) {
  makeEngine(3);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.wait();
  worker.pause();
  EXPECT_TRUE(worker.finished());
  expectMapsAfter(3);
}

TEST_F(CleanWorkerTest, StopBeforeTheStartDoesNoIteration) {
  makeEngine(10);
  CleanWorker worker(*engine_);
  worker.stop();
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.wait();
  EXPECT_EQ(worker.result(), 0);
  EXPECT_EQ(worker.iteration(), 0);
  expectMapsAfter(0);
}

TEST_F(CleanWorkerTest, StopEndsARunThatWouldNotEnd) {
  makeEngine(kEndless);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.stop();
  worker.wait();
  EXPECT_EQ(worker.result(), 0);
  EXPECT_EQ(worker.iteration(), engine_->iterationsDone());
}

TEST_F(CleanWorkerTest, NoIterationsFinishAtOnceWithoutProgress) {
  makeEngine(0);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
  EXPECT_EQ(worker.iteration(), 0);
}

TEST_F(CleanWorkerTest, PriorityIsWhatTheSystemGivesAndARefusalIsNoFailure) {
  bool granted = false;
  std::jthread([&granted] { granted = setThreadPriority(ThreadPriority::kTimecritical).ok(); }).join();
  makeEngine(3);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kTimecritical).ok());
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
  EXPECT_TRUE(worker.status().ok());
  EXPECT_EQ(worker.priorityStatus().ok(), granted);
}

TEST_F(CleanWorkerTest, SecondStartIsRefused) {
  makeEngine(3);
  CleanWorker worker(*engine_);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  EXPECT_EQ(worker.start(ThreadPriority::kNormal).code(), StatusCode::kInvalidValue);
  worker.wait();
  EXPECT_EQ(worker.start(ThreadPriority::kNormal).code(), StatusCode::kInvalidValue);
  EXPECT_EQ(engine_->iterationsDone(), 3);
}

TEST_F(CleanWorkerTest, WaitOnAWorkerThatWasNeverStartedReturns) {
  makeEngine(3);
  CleanWorker worker(*engine_);
  worker.wait();
  EXPECT_FALSE(worker.finished());
}

TEST_F(CleanWorkerTest, DestructionEndsARunningWorker) {
  makeEngine(kEndless);
  Gate gate(1);
  {
    CleanWorker worker(*engine_, &gate);
    ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
    gate.waitUntilReached();
    gate.open();
  }
  EXPECT_GE(engine_->iterationsDone(), 1);
}

TEST_F(CleanWorkerTest, DestructionEndsAPausedWorker) {
  makeEngine(kEndless);
  {
    CleanWorker worker(*engine_);
    worker.requestPause();
    ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
    worker.pause();
  }
  EXPECT_EQ(engine_->iterationsDone(), 1);
}

TEST_F(CleanWorkerTest, NothingEscapesTheThread) {
  class Thrower : public CleanObserver {
    void iterationDone(const CleanProgress&) override { throw std::runtime_error("no"); }
  };
  makeEngine(5);
  Thrower thrower;
  CleanWorker worker(*engine_, &thrower);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  worker.wait();
  EXPECT_EQ(worker.result(), 0);
  EXPECT_FALSE(worker.status().ok());
}

TEST_F(CleanWorkerTest, ProgressIsThatOfTheIterationBeingReported) {
  makeEngine(10);
  Gate gate(4);
  CleanWorker worker(*engine_, &gate);
  ASSERT_TRUE(worker.start(ThreadPriority::kNormal).ok());
  gate.waitUntilReached();
  EXPECT_EQ(worker.iteration(), 4);
  EXPECT_EQ(worker.totalFlux(), straightClean(problem_, iterations(4)).totalFlux);
  gate.open();
  worker.wait();
}

TEST_F(CleanWorkerTest, ManyPausesShowWholeIterationsAndChangeNoBit) {
  constexpr std::int32_t kIterations = 3000;
  makeEngine(kIterations);
  CleanWorker worker(*engine_);
  worker.requestPause();
  ASSERT_TRUE(worker.start(ThreadPriority::kIdle).ok());
  std::int32_t last = 0;
  for (int i = 0; i < 100; ++i) {
    worker.pause();
    const std::int32_t now = engine_->iterationsDone();
    EXPECT_EQ(now, worker.iteration());
    EXPECT_GE(now, last);
    last = now;
    if (i % 20 == 0) expectMapsAfter(now);
    worker.resume();
  }
  worker.wait();
  EXPECT_EQ(worker.result(), 1);
  expectMapsAfter(kIterations);
}

}  // namespace
}  // namespace lumo
