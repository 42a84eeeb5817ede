// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// Memory that a CleanStage takes, in bytes, for maps and beams of these sizes: residuals, components, beams,
/// the restoring beam, one restored map, and what the engine holds beside them. Without a window that shows
/// it.
[[nodiscard]] std::uint64_t cleanMemory(std::int32_t terms, std::uint64_t mapPixels, std::uint64_t beamPixels,
                                        int threads);

/// What an engine holds beyond maps and beams of so many bytes at most, with so many threads.
[[nodiscard]] std::uint64_t cleanEngineMemory(std::uint64_t mapsAndBeams, int threads);

}  // namespace lumo
