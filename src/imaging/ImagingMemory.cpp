// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ImagingMemory.h"

#include <algorithm>

#include "imaging/BatchGridder.h"
#include "imaging/FourierTransform.h"
#include "imaging/GridGeometry.h"
#include "imaging/LumoMakeWork.h"
#include "imaging/SpectralGridSet.h"
#include "imaging/WorkGrid.h"

namespace lumo {

namespace {

/// What the C library keeps of freed memory at most: twice its largest block that does not come from the
/// system by itself.
constexpr std::uint64_t kKept = std::uint64_t{64} << 20;

/// What shares the first pass over the file.
struct FirstPass {
  FirstPass(const GridGeometry& geometry, int threads, const GridLoad& load)
      : most(BatchGridder::mostTogether(geometry, threads, LumoMakeWork::kWorkGridBytes)),
        ifs(std::min(most, std::max<std::size_t>(load.ifs, 1))) {}
  std::size_t most;  ///< IFs of all selections
  std::size_t ifs;   ///< of one of them
};

std::uint64_t workGridBytes(const GridGeometry& geometry, int threads, const GridLoad& load,
                            const FirstPass& pass) {
  constexpr std::uint64_t kTileBytes = std::uint64_t{WorkGrid::kTileCells} * sizeof(WorkGrid::Cell);
  const std::uint64_t pointers = WorkGrid::emptyBytes(geometry);
  const std::uint64_t together = std::min(pass.most, pass.ifs * std::max<std::size_t>(load.selections, 1));
  if (load.tiles == 0) return pointers;
  // Each part of each grid has a piece that it has not filled yet.
  const std::uint64_t unfilled =
      static_cast<std::uint64_t>(BatchGridder::partsFor(pass.ifs, threads)) * TilePool::kPieceBytes;
  const std::uint64_t one = load.tiles * kTileBytes + unfilled;
  // What does not fit is found out after a block, each point of which may have taken a tile.
  const std::uint64_t limit = std::max(LumoMakeWork::kWorkGridBytes, one) +
                              BatchGridder::blockGroups(pass.ifs, threads) * pass.ifs * kTileBytes;
  return together * pointers + std::min(together * one, limit);
}

}  // namespace

ImagingMemory imagingMemory(const ABMakeParameters& parameters, std::int32_t order, int threads,
                            const GridLoad& load) {
  const GridGeometry geometry(parameters);
  const auto rows = static_cast<std::uint32_t>(geometry.rows);
  const auto columns = static_cast<std::uint32_t>(geometry.columns);
  ImagingMemory memory;
  memory.grids = SpectralGridSet::bytes(order, rows, columns);
  const FirstPass pass(geometry, threads, load);
  const std::uint64_t work = workGridBytes(geometry, threads, load, pass);
  memory.gridding = work + BatchGridder::bufferBytes(load.ifs, threads) +
                    BatchGridder::fileWindow(pass.ifs, threads, {load.ifs, load.groupBytes, load.fileBytes});
  if (parameters.weightingMode == kUniformWeighting)
    memory.gridding += std::uint64_t{rows} * columns * sizeof(double);
  // A grid is gone before its image is copied for the file, and the copy is half as large.
  memory.transform = GridTransform::bytes(rows, columns, threads) + std::min(work, kKept);
  return memory;
}

}  // namespace lumo
