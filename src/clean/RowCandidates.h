// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "clean/CandidateKernel.h"

namespace lumo {

/// Keeps the best kCandidatesPerRow of the pixels of a row that reach a score, in one pass over the row.
class RowCandidates {
 public:
  /// @param least the score to be reached, 0 or more.
  explicit RowCandidates(double least) : least_(least) {}

  /// Pixels in scan order. One that does not reach the score, or that of those kept
  /// where they are enough, is among the rest().
  void take(double score, std::uint32_t offset) {
    if (!(score >= least_)) {
      rest_ = std::max(rest_, score);
      return;
    }
    if (count_ == 2 * kCandidatesPerRow) drop();
    pixels_[count_++] = {score, offset};
  }
  /// Ends the row.
  /// @param offsets gets the places of those kept.
  /// @return their number, kCandidatesPerRow at most.
  [[nodiscard]] std::size_t finish(std::uint32_t* offsets);
  /// The largest score of those that were taken and not kept, below 0 where all were.
  [[nodiscard]] double rest() const { return rest_; }

 private:
  struct Pixel {
    double score;
    std::uint32_t offset;
  };
  void drop();

  double least_;
  double rest_ = -1.0;
  std::size_t count_ = 0;
  Pixel pixels_[2 * kCandidatesPerRow];
};

}  // namespace lumo
