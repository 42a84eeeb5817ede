// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "core/LargePages.h"

namespace lumo {

/// Memory of work grids in pieces of one size, shared by all work grids of a run: pieces of a grid that is
/// finished serve the next. It comes from the system in large pages where the system has them, because
/// gridding jumps about in it. May be used by several threads.
class TilePool {
 public:
  static constexpr std::size_t kPieceBytes = std::size_t{16} << 10;

  TilePool() = default;
  TilePool(const TilePool&) = delete;
  TilePool& operator=(const TilePool&) = delete;

  /// A piece of kPieceBytes, aligned to its size, all bytes 0.
  [[nodiscard]] std::byte* take();
  void giveBack(const std::vector<std::byte*>& pieces);
  /// Of the pieces that are in use, in bytes.
  [[nodiscard]] std::uint64_t bytes() const;

 private:
  static constexpr std::size_t kBlockBytes = kLargePage;
  struct Free {
    void operator()(std::byte* block) const;
  };

  /// A piece, and whether it was in use before.
  std::pair<std::byte*, bool> takeAny();

  mutable std::mutex mutex_;
  std::vector<std::unique_ptr<std::byte, Free>> blocks_;
  std::size_t fresh_ = 0;         ///< bytes at the end of the last block that nobody has had
  std::vector<std::byte*> used_;  ///< and given back
};

}  // namespace lumo
