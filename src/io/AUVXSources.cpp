// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXSources.h"

#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo {

AUVXSources::AUVXSources(const AUVXFile& file) {
  const auto table = file.GetTable("SU");
  if (!table) return;
  for (std::size_t at = 0; at + kSourceRowBytes <= table->size(); at += kSourceRowBytes) {
    const std::uint8_t* const row = table->data() + at;
    AUVXSourceItem item;
    item.id = loadLittle<std::int32_t>(row);
    item.name.assign(reinterpret_cast<const char*>(row + 4), kNameBytes);
    item.name.erase(item.name.find_last_not_of(std::string_view(" \0", 2)) + 1);
    item.frame = static_cast<UvxFrame>(loadLittle<std::uint32_t>(row + 20));
    item.rightAscension = loadLittle<double>(row + 24);
    item.declination = loadLittle<double>(row + 32);
    item.epoch = loadLittle<double>(row + 40);
    items_.push_back(std::move(item));
  }
}

const AUVXSourceItem* AUVXSources::ForID(std::int32_t id) const {
  for (const AUVXSourceItem& item : items_)
    if (item.id == id) return &item;
  return nullptr;
}

}  // namespace lumo
