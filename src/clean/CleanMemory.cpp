// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanMemory.h"

#include <algorithm>

namespace lumo {

std::uint64_t cleanEngineMemory(std::uint64_t mapsAndBeams, int threads) {
  // TiledCleanEngine's bound, its pending list on small maps, and a thread's stack as far as it is used.
  constexpr std::uint64_t kPart = 50;
  constexpr std::uint64_t kSmall = std::uint64_t{64} << 10;
  constexpr std::uint64_t kStack = std::uint64_t{128} << 10;
  return mapsAndBeams / kPart + kSmall + static_cast<std::uint64_t>(std::max(threads, 1)) * kStack;
}

std::uint64_t cleanMemory(std::int32_t terms, std::uint64_t mapPixels, std::uint64_t beamPixels,
                          int threads) {
  const auto n = static_cast<std::uint64_t>(terms);
  const std::uint64_t maps = 2 * n * mapPixels * sizeof(float);
  const std::uint64_t beams = (2 * n - 1) * beamPixels * sizeof(float);
  // The restored map, and the restoring beam: known only when the coverage is, and in general far smaller
  // than this.
  const std::uint64_t restored = 2 * mapPixels * sizeof(float);
  return maps + beams + restored + cleanEngineMemory(maps + beams, threads);
}

}  // namespace lumo
