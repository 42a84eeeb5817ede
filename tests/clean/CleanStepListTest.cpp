// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <vector>

#include "clean/CleanStepList.h"

namespace lumo {
namespace {

CleanStep stepAt(std::uint32_t row, std::uint32_t column, double increment) {
  CleanStep step;
  step.row = row;
  step.column = column;
  step.increments = {increment, -increment};
  return step;
}

std::vector<CleanUpdate> mergedFrom(const CleanStepList& list, std::size_t from, std::size_t& next) {
  std::vector<CleanUpdate> merged(kMaxTileUpdates);
  std::size_t count = 0;
  next = list.merge(from, merged.data(), count);
  merged.resize(count);
  return merged;
}

TEST(CleanStepListTest, MergesTheStepsOnOnePixelAndNoOthers) {
  CleanStepList list;
  list.prepare(64, true);
  list.append(stepAt(3, 5, 1.0));
  list.append(stepAt(5, 3, 2.0));
  list.append(stepAt(3, 5, 4.0));
  list.append(stepAt(3, 6, 8.0));
  list.append(stepAt(3, 5, 16.0));
  std::size_t next = 0;
  const std::vector<CleanUpdate> merged = mergedFrom(list, 0, next);
  EXPECT_EQ(next, 5U);
  ASSERT_EQ(merged.size(), 3U);
  EXPECT_EQ(merged[0].column, 5U);
  EXPECT_EQ(merged[0].increments[0], 21.0);
  EXPECT_EQ(merged[0].increments[1], -21.0);
  EXPECT_EQ(merged[1].row, 5U);
  EXPECT_EQ(merged[1].increments[0], 2.0);
  EXPECT_EQ(merged[2].increments[0], 8.0);
}

TEST(CleanStepListTest, StepsBeforeTheFirstAskedForAreLeftOut) {
  CleanStepList list;
  list.prepare(64, true);
  for (const double increment : {1.0, 2.0, 4.0}) list.append(stepAt(7, 7, increment));
  std::size_t next = 0;
  const std::vector<CleanUpdate> merged = mergedFrom(list, 1, next);
  ASSERT_EQ(merged.size(), 1U);
  EXPECT_EQ(merged[0].increments[0], 6.0);
}

TEST(CleanStepListTest, DroppedStepsAreForgottenAndTheRestStayLinked) {
  CleanStepList list;
  list.prepare(4, true);
  for (const double increment : {1.0, 2.0, 4.0, 8.0}) list.append(stepAt(7, 7, increment));
  list.drop(2);
  list.append(stepAt(7, 7, 16.0));
  EXPECT_EQ(list.size(), 3U);
  std::size_t next = 0;
  const std::vector<CleanUpdate> merged = mergedFrom(list, 0, next);
  ASSERT_EQ(merged.size(), 1U);
  EXPECT_EQ(merged[0].increments[0], 28.0);
}

TEST(CleanStepListTest, TakesNoMorePixelsThanThePassCan) {
  CleanStepList list;
  list.prepare(3 * kMaxTileUpdates, true);
  for (std::uint32_t i = 0; i < 2 * kMaxTileUpdates + 7; ++i) {
    list.append(stepAt(i, 1, 1.0));
    if (i % 4 == 0) list.append(stepAt(i, 1, 1.0));
  }
  double sum = 0.0;
  std::size_t next = 0;
  for (std::size_t pass = 0; pass < 3; ++pass) {
    const std::vector<CleanUpdate> merged = mergedFrom(list, next, next);
    EXPECT_EQ(merged.size(), pass < 2 ? kMaxTileUpdates : 7U);
    for (const CleanUpdate& update : merged) sum += update.increments[0];
  }
  EXPECT_EQ(next, list.size());
  EXPECT_EQ(sum, static_cast<double>(list.size()));
}

}  // namespace
}  // namespace lumo
