// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "core/ThreadCount.h"

namespace lumo {
namespace {

TEST(ThreadCountTest, ANumberAskedForIsTheNumberGiven) {
  EXPECT_EQ(threadCount(1), 1);
  EXPECT_EQ(threadCount(3), 3);
}

TEST(ThreadCountTest, ZeroAndLessMeanAllCores) {
  const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  EXPECT_EQ(threadCount(0), std::min(cores, kMostThreads));
  EXPECT_EQ(threadCount(-5), threadCount(0));
}

TEST(ThreadCountTest, NeverMoreThanOfUse) {
  EXPECT_EQ(threadCount(1000000), kMostThreads);
}

}  // namespace
}  // namespace lumo
