// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo {

/// CRC-32 with the zlib polynomial; `seed` is the CRC of the bytes before these.
[[nodiscard]] std::uint32_t crc32Of(const void* bytes, std::size_t size, std::uint32_t seed = 0);
/// The CRC of two pieces one after the other, from the CRC of each and the bytes of the second.
[[nodiscard]] std::uint32_t crc32Joined(std::uint32_t first, std::uint32_t second, std::uint64_t secondSize);

}  // namespace lumo
