// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AMeanSigmaTbl.h"

#include <utility>

namespace lumo {

void AMeanSigmaTbl::setData(MeanSigmaTable table) {
  // In characters: "14400.25 [MHz]", and a number of six digits with sign and exponent in the middle
  // of free room.
  constexpr int kFrequencyWidth = 14;
  constexpr int kValueWidth = 20;
  table_ = std::move(table);
  setTable(table_.rowCount(), table_.columnCount(), kFrequencyWidth, kValueWidth);
}

std::string AMeanSigmaTbl::headerText(int row, int column) const {
  return table_.headerText(row, column);
}

std::string AMeanSigmaTbl::cellText(int row, int column) const {
  return table_.cellText(row, column);
}

}  // namespace lumo
