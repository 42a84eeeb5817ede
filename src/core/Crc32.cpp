// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Crc32.h"

#include <zlib.h>

namespace lumo {

std::uint32_t crc32Of(const void* bytes, std::size_t size, std::uint32_t seed) {
  // zlib answers a null pointer with its initial value, which would lose the seed of an empty piece.
  if (size == 0) return seed;
  return static_cast<std::uint32_t>(::crc32_z(seed, static_cast<const Bytef*>(bytes), size));
}

std::uint32_t crc32Joined(std::uint32_t first, std::uint32_t second, std::uint64_t secondSize) {
  return static_cast<std::uint32_t>(::crc32_combine(first, second, static_cast<z_off_t>(secondSize)));
}

}  // namespace lumo
