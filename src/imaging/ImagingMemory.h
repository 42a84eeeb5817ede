// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ABMakeParameters.h"

namespace lumo {

/// The file whose gridding takes most memory.
struct GridLoad {
  std::size_t selections = 1;  ///< with visibilities
  std::size_t ifs = 1;         ///< of each, at least 1
  std::uint64_t tiles = 0;     ///< of a WorkGrid that the visibilities of one IF fall into, at most
  std::uint64_t groupBytes = 0;
  std::uint64_t fileBytes = 0;
};

/// Memory that LumoMakeWork takes, in bytes.
struct ImagingMemory {
  std::uint64_t grids = 0;  ///< spectral grids, which are there throughout
  /// Beside them while gridding: work grids, sums for uniform weighting, buffers.
  std::uint64_t gridding = 0;
  std::uint64_t transform = 0;  ///< beside them afterwards: the image, buffers, and what is not given back

  [[nodiscard]] std::uint64_t peak() const { return grids + (gridding > transform ? gridding : transform); }
};

/// For a parameter block after Setup, `order` terms, as many threads, and LumoMakeWork's limit for the work
/// grids. A GridLoad without tiles gives what any run of this size takes.
[[nodiscard]] ImagingMemory imagingMemory(const ABMakeParameters& parameters, std::int32_t order, int threads,
                                          const GridLoad& load);

}  // namespace lumo
