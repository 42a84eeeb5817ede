// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXFqTbl.h"

#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo {

AUVXFqTbl::AUVXFqTbl(const AUVXFile& file, std::int32_t /*sourceId*/)
    : ifs_(file.shape().ifs), channels_(file.shape().channels) {
  const auto table = file.GetTable("FQ");
  if (!table) return;
  const std::size_t rowBytes = kSelectionHeadBytes + kSelectionBandBytes * ifs_;
  selections_.reserve(table->size() / rowBytes);
  for (std::size_t at = 0; at + rowBytes <= table->size(); at += rowBytes) {
    const std::uint8_t* const row = table->data() + at;
    UvxSelection selection{loadLittle<std::int32_t>(row), {}};
    selection.bands.reserve(ifs_);
    for (std::size_t field = kSelectionHeadBytes; field < rowBytes; field += kSelectionBandBytes)
      selection.bands.push_back({loadLittle<double>(row + field), loadLittle<double>(row + field + 8)});
    selections_.push_back(std::move(selection));
  }
}

int AUVXFqTbl::GetFreqSelNum(int id) const {
  for (std::size_t i = 0; i < selections_.size(); ++i)
    if (selections_[i].id == id) return static_cast<int>(i);
  return -1;
}

double AUVXFqTbl::GetFreq(int channel, int ifIndex, int selection) const {
  const UvxSelection::Band& band =
      selections_[static_cast<std::size_t>(selection)].bands[static_cast<std::size_t>(ifIndex)];
  return band.frequency + channel * band.increment;
}

}  // namespace lumo
