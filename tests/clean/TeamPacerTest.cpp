// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <functional>

#include "clean/TeamPacer.h"

namespace lumo {
namespace {

/// Runs loops of 0.1 ms of work on one thread; `speed` tells the speed of a shared loop at a time.
/// Returns the part of the loops from `from` on that was shared.
double sharedPart(TeamPacer& pacer, double from, double to, const std::function<double(double)>& speed) {
  double now = 0.0;
  int shared = 0;
  int all = 0;
  while (now < to) {
    const bool together = pacer.together();
    now += 1e-4 / (together ? speed(now) : 1.0);
    pacer.worked(1.0, now);
    if (now < from) continue;
    ++all;
    if (together) ++shared;
  }
  return static_cast<double>(shared) / all;
}

TEST(TeamPacerTest, SharesNearlyAllLoopsWhereThatIsFaster) {
  TeamPacer pacer;
  EXPECT_GT(sharedPart(pacer, 5.0, 20.0, [](double) { return 1.3; }), 0.98);
}

TEST(TeamPacerTest, SharesHardlyALoopWhereThatIsSlower) {
  TeamPacer pacer;
  EXPECT_LT(sharedPart(pacer, 5.0, 20.0, [](double) { return 0.2; }), 0.02);
}

TEST(TeamPacerTest, GivesSharingUpWithinSomeTrialsWhenAnotherProgramTakesTheCores) {
  TeamPacer pacer;
  const auto taken = [](double now) { return now < 5.0 ? 1.9 : 0.1; };
  EXPECT_LT(sharedPart(pacer, 5.0 + 4.0 * TeamPacer::kTrial, 5.5, taken), 0.1);
}

TEST(TeamPacerTest, SharesAgainWhenTheCoresAreFreeAgain) {
  TeamPacer pacer;
  const auto freed = [](double now) { return now < 5.0 ? 0.1 : 1.9; };
  EXPECT_GT(sharedPart(pacer, 5.1 + TeamPacer::kLongest, 12.0, freed), 0.95);
}

TEST(TeamPacerTest, BeginsOnOneThread) {
  TeamPacer pacer;
  EXPECT_FALSE(pacer.together());
  pacer.worked(1.0, 100.0);
  EXPECT_FALSE(pacer.together());
}

}  // namespace
}  // namespace lumo
