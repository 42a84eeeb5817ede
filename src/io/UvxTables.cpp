// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/UvxTables.h"

#include "core/LittleEndian.h"

namespace lumo {

bool isProductCode(std::int32_t code) {
  return (code >= 1 && code <= 4) || (code >= -8 && code <= -1);
}

void UvxRecord::store(std::uint8_t* bytes) const {
  bytes[0] = flag;
  bytes[1] = static_cast<std::uint8_t>(freqSel);
  storeLittle<std::uint16_t>(bytes + 2, baseline);
  storeLittle<float>(bytes + 4, u);
  storeLittle<float>(bytes + 8, v);
  storeLittle<float>(bytes + 12, w);
  storeLittle<double>(bytes + 16, time);
  storeLittle<std::int16_t>(bytes + 24, source);
}

}  // namespace lumo
