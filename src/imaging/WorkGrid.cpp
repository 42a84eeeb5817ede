// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/WorkGrid.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

namespace lumo {

namespace {

std::uint64_t tileCount(const WorkGrid::Layout& layout) {
  return static_cast<std::uint64_t>(layout.tileRows) * static_cast<std::uint64_t>(layout.tilesPerRow);
}

}  // namespace

WorkGrid::Layout::Layout(const GridGeometry& geometry)
    : rows(geometry.rows),
      columns(geometry.columns),
      tileRows((rows - 1) / kTileRows + 1),
      tilesPerRow((columns - 1) / kTileColumns + 1) {}

bool WorkGrid::Layout::fits() const {
  return tileCount(*this) * kTileCells <=
         static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
}

std::uint64_t WorkGrid::emptyBytes(const GridGeometry& geometry) {
  return tileCount(Layout(geometry)) * sizeof(void*);
}

std::uint64_t WorkGrid::bytes(const GridGeometry& geometry) {
  return emptyBytes(geometry) + tileCount(Layout(geometry)) * kTileCells * sizeof(Cell);
}

WorkGrid::WorkGrid(const GridGeometry& geometry, int parts, TilePool& pool)
    : layout_(geometry), tiles_(static_cast<std::size_t>(tileCount(layout_))) {
  for (int i = 0; i < std::max(parts, 1); ++i) stores_.emplace_back(pool);
}

WorkGrid::Cell* WorkGrid::Store::take() {
  constexpr std::size_t kTileBytes = kTileCells * sizeof(Cell);
  if (left_ == 0) {
    pieces_.push_back(pool_->take());
    left_ = TilePool::kPieceBytes / kTileBytes;
  }
  // Bytes of zeros are cells of zeros.
  return reinterpret_cast<Cell*>(pieces_.back() + --left_ * kTileBytes);
}

void WorkGrid::Store::release() {
  pool_->giveBack(pieces_);
  pieces_.clear();
  left_ = 0;
}

WorkGrid::Target::Target(SpectralGridSet& grids, AMatrix<double>* cumulative)
    : kernels(cumulative != nullptr ? cumulative->data() : nullptr) {
  for (AMatrix<Complex>& grid : grids.beams) beams.push_back(grid.data());
  for (AMatrix<Complex>& grid : grids.dirty) dirty.push_back(grid.data());
}

void WorkGrid::foldTile(Cell* tile, std::size_t firstElement, const std::vector<double>& powers,
                        const Target& target) const {
  struct Sum {
    const Cell* cell;
    std::size_t element;
  };
  std::uint8_t touched[kTileCells];
  std::size_t count = 0;
  for (std::uint32_t i = 0; i < kTileCells; ++i) {
    touched[count] = static_cast<std::uint8_t>(i);
    // A sum that begins with 0 is never -0: it is 0 only where all bits are.
    count += std::bit_cast<std::uint64_t>(tile[i].kernel) != 0 ? 1 : 0;
  }
  Sum sums[kTileCells];
  for (std::size_t n = 0; n < count; ++n) {
    const std::size_t i = touched[n];
    sums[n] = {tile + i, firstElement + i / kTileColumns * static_cast<std::size_t>(layout_.columns) +
                             i % kTileColumns};
  }
  for (std::size_t k = 0; k < target.beams.size(); ++k) {
    const double p = powers[k];
    // Beam grids are real: std::complex += double leaves the imaginary part alone.
    for (std::size_t i = 0; i < count; ++i) target.beams[k][sums[i].element] += p * sums[i].cell->weight;
    if (k >= target.dirty.size()) continue;
    for (std::size_t i = 0; i < count; ++i)
      target.dirty[k][sums[i].element] += Complex(p * sums[i].cell->re, p * sums[i].cell->im);
  }
  if (target.kernels != nullptr)
    for (std::size_t i = 0; i < count; ++i) target.kernels[sums[i].element] += sums[i].cell->kernel;
}

void WorkGrid::foldTileRow(std::int32_t tileRow, const std::vector<double>& powers, const Target& target) {
  Cell** const tiles =
      &tiles_[static_cast<std::size_t>(tileRow) * static_cast<std::size_t>(layout_.tilesPerRow)];
  const std::size_t firstElement =
      static_cast<std::size_t>(tileRow) * kTileRows * static_cast<std::size_t>(layout_.columns);
  for (std::int32_t t = 0; t < layout_.tilesPerRow; ++t) {
    if (tiles[t] == nullptr) continue;
    if (t + 1 < layout_.tilesPerRow && tiles[t + 1] != nullptr)
      for (std::uint32_t i = 0; i < kTileCells; i += 2) __builtin_prefetch(tiles[t + 1] + i);
    foldTile(tiles[t], firstElement + static_cast<std::size_t>(t) * kTileColumns, powers, target);
    tiles[t] = nullptr;
  }
}

void WorkGrid::release() {
  for (Store& store : stores_) store.release();
}

}  // namespace lumo
