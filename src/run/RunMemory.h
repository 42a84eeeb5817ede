// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "core/MemoryRoom.h"
#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/ImagingMemory.h"
#include "run/RunParameters.h"

namespace lumo {

/// The memory of a run, in bytes. Imaging and CLEAN follow each other, so the larger counts; the index maps,
/// which come last, need less than CLEAN.
struct RunMemory {
  std::uint64_t before = 0;   ///< what the process held before the run
  std::uint64_t grids = 0;    ///< of imaging: the spectral grids
  std::uint64_t imaging = 0;  ///< all of imaging
  std::uint64_t clean = 0;
  std::uint64_t peak = 0;   ///< of the process, estimated from the coverage; in general a little too high
  std::uint64_t least = 0;  ///< what imaging takes for certain, with any data
  MemoryRoom room;
};

/// Works out the memory of a run whose most demanding file is `load`; without tiles what is certain for
/// any data. `imaging` must have been through Setup.
[[nodiscard]] RunMemory runMemory(const RunParameters& parameters, const ABMakeParameters& imaging,
                                  int threads, const GridLoad& load, const MemoryRoom& room);

/// kOutOfMemory when the run cannot fit, whatever else the machine does: its certain part is more than the
/// process can ever have.
[[nodiscard]] Status checkMemory(const RunMemory& memory, const ABMakeParameters& imaging,
                                 std::int32_t order);

}  // namespace lumo
