// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "core/ThreadPriority.h"

namespace lumo {
namespace {

// On a thread of its own: a lowered priority cannot always be raised again.
void onThread(const std::function<void()>& work) {
  std::thread(work).join();
}

int niceOfThread() {
  return ::getpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)));
}

TEST(ThreadPriorityTest, TheListRunsFromTheLowestToTheHighest) {
  EXPECT_EQ(GetPriorityConst(0), ThreadPriority::kIdle);
  EXPECT_EQ(GetPriorityConst(1), ThreadPriority::kLow);
  EXPECT_EQ(GetPriorityConst(2), ThreadPriority::kBelow);
  EXPECT_EQ(GetPriorityConst(3), ThreadPriority::kNormal);
  EXPECT_EQ(GetPriorityConst(4), ThreadPriority::kAbove);
  EXPECT_EQ(GetPriorityConst(5), ThreadPriority::kHigh);
  EXPECT_EQ(GetPriorityConst(6), ThreadPriority::kTimecritical);
}

TEST(ThreadPriorityTest, AnIndexOutsideTheListIsNormal) {
  EXPECT_EQ(GetPriorityConst(-1), ThreadPriority::kNormal);
  EXPECT_EQ(GetPriorityConst(kThreadPriorityCount), ThreadPriority::kNormal);
}

TEST(ThreadPriorityTest, TheLowerPrioritiesAreGivenToTheCallingThreadOnly) {
  const int before = niceOfThread();
  onThread([] {
    ASSERT_TRUE(setThreadPriority(ThreadPriority::kBelow).ok());
    const int below = niceOfThread();
    ASSERT_TRUE(setThreadPriority(ThreadPriority::kLow).ok());
    EXPECT_GT(niceOfThread(), below);
    EXPECT_EQ(::sched_getscheduler(0), SCHED_OTHER);
  });
  EXPECT_EQ(niceOfThread(), before);
}

TEST(ThreadPriorityTest, IdleIsASchedulingClassOfItsOwn) {
  onThread([] {
    ASSERT_TRUE(setThreadPriority(ThreadPriority::kIdle).ok());
    EXPECT_EQ(::sched_getscheduler(0), SCHED_IDLE);
  });
}

TEST(ThreadPriorityTest, AnotherPriorityAfterIdleLeavesTheIdleClassOrSaysThatItCannot) {
  onThread([] {
    ASSERT_TRUE(setThreadPriority(ThreadPriority::kIdle).ok());
    const Status status = setThreadPriority(ThreadPriority::kLow);
    EXPECT_EQ(::sched_getscheduler(0), status.ok() ? SCHED_OTHER : SCHED_IDLE) << status.text();
  });
}

TEST(ThreadPriorityTest, AHigherPriorityIsSetOrRefusedWithTheReason) {
  onThread([] {
    const int before = niceOfThread();
    const Status status = setThreadPriority(ThreadPriority::kHigh);
    if (status.ok()) {
      EXPECT_LT(niceOfThread(), before);
    } else {
      EXPECT_EQ(status.code(), StatusCode::kUnsupported);
      EXPECT_EQ(niceOfThread(), before);
    }
  });
}

TEST(ThreadPriorityTest, TimecriticalIsARealTimeClassOrRefusedWithTheReason) {
  onThread([] {
    const Status status = setThreadPriority(ThreadPriority::kTimecritical);
    EXPECT_EQ(::sched_getscheduler(0), status.ok() ? SCHED_RR : SCHED_OTHER);
    EXPECT_EQ(status.code(), status.ok() ? StatusCode::kOk : StatusCode::kUnsupported);
  });
}

}  // namespace
}  // namespace lumo
