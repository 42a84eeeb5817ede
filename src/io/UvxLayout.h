// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace lumo {

// Byte layout of a UVX file, version 1, shared by its reader and its writer; docs/formats.md describes it.

inline constexpr std::array<std::uint8_t, 8> kUvxMagic = {0x89, 'U', 'V', 'X', 0x0D, 0x0A, 0x1A, 0x0A};
inline constexpr std::uint32_t kUvxVersion = 1;

/// Offsets inside the header.
namespace uvx_header {
inline constexpr std::size_t kVersion = 8;
inline constexpr std::size_t kHeaderSize = 12;
inline constexpr std::size_t kGroupCount = 16;
inline constexpr std::size_t kGroupOffset = 24;
inline constexpr std::size_t kGroupBytes = 32;
inline constexpr std::size_t kIfs = 36;
inline constexpr std::size_t kChannels = 40;
inline constexpr std::size_t kProducts = 44;
inline constexpr std::size_t kExtents = 48;  ///< u min, u max, v min, v max
inline constexpr std::size_t kDirectoryOffset = 80;
inline constexpr std::size_t kTableCount = 88;
inline constexpr std::size_t kUnit = 92;
inline constexpr std::size_t kUnitBytes = 16;
inline constexpr std::size_t kCrc = 124;
inline constexpr std::size_t kBytes = 128;
}  // namespace uvx_header

/// Offsets inside an entry of the table directory.
namespace uvx_entry {
inline constexpr std::size_t kNameBytes = 8;
inline constexpr std::size_t kOffset = 8;
inline constexpr std::size_t kSize = 16;
inline constexpr std::size_t kRows = 24;
inline constexpr std::size_t kCrc = 28;
inline constexpr std::size_t kBytes = 32;
}  // namespace uvx_entry

/// Row sizes of the tables.
inline constexpr std::size_t kSourceRowBytes = 48;
inline constexpr std::size_t kProductRowBytes = 4;
inline constexpr std::size_t kAntennaRowBytes = 48;
inline constexpr std::size_t kNameBytes = 16;  ///< blank-padded names of sources and antennas
inline constexpr std::size_t kSelectionHeadBytes = 8;
inline constexpr std::size_t kSelectionBandBytes = 16;

/// Bytes of one visibility: three floats.
inline constexpr std::uint64_t kVisibilityBytes = 12;

}  // namespace lumo
