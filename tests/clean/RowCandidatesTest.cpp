// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "clean/RowCandidates.h"

namespace lumo {
namespace {

std::vector<std::uint32_t> finished(RowCandidates& row) {
  std::vector<std::uint32_t> offsets(kCandidatesPerRow);
  offsets.resize(row.finish(offsets.data()));
  std::sort(offsets.begin(), offsets.end());
  return offsets;
}

TEST(RowCandidatesTest, KeepsTheBestAndTellsTheLargestOfTheRest) {
  std::mt19937 random(2);
  std::vector<double> scores(300);
  for (std::size_t i = 0; i < scores.size(); ++i) scores[i] = static_cast<double>(i);
  std::shuffle(scores.begin(), scores.end(), random);
  RowCandidates row(0.0);
  for (std::size_t i = 0; i < scores.size(); ++i) row.take(scores[i], static_cast<std::uint32_t>(i));
  const std::vector<std::uint32_t> kept = finished(row);
  ASSERT_EQ(kept.size(), kCandidatesPerRow);
  for (const std::uint32_t offset : kept) EXPECT_GE(scores[offset], 300.0 - kCandidatesPerRow);
  EXPECT_EQ(row.rest(), 299.0 - kCandidatesPerRow);
}

TEST(RowCandidatesTest, AmongEqualsTheLastAreKept) {
  RowCandidates row(1.0);
  for (std::uint32_t i = 0; i < 100; ++i) row.take(1.0, i);
  const std::vector<std::uint32_t> kept = finished(row);
  ASSERT_EQ(kept.size(), kCandidatesPerRow);
  EXPECT_EQ(kept.front(), 100 - kCandidatesPerRow);
  EXPECT_EQ(kept.back(), 99U);
  EXPECT_EQ(row.rest(), 1.0);
}

TEST(RowCandidatesTest, FewAreAllKeptAndWhatDoesNotReachTheScoreIsTheRest) {
  RowCandidates row(2.0);
  row.take(3.0, 7);
  row.take(1.5, 8);
  row.take(2.0, 9);
  EXPECT_EQ(finished(row), (std::vector<std::uint32_t>{7, 9}));
  EXPECT_EQ(row.rest(), 1.5);
  RowCandidates none(2.0);
  EXPECT_TRUE(finished(none).empty());
  EXPECT_LT(none.rest(), 0.0);
}

}  // namespace
}  // namespace lumo
