// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/FrequencyIdTable.h"

#include <algorithm>

#include "core/TextForm.h"

namespace lumo {

void FrequencyIdTable::rebuild() {
  starts_.assign(1, 0);
  for (const ABitArray& mask : inputs_.selections) starts_.push_back(starts_.back() + mask.count());
}

FrequencyIdTable::Cell FrequencyIdTable::cellAt(std::int64_t row) const {
  // The last mask that starts at or before the row: masks without bits start where the next one does.
  const auto after = std::upper_bound(starts_.begin(), starts_.end(), row);
  const auto file = after - starts_.begin() - 1;
  return {static_cast<std::int32_t>(file),
          static_cast<std::int32_t>(row - starts_[static_cast<std::size_t>(file)])};
}

std::string FrequencyIdTable::rowText(std::int64_t row) const {
  const Cell cell = cellAt(row);
  const bool known =
      cell.file < inputs_.tables.count() && cell.selection < inputs_.tables[cell.file].GetFreqSels();
  return "File " + toStr(cell.file + 1) + ",  Fq. ID " +
         (known ? toStr(inputs_.tables[cell.file].GetFreqSelID(cell.selection)) : "?");
}

int FrequencyIdTable::checkImage(std::int64_t row) const {
  const Cell cell = cellAt(row);
  const bool checked = inputs_.selections[cell.file](cell.selection) != 0;
  if (rowCount() == 1) return checked ? kLoneCheckedImage : kLoneUncheckedImage;
  return checked ? kCheckedImage : kUncheckedImage;
}

bool FrequencyIdTable::canToggle(std::int64_t row) const {
  return rowCount() > 1 && row >= 0 && row < rowCount();
}

}  // namespace lumo
