// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/TilePool.h"

#include <new>

namespace lumo {

void TilePool::Free::operator()(std::byte* block) const {
  giveBackPages(block, kBlockBytes);
}

std::byte* TilePool::take() {
  const std::lock_guard lock(mutex_);
  if (free_.empty()) {
    auto* const memory = static_cast<std::byte*>(takePages(kBlockBytes, true));
    if (memory == nullptr) throw std::bad_alloc();
    blocks_.emplace_back(memory);
    // Room for all pieces, so that giving them back cannot fail.
    free_.reserve(blocks_.size() * (kBlockBytes / kPieceBytes));
    for (std::size_t end = kBlockBytes; end > 0; end -= kPieceBytes)
      free_.push_back(memory + (end - kPieceBytes));
  }
  std::byte* const piece = free_.back();
  free_.pop_back();
  return piece;
}

void TilePool::giveBack(const std::vector<std::byte*>& pieces) {
  const std::lock_guard lock(mutex_);
  free_.insert(free_.end(), pieces.begin(), pieces.end());
}

std::uint64_t TilePool::bytes() const {
  const std::lock_guard lock(mutex_);
  return blocks_.size() * kBlockBytes - free_.size() * kPieceBytes;
}

}  // namespace lumo
