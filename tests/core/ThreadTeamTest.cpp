// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "core/ThreadTeam.h"

namespace lumo {
namespace {

TEST(ThreadTeamTest, EveryIndexIsTakenOnceWhateverTheSizes) {
  for (const int size : {1, 2, 3, 8}) {
    ThreadTeam team(size);
    for (const std::size_t count : {0, 1, 2, 7, 100}) {
      std::vector<int> taken(count, 0);
      team.run(count, [&](std::size_t i) { ++taken[i]; });
      EXPECT_EQ(taken, std::vector<int>(count, 1)) << size << " threads, " << count << " tasks";
    }
  }
}

TEST(ThreadTeamTest, ManyShortLoopsSeeEachOthersResults) {
  ThreadTeam team(3);
  std::vector<int> values(10, 0);
  for (int round = 0; round < 5000; ++round) team.run(values.size(), [&](std::size_t i) { values[i] += 1; });
  EXPECT_EQ(values, std::vector<int>(10, 5000));
}

TEST(ThreadTeamTest, WakesAfterItsThreadsHaveFallenAsleep) {
  ThreadTeam team(2);
  std::vector<int> values(4, 0);
  for (int round = 0; round < 3; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    team.run(values.size(), [&](std::size_t i) { values[i] += 1; });
  }
  EXPECT_EQ(values, std::vector<int>(4, 3));
}

}  // namespace
}  // namespace lumo
