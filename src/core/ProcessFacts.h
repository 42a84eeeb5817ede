// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// Seconds since the system started this process, so that loading the program counts. In steps of 10 ms, the
/// system's own; 0 where it does not tell.
[[nodiscard]] double processSeconds();

/// Memory that this process holds now, in bytes, the files it reads through memory maps among it; 0 where the
/// system does not tell.
[[nodiscard]] std::uint64_t residentBytes();

}  // namespace lumo
