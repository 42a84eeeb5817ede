// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "clean/CandidateKernel.h"
#include "clean/TileInput.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::Shape;
using test::TargetGuard;
using test::TileInput;

constexpr double kGain = 0.3;

/// Candidates with their arrays.
struct Pool {
  Pool(const CleanTileMaps& maps, const std::vector<std::size_t>& offsets) : size(offsets.size()) {
    const std::size_t room = (size + kCandidateLanes - 1) / kCandidateLanes * kCandidateLanes;
    rows.resize(room);
    columns.resize(room);
    for (std::int32_t k = 0; k < maps.terms; ++k) residuals[k].resize(room);
    for (std::size_t i = 0; i < size; ++i) {
      rows[i] = static_cast<std::uint32_t>(offsets[i] / maps.mapColumns);
      columns[i] = static_cast<std::uint32_t>(offsets[i] % maps.mapColumns);
      for (std::int32_t k = 0; k < maps.terms; ++k) residuals[k][i] = maps.maps[k][offsets[i]];
    }
  }
  CandidateView view() {
    CandidateView view{size, rows.data(), columns.data(), {}};
    for (std::size_t k = 0; k < kMaxTileTerms; ++k) view.residuals[k] = residuals[k].data();
    return view;
  }
  std::size_t size;
  std::vector<std::uint32_t> rows;
  std::vector<std::uint32_t> columns;
  std::vector<float> residuals[kMaxTileTerms];
};

/// Calls test(name of the instruction set) with each of them chosen.
template <typename Test>
void withEveryInstructionSet(const Test& test) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const TargetGuard guard(target);
    test(hwy::TargetName(target));
  }
}

TEST(CandidateKernelTest, FollowedPixelsKeepTheBitsOfThePlainLoop) {
  const Shape map{21, 34};
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    // Beams that wrap below the map, and beams that do not.
    for (const Shape beam : {Shape{21, 34}, Shape{42, 68}, Shape{50, 90}}) {
      const CleanProblem problem = test::randomProblem(terms, map, beam, 7);
      const std::vector<CleanUpdate> steps = test::randomSteps(40, terms, map, 0.3, 5);
      TileInput plain(problem, false);
      for (const CleanUpdate& step : steps) plain.subtract(step);
      withEveryInstructionSet([&](const char* name) {
        const TileInput start(problem, false);
        // The corners, and a number of pixels that fills no vector.
        std::vector<std::size_t> offsets = {0, 33, 680, 713};
        for (std::size_t i = 17; offsets.size() < 61; i += 11) offsets.push_back(i);
        Pool pool(start.maps(), offsets);
        for (const CleanUpdate& step : steps) followCandidates(start.maps(), step, pool.view());
        for (std::size_t i = 0; i < offsets.size(); ++i)
          for (std::int32_t k = 0; k < terms; ++k)
            ASSERT_EQ(pool.residuals[k][i], plain.maps().maps[k][offsets[i]])
                << name << ", " << terms << " terms, pixel " << offsets[i];
      });
    }
}

TEST(CandidateKernelTest, BestCandidateHasThePlainScoreAndIsTheLastInScanOrderAmongEquals) {
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    for (const bool nonNegative : {false, true}) {
      CleanProblem problem = test::randomProblem(terms, {9, 13}, {18, 26}, 3);
      // Equal pixels, the last of them the best of all.
      for (const std::size_t copy : {3U, 40U, 77U, 110U})
        for (std::size_t k = 0; k < problem.maps.size(); ++k)
          problem.maps[k].data()[copy] = k == 0 ? 20.0F : 0.0F;
      TileInput input(problem, nonNegative);
      for (const std::size_t copy : {3U, 40U, 77U, 110U}) input.intensity().data()[copy] = 0.25F;
      ASSERT_EQ(input.best(kGain), 110U);
      withEveryInstructionSet([&](const char* name) {
        // All pixels, backwards from the middle and then from the end.
        std::vector<std::size_t> offsets;
        for (std::size_t i = 0; i < 117; ++i) offsets.push_back(i <= 58 ? 58 - i : 175 - i);
        Pool pool(input.maps(), offsets);
        std::vector<double> scores(pool.rows.size());
        const CandidateBest best = findBestCandidate(input.maps(), kGain, pool.view(), scores.data());
        EXPECT_TRUE(best.found) << name;
        EXPECT_EQ(best.offset, 110U) << name;
        EXPECT_EQ(offsets[best.index], 110U) << name;
        EXPECT_EQ(best.score, input.score(110, kGain)) << name;
        for (std::size_t i = 0; i < offsets.size(); ++i)
          ASSERT_EQ(scores[i], input.score(offsets[i], kGain)) << name << ", pixel " << offsets[i];
      });
    }
}

