// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanStepList.h"

#include <algorithm>
#include <cassert>

namespace lumo {

void CleanStepList::prepare(std::size_t capacity, bool merging) {
  assert(capacity >= 1 && capacity <= kMostSteps);
  capacity_ = capacity;
  merging_ = merging;
  steps_.clear();
  before_.clear();
  steps_.reserve(capacity);
  chain_.clear();
  last_.clear();
  if (!merging) return;
  before_.reserve(capacity);
  chain_.reserve(capacity);
  last_.assign(capacity, -1);
}

std::size_t CleanStepList::bytes() const {
  return steps_.capacity() * sizeof(CleanUpdate) +
         (before_.capacity() + last_.capacity() + chain_.capacity()) * sizeof(std::int32_t);
}

std::int32_t& CleanStepList::lastInBucket(std::uint32_t row, std::uint32_t column) {
  // Any odd constants that spread neighbouring pixels.
  const std::uint64_t mixed = (std::uint64_t{row} * 0x9E3779B1U + column) * 0x85EBCA6BU;
  return last_[static_cast<std::size_t>(mixed >> 8U) % last_.size()];
}

void CleanStepList::append(const CleanStep& step) {
  assert(steps_.size() < capacity_);
  if (merging_) {
    std::int32_t& last = lastInBucket(step.row, step.column);
    std::int32_t i = last;
    while (i >= 0 && (steps_[static_cast<std::size_t>(i)].row != step.row ||
                      steps_[static_cast<std::size_t>(i)].column != step.column))
      i = chain_[static_cast<std::size_t>(i)];
    before_.push_back(i);
    chain_.push_back(last);
    last = static_cast<std::int32_t>(steps_.size());
  }
  CleanUpdate& update = steps_.emplace_back();
  update.row = step.row;
  update.column = step.column;
  std::copy(step.increments.begin(), step.increments.end(), update.increments);
}

void CleanStepList::drop(std::size_t count) {
  const auto gone = static_cast<std::ptrdiff_t>(count);
  steps_.erase(steps_.begin(), steps_.begin() + gone);
  if (!merging_) return;
  before_.erase(before_.begin(), before_.begin() + gone);
  chain_.erase(chain_.begin(), chain_.begin() + gone);
  for (std::vector<std::int32_t>* links : {&before_, &chain_, &last_})
    for (std::int32_t& link : *links) link = std::max(link - static_cast<std::int32_t>(count), -1);
}

std::size_t CleanStepList::merge(std::size_t from, CleanUpdate* merged, std::size_t& count) const {
  std::uint16_t place[kMostSteps];  // in `merged`, of the steps taken
  count = 0;
  std::size_t i = from;
  for (; i < steps_.size(); ++i) {
    const std::int32_t before = before_[i];
    if (before >= static_cast<std::int32_t>(from)) {
      place[i - from] = place[static_cast<std::size_t>(before) - from];
      CleanUpdate& sum = merged[place[i - from]];
      for (std::int32_t j = 0; j < kMaxTileTerms; ++j) sum.increments[j] += steps_[i].increments[j];
      continue;
    }
    if (count == kMaxTileUpdates) break;
    place[i - from] = static_cast<std::uint16_t>(count);
    merged[count++] = steps_[i];
  }
  return i;
}

}  // namespace lumo
