// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "clean/WatchedCleanRecord.h"

namespace lumo {
namespace {

CleanProgress progressOf(std::int32_t iteration) {
  CleanProgress progress;
  progress.iteration = iteration;
  progress.totalFlux = 2.0 * iteration;
  progress.residual = -3.0 * iteration;
  return progress;
}

class WatchedCleanRecordTest : public testing::Test {
 protected:
  void iterate(std::int32_t to) {
    for (; done_ < to; ++done_) record_.iterationDone(progressOf(done_ + 1));
  }

  WatchedCleanRecord record_;
  std::vector<CleanProgress> lines_;
  std::int32_t done_ = 0;
};

TEST_F(WatchedCleanRecordTest, NothingIsCopiedThatWasNotAskedFor) {
  iterate(5);
  EXPECT_FALSE(record_.fetchCopy(lines_));
  EXPECT_TRUE(lines_.empty());
  EXPECT_EQ(record_.record().lines().size(), 5u);
}

TEST_F(WatchedCleanRecordTest, TheCopyIsOfTheFirstIterationThatEndsAfterTheQuestion) {
  iterate(5);
  record_.requestCopy();
  EXPECT_FALSE(record_.fetchCopy(lines_)) << "the iteration has not ended yet";
  iterate(9);
  ASSERT_TRUE(record_.fetchCopy(lines_));
  ASSERT_EQ(lines_.size(), 6u);
  EXPECT_EQ(lines_.back().iteration, 6);
  EXPECT_EQ(lines_.back().totalFlux, 12.0);
}

TEST_F(WatchedCleanRecordTest, EachCopyIsGivenOnceAndEachQuestionAnsweredOnce) {
  record_.requestCopy();
  iterate(1);
  EXPECT_TRUE(record_.fetchCopy(lines_));
  EXPECT_FALSE(record_.fetchCopy(lines_));
  iterate(2);
  EXPECT_FALSE(record_.fetchCopy(lines_));
  EXPECT_EQ(lines_.size(), 1u);
}

// For the thread sanitizer, and for halves of two copies in one.
TEST_F(WatchedCleanRecordTest, CopiesTakenDuringTheRunAreWhole) {
  std::atomic<bool> isRead{false};
  std::jthread clean([this, &isRead] {
    while (!isRead || done_ < 100000) iterate(done_ + 1);
  });
  std::int32_t last = 0;
  for (int copies = 0; copies < 200;) {
    record_.requestCopy();
    if (!record_.fetchCopy(lines_)) continue;
    ++copies;
    ASSERT_LE(lines_.size(), CleanRecord::kMostLines);
    const std::int32_t stride = lines_[0].iteration;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const bool isLast = i + 1 == lines_.size();
      ASSERT_TRUE(isLast || lines_[i].iteration == stride * (static_cast<std::int32_t>(i) + 1)) << i;
      ASSERT_EQ(lines_[i].residual, -3.0 * lines_[i].iteration);
    }
    ASSERT_GT(lines_.back().iteration, last);
    last = lines_.back().iteration;
  }
  isRead = true;
}

}  // namespace
}  // namespace lumo
