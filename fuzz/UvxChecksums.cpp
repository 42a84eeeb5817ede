// SPDX-License-Identifier: GPL-3.0-or-later
#include "UvxChecksums.h"

#include <algorithm>

#include "core/Crc32.h"
#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo::fuzz {

void mendChecksums(std::uint8_t* data, std::size_t size) {
  namespace h = uvx_header;
  namespace e = uvx_entry;
  if (size < h::kBytes) return;
  const auto directory = loadLittle<std::uint64_t>(data + h::kDirectoryOffset);
  const auto count = std::min<std::uint32_t>(loadLittle<std::uint32_t>(data + h::kTableCount), 64);
  for (std::uint64_t i = 0; i < count; ++i) {
    // Entries that reach into the header would spoil it.
    if (directory < h::kBytes || directory > size || size - directory < (i + 1) * e::kBytes) break;
    std::uint8_t* const entry = data + directory + i * e::kBytes;
    const auto offset = loadLittle<std::uint64_t>(entry + e::kOffset);
    const auto bytes = loadLittle<std::uint64_t>(entry + e::kSize);
    if (offset > size || bytes > size - offset) continue;
    storeLittle<std::uint32_t>(entry + e::kCrc, crc32Of(data + offset, bytes));
  }
  storeLittle<std::uint32_t>(data + h::kCrc, crc32Of(data, h::kCrc));
}

}  // namespace lumo::fuzz
