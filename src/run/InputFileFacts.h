// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// What tells an input file from every other.
struct InputFileFacts {
  std::uint64_t bytes = 0;
  std::uint32_t crc = 0;  ///< CRC-32 of the whole file
};

}  // namespace lumo
