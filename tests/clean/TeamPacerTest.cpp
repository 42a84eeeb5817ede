// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <functional>

#include "clean/TeamPacer.h"

namespace lumo {
namespace {

/// Runs loops that take one thread 0.1 ms, shared by two whose halves take 0.05 ms each; waiting(now) seconds
/// pass besides. Returns the part of the time from `from` to `to` in which loops were shared.
double sharedPart(TeamPacer& pacer, double from, double to, const std::function<double(double)>& waiting) {
  double now = 0.0;
  double sharing = 0.0;
  while (now < to) {
    const bool together = pacer.together();
    const double took = together ? 5e-5 + waiting(now) : 1e-4;
    if (together)
      pacer.shared(took, 5e-5, 1, 2);
    else
      pacer.alone(took);
    now += took;
    if (together && now > from) sharing += took;
  }
  return sharing / (to - from);
}

TEST(TeamPacerTest, SharesAllLoopsWhereThatIsFaster) {
  TeamPacer pacer;
  EXPECT_GT(sharedPart(pacer, 0.0, 1.0, [](double) { return 3e-5; }), 0.999);
}

TEST(TeamPacerTest, SharesHardlyALoopWhereThatIsSlower) {
  TeamPacer pacer;
  EXPECT_LT(sharedPart(pacer, 5.0, 20.0, [](double) { return 7e-5; }), 0.02);
  EXPECT_GT(sharedPart(pacer, 5.0, 20.0, [](double) { return 7e-5; }), 0.0);
}

TEST(TeamPacerTest, AFewSlowLoopsAmongFastOnesDoNotCount) {
  TeamPacer pacer;
  const auto now = [](double seconds) { return static_cast<int>(seconds * 1e3) % 100 == 0 ? 1e-3 : 1e-5; };
  EXPECT_GT(sharedPart(pacer, 0.0, 5.0, now), 0.999);
}

TEST(TeamPacerTest, GivesSharingUpWhenAnotherProgramTakesTheCores) {
  TeamPacer pacer;
  const auto taken = [](double now) { return now < 5.0 ? 1e-5 : 3e-3; };
  EXPECT_LT(sharedPart(pacer, 5.0 + 3.0 * TeamPacer::kTrial, 6.0, taken), 0.1);
}

TEST(TeamPacerTest, SharesAgainWhenTheCoresAreFreeAgain) {
  TeamPacer pacer;
  const auto freed = [](double now) { return now < 5.0 ? 3e-3 : 1e-5; };
  EXPECT_GT(sharedPart(pacer, 5.0 + TeamPacer::kLongest, 12.0, freed), 0.999);
}

TEST(TeamPacerTest, LoopsOfWhichOneThreadDidAllPartsWereNotWorthSharing) {
  TeamPacer pacer;
  for (int i = 0; i < 100; ++i) pacer.shared(1.01e-4, 1e-4, 2, 2);
  EXPECT_FALSE(pacer.together());
}

}  // namespace
}  // namespace lumo