TEST(CandidateKernelTest, ScoresBelowZeroAndPixelsBehindTheLastAreNoCandidates) {
  CleanProblem problem = test::randomProblem(1, {2, 8}, {4, 16}, 3);
  problem.maps[0] = test::flatMap({2, 8}, -1.0F);
  TileInput input(problem, true);
  for (std::size_t i = 0; i < 16; ++i) input.intensity().data()[i] = 0.0F;
  // t < 0 and c = 0: nothing is gained and E = 0, the least that counts. A component below it loses.
  withEveryInstructionSet([&](const char* name) {
    Pool pool(input.maps(), {2, 5, 1});
    EXPECT_EQ(findBestCandidate(input.maps(), kGain, pool.view(), nullptr).offset, 5U) << name;
    for (std::size_t i = 0; i < 16; ++i) input.intensity().data()[i] = -0.5F;
    ASSERT_LT(input.score(5, kGain), 0.0);
    EXPECT_FALSE(findBestCandidate(input.maps(), kGain, pool.view(), nullptr).found) << name;
    for (std::size_t i = 0; i < 16; ++i) input.intensity().data()[i] = 0.0F;
    Pool none(input.maps(), {});
    EXPECT_FALSE(findBestCandidate(input.maps(), kGain, none.view(), nullptr).found) << name;
  });
}

/// Checks what an area was found to hold. `margin` is how far the bounds may be above the truth.
void expectFound(const TileInput& input, const CleanTileArea& area, const CandidateContest& contest,
                 const AreaRest& found, const std::vector<std::uint32_t>& offsets, double margin,
                 const std::string& what) {
  double rest = -1.0;
  double norm = 0.0;
  std::size_t next = 0;
  for (std::uint32_t row = area.firstRow; row < area.lastRow; ++row) {
    std::vector<std::uint32_t> here;
    for (std::uint32_t column = area.firstColumn; column < area.lastColumn; ++column)
      here.push_back(static_cast<std::uint32_t>(row * input.maps().mapColumns + column));
    std::sort(here.begin(), here.end(), [&](std::uint32_t a, std::uint32_t b) {
      const double first = input.score(a, contest.gain);
      const double second = input.score(b, contest.gain);
      return first > second || (first == second && a > b);
    });
    std::vector<std::uint32_t> expected;
    for (const std::uint32_t offset : here) {
      norm = std::max(norm, input.norm(offset));
      if (expected.size() < kCandidatesPerRow && input.score(offset, contest.gain) >= contest.least)
        expected.push_back(offset);
      else
        rest = std::max(rest, input.score(offset, contest.gain));
    }
    ASSERT_LE(next + expected.size(), found.candidates) << what << ", row " << row;
    std::vector<std::uint32_t> got(offsets.begin() + static_cast<std::ptrdiff_t>(next),
                                   offsets.begin() + static_cast<std::ptrdiff_t>(next + expected.size()));
    std::sort(expected.begin(), expected.end());
    std::sort(got.begin(), got.end());
    EXPECT_EQ(got, expected) << what << ", row " << row;
    next += expected.size();
  }
  EXPECT_EQ(found.candidates, next) << what;
  EXPECT_GE(found.score, rest) << what;
  EXPECT_LE(found.score, std::max(rest, 0.0) + margin) << what;
  EXPECT_GE(found.norm, norm) << what;
  EXPECT_LE(found.norm, norm + margin) << what;
}

