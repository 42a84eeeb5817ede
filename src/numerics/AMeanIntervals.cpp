// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/AMeanIntervals.h"

#include <algorithm>
#include <cassert>

namespace lumo {

AMeanIntervals::AMeanIntervals(int n, Range range)
    : rangeMin_(range.min),
      rangeMax_(range.max),
      sum_(static_cast<std::size_t>(std::max(n, 0))),
      count_(sum_.size()),
      sumRaw_(sum_.size()),
      sumSq_(sum_.size()),
      countRaw_(sum_.size()),
      n_(std::max(n, 0)) {}

void AMeanIntervals::add(double x, double v) {
  // A single node has no spacing to divide by.
  const double nearest = n_ == 1 ? 0.0 : (n_ - 1) * (x - rangeMin_) / (rangeMax_ - rangeMin_) + 0.5;
  assert(nearest > -1.0 && nearest < n_);
  const auto i = static_cast<std::size_t>(static_cast<std::int32_t>(nearest));
  sum_[i] += v;
  sumRaw_[i] += v;
  count_[i] += 1.0;
  countRaw_[i] += 1.0;
  sumSq_[i] += v * v;
}

void AMeanIntervals::finish() {
  const std::int32_t all = n_;
  std::int32_t kept = 0;
  for (std::int32_t i = 0; i < all; ++i) {
    if (count_[i] == 0.0) continue;
    sum_[kept] = sum_[i] / count_[i];
    count_[kept] = all == 1 ? rangeMin_ : rangeMin_ + (rangeMax_ - rangeMin_) * i / (all - 1);
    sumRaw_[kept] = sumRaw_[i];
    sumSq_[kept] = sumSq_[i];
    countRaw_[kept] = countRaw_[i];
    ++kept;
  }
  n_ = kept;
}

}  // namespace lumo
