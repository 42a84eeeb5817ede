// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunMemory.h"

#include <algorithm>

#include "clean/CleanMemory.h"
#include "core/ProcessFacts.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

/// Code and tables of libraries that are first used during a run, plans of transforms, buffers of files. 3 MB
/// were measured.
constexpr std::uint64_t kLater = std::uint64_t{8} << 20;

}  // namespace

RunMemory runMemory(const RunParameters& parameters, const ABMakeParameters& imaging, int threads,
                    const GridLoad& load, const MemoryRoom& room) {
  const ImagingMemory made = imagingMemory(imaging, parameters.order, threads, load);
  const std::uint64_t mapPixels =
      static_cast<std::uint64_t>(imaging.halfSizeX) * static_cast<std::uint64_t>(imaging.halfSizeY);
  RunMemory memory;
  memory.before = residentBytes();
  memory.grids = made.grids;
  memory.imaging = made.peak();
  memory.clean = cleanMemory(parameters.order, mapPixels, 4 * mapPixels, threads);
  memory.least = imagingMemory(imaging, parameters.order, threads, {}).peak();
  memory.peak = memory.before + std::max(memory.imaging, memory.clean) + kLater;
  memory.room = room;
  return memory;
}

Status checkMemory(const RunMemory& memory, const ABMakeParameters& imaging, std::int32_t order) {
  if (memory.least <= memory.room.most) return {};
  return {StatusCode::kOutOfMemory, "maps of " + toStr(imaging.halfSizeX) + " x " + toStr(imaging.halfSizeY) +
                                        " pixels and " + toStr(order) + " spectral terms need " +
                                        bytesText(memory.least) + " of memory, and there are " +
                                        bytesText(memory.room.most) + " (" + memory.room.mostIs +
                                        "); lower the map size or the order"};
}

}  // namespace lumo
