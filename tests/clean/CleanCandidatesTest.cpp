// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "clean/CleanCandidates.h"
#include "clean/TileInput.h"

namespace lumo {
namespace {

using test::TileInput;

constexpr double kGain = 0.3;

TEST(CleanCandidatesTest, HoldsTheResidualsOfItsPixelsWithEveryStepSubtracted) {
  TileInput input(test::randomProblem(2, {10, 20}, {20, 40}, 3), false);
  CleanCandidates candidates;
  candidates.prepare(input.maps(), 30);
  EXPECT_EQ(candidates.capacity(), 30U);
  for (std::size_t i = 0; i < 30; ++i) candidates.add(static_cast<std::uint32_t>(i % 4), 6 * i);
  EXPECT_EQ(candidates.size(), 30U);
  for (const CleanUpdate& step : test::randomSteps(9, 2, {10, 20}, 0.3, 2)) {
    candidates.follow(step);
    input.subtract(step);
  }
  for (std::size_t i = 0; i < 30; ++i) {
    double r[2] = {};
    candidates.residuals(i, r);
    EXPECT_EQ(r[0], static_cast<double>(input.maps().maps[0][6 * i]));
    EXPECT_EQ(r[1], static_cast<double>(input.maps().maps[1][6 * i]));
  }
}

TEST(CleanCandidatesTest, LosesThoseOfTheTilesThatAreTakenAway) {
  const TileInput input(test::randomProblem(1, {10, 20}, {20, 40}, 3), false);
  CleanCandidates candidates;
  candidates.prepare(input.maps(), 200);
  std::size_t best = 1;
  for (std::size_t i = 0; i < 200; ++i) {
    candidates.add(static_cast<std::uint32_t>(i % 3), i);
    if (i % 3 == 1 && input.score(i, kGain) >= input.score(best, kGain)) best = i;
  }
  EXPECT_EQ(candidates.best(kGain).offset, input.best(kGain));
  candidates.removeWhere([](std::uint32_t tile) { return tile != 1; });
  EXPECT_EQ(candidates.size(), 67U);
  EXPECT_EQ(candidates.best(kGain).offset, best);
  EXPECT_EQ(candidates.best(kGain).score, input.score(best, kGain));
  candidates.removeWhere([](std::uint32_t) { return true; });
  EXPECT_EQ(candidates.size(), 0U);
  EXPECT_FALSE(candidates.best(kGain).found);
}

TEST(CleanCandidatesTest, KeepsTheBestAndTheLastInScanOrderAmongEquals) {
  test::CleanProblem problem = test::randomProblem(1, {10, 20}, {20, 40}, 3);
  for (std::size_t i = 100; i < 130; ++i) problem.maps[0].data()[i] = 0.5F;  // in the midst of all others
  const TileInput input(problem, false);
  CleanCandidates candidates;
  candidates.prepare(input.maps(), 200);
  std::vector<std::pair<double, std::size_t>> order;
  for (std::size_t i = 0; i < 200; ++i) {
    const std::size_t offset = i * 7 % 200;
    candidates.add(static_cast<std::uint32_t>(offset), offset);
    order.emplace_back(input.score(offset, kGain), offset);
  }
  std::sort(order.rbegin(), order.rend());
  const auto equals =
      std::find_if(order.begin(), order.end(), [](const auto& pixel) { return pixel.second == 129; });
  const auto count = static_cast<std::size_t>(equals - order.begin()) + 10;  // 10 of the 30 equal ones
  std::vector<std::pair<double, std::size_t>> left;
  candidates.keepBest(count, kGain,
                      [&](std::uint32_t tile, double score) { left.emplace_back(score, tile); });
  std::sort(left.rbegin(), left.rend());
  EXPECT_EQ(left, (std::vector(order.begin() + static_cast<std::ptrdiff_t>(count), order.end())));
  EXPECT_EQ(candidates.size(), count);
  EXPECT_EQ(candidates.best(kGain).offset, order[0].second);
  std::vector<bool> kept(200);
  candidates.removeWhere([&](std::uint32_t tile) {
    kept[tile] = true;
    return true;
  });
  for (std::size_t i = 0; i < 200; ++i) EXPECT_EQ(kept[order[i].second], i < count) << order[i].second;
}

TEST(CleanCandidatesTest, MemoryIsTakenOnce) {
  const TileInput input(test::randomProblem(4, {10, 20}, {20, 40}, 3), false);
  CleanCandidates candidates;
  candidates.prepare(input.maps(), 64);
  const std::size_t bytes = candidates.bytes();
  EXPECT_GE(bytes, 64U * (4 * sizeof(float) + 2 * sizeof(std::uint32_t)));
  for (std::size_t i = 0; i < 64; ++i) candidates.add(0, i);
  candidates.keepBest(10, kGain, [](std::uint32_t, double) {});
  EXPECT_EQ(candidates.bytes(), bytes);
}

}  // namespace
}  // namespace lumo
