// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "core/PhaseTimer.h"
#include "core/ProcessFacts.h"

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

TEST(PhaseTimerTest, WhatPartsDoNotAccountForIsTheirOther) {
  PhaseTime phase("all", 3, {{"first", 1}, {"second", 1.5}});
  phase.addOther();
  EXPECT_EQ(phase.parts.back().name, "other");
  EXPECT_EQ(phase.parts.back().seconds, 0.5);
  PhaseTime full("all", 1, {{"first", 1.25}});
  full.addOther();
  EXPECT_EQ(full.parts.back().seconds, 0) << "never below 0";
}

TEST(ProcessFactsTest, TheProcessIsOlderThanATestInItAndGoesOnWithTheClock) {
  const double before = processSeconds();
  const Stopwatch watch;
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  const double between = processSeconds() - before;
  EXPECT_GT(before, 0);
  EXPECT_GE(between, 0.03 - 1e-3) << "one clock against another";
  EXPECT_LE(between, watch.seconds() + 1e-3);
}

}  // namespace
}  // namespace lumo
