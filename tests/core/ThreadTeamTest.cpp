// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "core/ThreadTeam.h"

#ifdef __linux__
#include <sched.h>
#endif

namespace lumo {
namespace {

TEST(ThreadTeamTest, EveryIndexIsTakenOnceWhateverTheSizes) {
  for (const int size : {1, 2, 3, 8}) {
    ThreadTeam team(size);
    for (const std::size_t count : {0, 1, 2, 7, 100}) {
      std::vector<int> taken(count, 0);
      team.run(count, [&](std::size_t i, std::size_t /*member*/) { ++taken[i]; });
      EXPECT_EQ(taken, std::vector<int>(count, 1)) << size << " threads, " << count << " tasks";
    }
  }
}

TEST(ThreadTeamTest, NoTwoCallsWithTheSameMemberRunAtTheSameTime) {
  ThreadTeam team(4);
  std::vector<std::atomic<int>> calls(static_cast<std::size_t>(team.size()));
  std::atomic<int> wrong = 0;
  for (int round = 0; round < 200; ++round)
    team.run(37, [&](std::size_t i, std::size_t member) {
      if (member >= calls.size()) {
        ++wrong;
        return;
      }
      if (++calls[member] != 1) ++wrong;
      // Tasks of unequal length, so that members help each other.
      for (int n = 0; n < static_cast<int>(i) * 20; ++n) static_cast<void>(calls[member].load());
      --calls[member];
    });
  EXPECT_EQ(wrong, 0);
}

TEST(ThreadTeamTest, ManyShortLoopsSeeEachOthersResults) {
  ThreadTeam team(3);
  std::vector<int> values(10, 0);
  for (int round = 0; round < 5000; ++round)
    team.run(values.size(), [&](std::size_t i, std::size_t /*member*/) { values[i] += 1; });
  EXPECT_EQ(values, std::vector<int>(10, 5000));
}

TEST(ThreadTeamTest, WakesAfterItsThreadsHaveFallenAsleep) {
  ThreadTeam team(2);
  std::vector<int> values(4, 0);
  for (int round = 0; round < 3; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    team.run(values.size(), [&](std::size_t i, std::size_t /*member*/) { values[i] += 1; });
  }
  EXPECT_EQ(values, std::vector<int>(4, 3));
}

#ifdef __linux__
TEST(ThreadTeamTest, ThreadsThatWereWokenMayUseAllTheirProcessors) {
  cpu_set_t allowed;
  ASSERT_EQ(::sched_getaffinity(0, sizeof allowed, &allowed), 0);
  ThreadTeam team(3);
  std::atomic<int> restricted = 0;
  for (int round = 0; round < 20; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    team.run(30, [&](std::size_t /*i*/, std::size_t /*member*/) {
      cpu_set_t now;
      if (::sched_getaffinity(0, sizeof now, &now) != 0 || CPU_EQUAL(&now, &allowed) == 0) ++restricted;
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    });
  }
  EXPECT_EQ(restricted, 0);
  cpu_set_t now;
  ASSERT_EQ(::sched_getaffinity(0, sizeof now, &now), 0);
  EXPECT_NE(CPU_EQUAL(&now, &allowed), 0);
}
#endif

}  // namespace
}  // namespace lumo