TEST(CandidateKernelTest, FindsThePixelsThatReachTheScoreAndBoundsTheOthers) {
  for (std::int32_t terms = 1; terms <= 4; ++terms) {
    // 55 columns are no whole number of any vectors.
    const TileInput input(test::randomProblem(terms, {12, 60}, {24, 120}, 9), false);
    const CleanTileArea area{2, 11, 3, 58};
    double best = 0.0;
    double norm = 0.0;
    for (std::size_t i = 0; i < std::size_t{12} * 60; ++i) {
      best = std::max(best, input.score(i, kGain));
      norm = std::max(norm, input.norm(i));
    }
    // Some hundred times the rounding of single precision, and no knowledge of it.
    for (const double error : {1e-4 * norm, HUGE_VAL})
      for (const double part : {0.0, 0.1, 0.5, 0.95, 2.0})
        withEveryInstructionSet([&](const char* name) {
          const CandidateContest contest{kGain, part * best, error};
          std::vector<std::uint32_t> offsets(area.rows() * kCandidatesPerRow);
          const AreaRest found = findCandidates(input.maps(), area, contest, offsets.data());
          expectFound(input, area, contest, found, offsets, std::isfinite(error) ? 3.0 * error : 1e-5 * norm,
                      std::string(name) + ", " + std::to_string(terms) + " terms, " + std::to_string(part));
        });
  }
}

TEST(CandidateKernelTest, FindsThemWithTheConstraintToo) {
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    for (const double gain : {0.1, 1.0, 1.7}) {
      const TileInput input(test::randomProblem(terms, {8, 50}, {16, 100}, 9), true);
      const CleanTileArea area{0, 8, 1, 50};
      double norm = 0.0;
      for (std::size_t i = 0; i < std::size_t{8} * 50; ++i) norm = std::max(norm, input.norm(i));
      const double best = input.score(input.best(gain), gain);
      // Components down to -0.1, whose scores may exceed those without the constraint by this in S.
      const double excess = 0.01 * input.maps().q / (gain * gain);
      for (const double part : {0.0, 0.3, 0.9})
        withEveryInstructionSet([&](const char* name) {
          // Above 1 there is no such bound.
          const CandidateContest contest{gain, part * best, gain > 1.0 ? HUGE_VAL : 1e-4 * norm + excess};
          std::vector<std::uint32_t> offsets(area.rows() * kCandidatesPerRow);
          const AreaRest found = findCandidates(input.maps(), area, contest, offsets.data());
          // Negative residuals have a norm and no score: the bound is that of the norm.
          expectFound(input, area, contest, found, offsets, 2.0 * norm + 3.0 * excess,
                      std::string(name) + ", " + std::to_string(terms) + " terms, " + std::to_string(part));
        });
    }
}

TEST(CandidateKernelTest, RestIsTheSameWithEveryInstructionSet) {
  for (const bool nonNegative : {false, true}) {
    const TileInput input(test::randomProblem(3, {12, 67}, {24, 134}, 5), nonNegative);
    const double least = 0.5 * input.score(input.best(kGain), kGain);
    std::vector<AreaRest> found;
    withEveryInstructionSet([&](const char*) {
      std::vector<std::uint32_t> offsets(12 * kCandidatesPerRow);
      found.push_back(findCandidates(input.maps(), input.wholeArea(), {kGain, least, 1e-3}, offsets.data()));
    });
    for (const AreaRest& rest : found) {
      EXPECT_EQ(rest.score, found[0].score);
      EXPECT_EQ(rest.norm, found[0].norm);
      EXPECT_EQ(rest.candidates, found[0].candidates);
    }
  }
}

}  // namespace
}  // namespace lumo
