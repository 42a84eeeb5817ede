// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PhaseTimer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace lumo {
namespace {

TEST(PhaseTimerTest, AddsItsLifeToWhatThePhaseHasTakenSoFar) {
  double seconds = 100;
  const Stopwatch outer;
  {
    const PhaseTimer timer(seconds);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  EXPECT_GE(seconds - 100, 0.002 - 1e-9) << "a sleep lasts at least as long as asked for";
  EXPECT_LE(seconds - 100, outer.seconds() + 1e-9) << "rounding of the sum with 100";
}

}  // namespace
}  // namespace lumo
