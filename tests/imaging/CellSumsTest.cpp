// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <random>

#include "imaging/CellSums.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

using Cell = WorkGrid::Cell;

TEST(CellSumsTest, AddsOneAfterTheOtherUntilThereIsNoCell) {
  constexpr std::size_t kPoints = 20;
  constexpr std::size_t kGap = 13;
  std::mt19937 random(3);
  std::normal_distribution<double> value;
  std::array<Cell, kPoints> sums{};
  for (Cell& sum : sums) sum = {value(random), value(random), value(random), 1};
  sums[4].re = std::numeric_limits<double>::infinity();
  sums[5].im = -0.0;
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const test::TargetGuard guard(target);
    // Few cells, so that most have several sums.
    std::array<Cell, 6> cells{};
    std::array<Cell, 6> expected{};
    std::array<Cell*, kPoints> places{};
    for (std::size_t i = 0; i < kPoints; ++i) places[i] = i == kGap ? nullptr : &cells[i * 5 % 6];
    ASSERT_EQ(addSums(sums.data(), places, 2), kGap);
    for (std::size_t i = 2; i < kGap; ++i) expected[i * 5 % 6].add(sums[i]);
    EXPECT_EQ(std::memcmp(cells.data(), expected.data(), sizeof cells), 0);
    EXPECT_EQ(addSums(sums.data(), places, kGap), kGap);
    ASSERT_EQ(addSums(sums.data(), places, kGap + 1), kPoints);
    for (std::size_t i = kGap + 1; i < kPoints; ++i) expected[i * 5 % 6].add(sums[i]);
    EXPECT_EQ(std::memcmp(cells.data(), expected.data(), sizeof cells), 0);
    EXPECT_EQ(addSums(sums.data(), places, kPoints), kPoints);
  }
}

}  // namespace
}  // namespace lumo
