// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/TileCover.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace lumo {

namespace {

constexpr std::size_t kBits = 64;

/// The tiles that lie over the cells center − reach .. center + reach inside 0 .. cells − 1.
struct TileRange {
  TileRange(double center, double reach, std::int32_t cells, std::int32_t perTile) {
    if (!(center + reach >= 0 && center - reach <= cells - 1)) return;
    first = static_cast<std::int32_t>(std::max(center - reach, 0.0)) / perTile;
    last = static_cast<std::int32_t>(std::min(center + reach, cells - 1.0)) / perTile;
  }
  std::int32_t first = 0;
  std::int32_t last = -1;
};

}  // namespace

TileCover::Layout::Layout(const ABMakeParameters& parameters) : geometry(parameters), tiles(geometry) {
  if (const auto adder = makePointAdder(parameters, geometry)) reach = adder->reach();
}

void TileCover::add(const Layout& layout, double u, double v) {
  if (bits_.empty()) {
    const auto count =
        static_cast<std::size_t>(layout.tiles.tileRows) * static_cast<std::size_t>(layout.tiles.tilesPerRow);
    bits_.resize((count + kBits - 1) / kBits);
  }
  addOne(layout, u, v);
  addOne(layout, -u, -v);
}

void TileCover::addOne(const Layout& layout, double u, double v) {
  const GridGeometry& g = layout.geometry;
  const TileRange columns(std::trunc((u + g.uMax) * g.perDu + 0.5) - g.nx, layout.reach.u, g.columns,
                          WorkGrid::kTileColumns);
  const TileRange rows(std::trunc((v + g.vMax) * g.perDv + 0.5), layout.reach.v, g.rows, WorkGrid::kTileRows);
  for (std::int32_t row = rows.first; row <= rows.last; ++row)
    for (std::int32_t column = columns.first; column <= columns.last; ++column) {
      const auto tile = static_cast<std::size_t>(row) * static_cast<std::size_t>(layout.tiles.tilesPerRow) +
                        static_cast<std::size_t>(column);
      bits_[tile / kBits] |= std::uint64_t{1} << (tile % kBits);
    }
}

void TileCover::merge(const TileCover& other) {
  if (bits_.empty()) bits_.resize(other.bits_.size());
  for (std::size_t i = 0; i < other.bits_.size(); ++i) bits_[i] |= other.bits_[i];
}

std::uint64_t TileCover::count() const {
  std::uint64_t count = 0;
  for (const std::uint64_t word : bits_) count += static_cast<std::uint64_t>(std::popcount(word));
  return count;
}

}  // namespace lumo
