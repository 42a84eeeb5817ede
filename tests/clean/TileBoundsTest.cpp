// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "clean/TileBounds.h"
#include "clean/TileInput.h"

namespace lumo {
namespace {

using test::Shape;
using test::TileInput;

constexpr TileBounds::Grid kGrid{4, 12, 4, 4};  // the last column and row of tiles are smaller
constexpr Shape kMap{15, 42};

/// Maps with the bounds of their tiles.
class Bounded {
 public:
  explicit Bounded(std::int32_t terms, bool nonNegative)
      : input(test::randomProblem(terms, kMap, {2 * kMap.rows, 2 * kMap.columns}, 4), nonNegative), team_(1) {
    usable = bounds.measure(input.input().beams, input.matrix(), terms);
    bounds.prepare(kGrid, input.maps(), input.input().beams, 1.0, team_);
    for (std::size_t i = 0; i < input.intensity().size(); ++i)
      bounds.noteComponent(static_cast<double>(input.intensity().data()[i]));
  }

  /// The largest value of what(offset) in a tile.
  template <typename What>
  [[nodiscard]] double largest(std::size_t tile, const What& what) const {
    double largest = -std::numeric_limits<double>::infinity();
    const std::size_t row = tile / kGrid.tileColumns * kGrid.rows;
    const std::size_t column = tile % kGrid.tileColumns * kGrid.columns;
    for (std::size_t y = row; y < std::min<std::size_t>(row + kGrid.rows, kMap.rows); ++y)
      for (std::size_t x = column; x < std::min<std::size_t>(column + kGrid.columns, kMap.columns); ++x)
        largest = std::max(largest, what(y * kMap.columns + x));
    return largest;
  }
  [[nodiscard]] double largestScore(std::size_t tile, double gain) const {
    return largest(tile, [&](std::size_t offset) { return input.score(offset, gain); });
  }
  void search(double gain) {
    for (std::size_t i = 0; i < kGrid.tiles(); ++i)
      bounds.setSearched(
          i, {0, largestScore(i, gain), largest(i, [&](std::size_t o) { return input.norm(o); })}, gain);
  }

  TileInput input;
  TileBounds bounds;
  bool usable = false;

 private:
  ThreadTeam team_;
};

CleanStep stepOf(const CleanUpdate& update, std::int32_t terms) {
  CleanStep step;
  step.row = update.row;
  step.column = update.column;
  step.increments.assign(update.increments, update.increments + terms);
  return step;
}

TEST(TileBoundsTest, NoPixelExceedsThemAfterAnyStepAtAnyGain) {
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    for (const bool nonNegative : {false, true})
      for (const double gain : {0.1, 0.9, 1.6}) {
        Bounded all(terms, nonNegative);
        ASSERT_TRUE(all.usable);
        all.search(gain);
        for (const CleanUpdate& update : test::randomSteps(25, terms, kMap, 0.2, 8)) {
          all.input.subtract(update);
          ASSERT_TRUE(all.bounds.raise(stepOf(update, terms)));
          for (const double now : {gain, 0.8 * gain}) {
            all.bounds.form(now);
            for (std::size_t i = 0; i < kGrid.tiles(); ++i)
              ASSERT_GE(all.bounds.score(i), all.largestScore(i, now))
                  << terms << " terms, gain " << gain << ", " << now << ", tile " << i;
          }
        }
      }
}

TEST(TileBoundsTest, AreInfiniteBeforeTheFirstSearchAndTightAfterIt) {
  Bounded all(2, false);
  all.bounds.form(0.1);
  for (std::size_t i = 0; i < kGrid.tiles(); ++i) EXPECT_TRUE(std::isinf(all.bounds.score(i)));
  all.search(0.1);
  for (std::size_t i = 0; i < kGrid.tiles(); ++i) EXPECT_LT(all.bounds.score(i), 0.0);
  all.bounds.form(0.1);
  for (std::size_t i = 0; i < kGrid.tiles(); ++i)  // three roundings up by 1e-6
    EXPECT_NEAR(all.bounds.score(i), all.largestScore(i, 0.1), 1e-5 * all.largestScore(i, 0.1));
}

TEST(TileBoundsTest, PixelThatIsNoCandidateAnyMoreRaisesThatOfItsTile) {
  for (const bool nonNegative : {false, true}) {
    Bounded all(2, nonNegative);
    all.search(0.1);
    all.bounds.form(0.1);
    const double before = all.bounds.score(5);
    const double other = all.bounds.score(6);
    const double score = 4.0 * before;
    all.bounds.include(5, score, 0.1);
    all.bounds.include(6, 0.5 * all.largestScore(6, 0.1), 0.1);
    all.bounds.form(0.1);
    EXPECT_GE(all.bounds.score(5), score);
    EXPECT_EQ(all.bounds.score(6), other);
    // With the constraint scores of two gains cannot be compared.
    all.bounds.include(7, 0.0, 0.2);
    all.bounds.form(0.2);
    EXPECT_EQ(std::isinf(all.bounds.score(7)), nonNegative);
  }
}

TEST(TileBoundsTest, SingleErrorCoversWhatAConstrainedScoreExceedsTheNormBy) {
  for (std::int32_t terms = 1; terms <= 4; ++terms)
    for (const double gain : {0.05, 0.5, 1.0}) {
      Bounded all(terms, true);
      // Negative components on residuals of all sizes below and above them.
      for (std::size_t i = 0; i < all.input.intensity().size(); ++i) {
        all.input.intensity().data()[i] = -0.1F;
        for (std::int32_t k = 0; k < terms; ++k) all.input.maps().maps[k][i] *= k == 0 ? 2.0F : 0.01F;
      }
      all.search(gain);
      double most = 0.0;
      for (std::size_t tile = 0; tile < kGrid.tiles(); ++tile) {
        const double exceeds = all.largest(tile, [&](std::size_t offset) {
          return all.input.score(offset, gain) / (gain * (2.0 - gain)) - all.input.norm(offset);
        });
        EXPECT_GE(all.bounds.singleError(tile, gain), exceeds) << terms << " terms, gain " << gain;
        most = std::max(most, exceeds);
      }
      EXPECT_EQ(most > 0.0, gain < 1.0) << gain;
      EXPECT_TRUE(std::isinf(all.bounds.singleError(0, 1.5)));
    }
  EXPECT_GT(Bounded(1, false).bounds.bytes(), 80 * sizeof(double));
}

}  // namespace
}  // namespace lumo
