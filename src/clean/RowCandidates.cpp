// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/RowCandidates.h"

#include <algorithm>

namespace lumo {

std::size_t RowCandidates::finish(std::uint32_t* offsets) {
  if (count_ > kCandidatesPerRow) drop();
  for (std::size_t i = 0; i < count_; ++i) offsets[i] = pixels_[i].offset;
  return count_;
}

/// All but the best; among equals the last in scan order is better.
void RowCandidates::drop() {
  Pixel* const end = pixels_ + count_;
  std::nth_element(pixels_, pixels_ + kCandidatesPerRow - 1, end, [](const Pixel& a, const Pixel& b) {
    return a.score > b.score || (a.score == b.score && a.offset > b.offset);
  });
  least_ = pixels_[kCandidatesPerRow - 1].score;
  for (const Pixel* pixel = pixels_ + kCandidatesPerRow; pixel < end; ++pixel)
    rest_ = std::max(rest_, pixel->score);
  count_ = kCandidatesPerRow;
}

}  // namespace lumo
