// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "imaging/TilePool.h"

namespace lumo {
namespace {

bool isZero(const std::byte* piece) {
  return std::all_of(piece, piece + TilePool::kPieceBytes, [](std::byte b) { return b == std::byte{0}; });
}

TEST(TilePoolTest, PiecesAreZeroAlsoWhenOthersHaveUsedThem) {
  TilePool pool;
  constexpr std::size_t kPieces = 300;  // more than a block of memory
  std::vector<std::byte*> pieces;
  for (std::size_t i = 0; i < kPieces; ++i) {
    pieces.push_back(pool.take());
    ASSERT_TRUE(isZero(pieces.back()));
    std::memset(pieces.back(), 0x5a, TilePool::kPieceBytes);
  }
  EXPECT_EQ(std::set<std::byte*>(pieces.begin(), pieces.end()).size(), kPieces);
  EXPECT_EQ(pool.bytes(), kPieces * TilePool::kPieceBytes);
  pool.giveBack(pieces);
  EXPECT_EQ(pool.bytes(), 0u);
  const std::set<std::byte*> used(pieces.begin(), pieces.end());
  for (std::size_t i = 0; i < kPieces; ++i) {
    std::byte* const piece = pool.take();
    EXPECT_TRUE(used.contains(piece)) << "memory is taken while there is some left";
    ASSERT_TRUE(isZero(piece));
  }
  EXPECT_EQ(pool.bytes(), kPieces * TilePool::kPieceBytes);
  EXPECT_TRUE(isZero(pool.take()));
}

}  // namespace
}  // namespace lumo
