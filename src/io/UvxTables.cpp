// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/UvxTables.h"

#include <cstring>

#include "core/LittleEndian.h"

namespace lumo {

bool isProductCode(std::int32_t code) {
  return (code >= 1 && code <= 4) || (code >= -8 && code <= -1);
}

UvxRecord UvxRecord::load(const std::uint8_t* bytes) {
  UvxRecord record;
  record.flag = bytes[0];
  record.freqSel = static_cast<std::int8_t>(bytes[1]);
  record.baseline = loadLittle<std::uint16_t>(bytes + 2);
  record.u = loadLittle<float>(bytes + 4);
  record.v = loadLittle<float>(bytes + 8);
  record.w = loadLittle<float>(bytes + 12);
  record.time = loadLittle<double>(bytes + 16);
  record.source = loadLittle<std::int16_t>(bytes + 24);
  return record;
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
