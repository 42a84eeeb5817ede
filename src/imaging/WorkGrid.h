// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/AMatrix.h"
#include "imaging/GridGeometry.h"
#include "imaging/SpectralGridSet.h"
#include "imaging/TilePool.h"

namespace lumo {

/// The sums of one frequency while it is gridded: per cell ΣK·w, ΣK·w·V and ΣK.
///
/// The grid is cut into tiles of kTileRows × kTileColumns cells that take memory when the first visibility
/// falls into them, so that memory, folding and clearing cost what the data cover and not what the grid
/// holds. The four numbers of a cell lie together: a visibility touches one cache line per cell.
///
/// Several threads may add to one grid when each keeps to the tiles of its own part, see partOf().
class WorkGrid {
 public:
  static constexpr std::int32_t kTileRows = 8;
  static constexpr std::int32_t kTileColumns = 8;
  static constexpr std::uint32_t kTileCells = kTileRows * kTileColumns;

  struct Cell {
    double weight = 0;
    double re = 0;
    double im = 0;
    double kernel = 0;

    // All are read before the first is written, so that pairs of them can be added at once.
    void add(const Cell& other) {
      *this = {weight + other.weight, re + other.re, im + other.im, kernel + other.kernel};
    }
  };

  /// How the tiles of a geometry are numbered: cell number = tile · kTileCells + row · kTileColumns + column
  /// within the tile, tiles row by row.
  struct Layout {
    explicit Layout(const GridGeometry& geometry);
    [[nodiscard]] std::uint32_t cell(std::int32_t row, std::int32_t column) const {
      const std::uint32_t height = kTileRows;
      const std::uint32_t width = kTileColumns;
      const auto r = static_cast<std::uint32_t>(row);
      const auto c = static_cast<std::uint32_t>(column);
      const std::uint32_t tile = r / height * static_cast<std::uint32_t>(tilesPerRow) + c / width;
      return tile * kTileCells + r % height * width + c % width;
    }
    /// For a cell of column 0 but not of row 0, the one at rows − row.
    [[nodiscard]] std::uint32_t oppositeCell(std::uint32_t number) const {
      const auto tileRow = static_cast<std::int32_t>(number / kTileCells) / tilesPerRow;
      const auto rowInTile = static_cast<std::int32_t>(number % kTileCells / kTileColumns);
      return cell(rows - (tileRow * kTileRows + rowInTile), 0);
    }
    /// True when every cell has a number.
    [[nodiscard]] bool fits() const;

    std::int32_t rows, columns;
    std::int32_t tileRows, tilesPerRow;
  };

  /// Bytes that an empty work grid and one with every tile take.
  [[nodiscard]] static std::uint64_t emptyBytes(const GridGeometry& geometry);
  [[nodiscard]] static std::uint64_t bytes(const GridGeometry& geometry);

  /// An empty grid whose tiles are dealt out to `parts` threads, at least 1. `pool` must outlive it.
  WorkGrid(const GridGeometry& geometry, int parts, TilePool& pool);

  [[nodiscard]] const Layout& layout() const { return layout_; }
  [[nodiscard]] int parts() const { return static_cast<int>(stores_.size()); }
  /// The part to which a cell's tile belongs. Neighbouring tiles fall to different parts as if by chance, so
  /// that parts have about the same work.
  [[nodiscard]] static int partOf(std::uint32_t cell, int parts) {
    const std::uint32_t mixed = cell / kTileCells * 0x9E3779B1u;
    return static_cast<int>(((mixed >> 16) * static_cast<std::uint32_t>(parts)) >> 16);
  }

  /// A cell, which must belong to `part`; its tile takes memory. Valid until it is folded.
  [[nodiscard]] Cell& cell(std::uint32_t number, int part) {
    Cell*& tile = tiles_[number / kTileCells];
    if (tile == nullptr) [[unlikely]]
      tile = stores_[static_cast<std::size_t>(part)].take();
    return tile[number % kTileCells];
  }

  /// Where fold() adds: the grids' elements and, for uniform weighting, ΣK of all frequencies (else null).
  struct Target {
    Target(SpectralGridSet& grids, AMatrix<double>* cumulative);
    std::vector<Complex*> beams, dirty;
    double* kernels = nullptr;
  };
  /// Adds the sums of one row of tiles, times f^k, to spectral grid k wherever ΣK is not 0, and empties these
  /// tiles. `powers` holds f^0 .. f^(beams − 1). Threads may fold different rows of tiles at the same time.
  void foldTileRow(std::int32_t tileRow, const std::vector<double>& powers, const Target& target);
  /// After all rows of tiles were folded: gives the memory back to the pool.
  void release();

 private:
  /// Hands out tiles of zeros.
  class Store {
   public:
    explicit Store(TilePool& pool) : pool_(&pool) {}
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    Store(Store&& other) noexcept = default;
    Store& operator=(Store&&) = delete;
    ~Store() { release(); }
    [[nodiscard]] Cell* take();
    void release();

   private:
    TilePool* pool_;
    std::vector<std::byte*> pieces_;
    std::size_t left_ = 0;  ///< tiles of the last piece that are free
  };

  void foldTile(Cell* tile, std::size_t firstElement, const std::vector<double>& powers,
                const Target& target) const;

  Layout layout_;
  std::vector<Cell*> tiles_;  ///< null where nothing was added
  std::vector<Store> stores_;
};

}  // namespace lumo
