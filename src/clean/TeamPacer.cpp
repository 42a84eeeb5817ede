// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TeamPacer.h"

#include <algorithm>

namespace lumo {

void TeamPacer::shared(double all, double own, std::size_t ownParts, std::size_t parts) {
  shared_ += all;
  byOne_ += own * static_cast<double>(parts) / static_cast<double>(std::max<std::size_t>(ownParts, 1));
  if (shared_ < kTrial) return;
  together_ = shared_ < byOne_;
  if (together_) {
    leaveFor_ = kShortest;
  } else {
    left_ = leaveFor_;
    leaveFor_ = std::min(2.0 * leaveFor_, kLongest);
  }
  shared_ = byOne_ = 0.0;
}

void TeamPacer::alone(double all) {
  left_ -= all;
  together_ = left_ <= 0.0;
}

}  // namespace lumo
