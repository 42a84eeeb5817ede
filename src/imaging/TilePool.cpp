// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/TilePool.h"

#include <cstring>
#include <new>

namespace lumo {

void TilePool::Free::operator()(std::byte* block) const {
  giveBackPages(block, kBlockBytes);
}

std::byte* TilePool::take() {
  const auto [piece, used] = takeAny();
  // What the system has just given is zero: to write it again would fetch it once more from memory.
  if (used) std::memset(piece, 0, kPieceBytes);
  return piece;
}

std::pair<std::byte*, bool> TilePool::takeAny() {
  const std::lock_guard lock(mutex_);
  if (!used_.empty()) {
    std::byte* const piece = used_.back();
    used_.pop_back();
    return {piece, true};
  }
  if (fresh_ == 0) {
    // Room for all pieces, so that giving them back cannot fail.
    used_.reserve((blocks_.size() + 1) * (kBlockBytes / kPieceBytes));
    auto* const memory = static_cast<std::byte*>(takePages(kBlockBytes, true));
    if (memory == nullptr) throw std::bad_alloc();
    blocks_.emplace_back(memory);
    fresh_ = kBlockBytes;
  }
  std::byte* const piece = blocks_.back().get() + (kBlockBytes - fresh_);
  fresh_ -= kPieceBytes;
  return {piece, false};
}

void TilePool::giveBack(const std::vector<std::byte*>& pieces) {
  const std::lock_guard lock(mutex_);
  used_.insert(used_.end(), pieces.begin(), pieces.end());
}

std::uint64_t TilePool::bytes() const {
  const std::lock_guard lock(mutex_);
  return blocks_.size() * kBlockBytes - fresh_ - used_.size() * kPieceBytes;
}

}  // namespace lumo
