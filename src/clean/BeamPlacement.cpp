// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamPlacement.h"

#include <algorithm>

namespace lumo {

namespace {

std::uint32_t wrapped(std::int64_t index, std::size_t size) {
  const auto period = static_cast<std::int64_t>(size);
  return static_cast<std::uint32_t>(index < 0 ? index + period : index >= period ? index - period : index);
}

}  // namespace

BeamPlacement::BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                             std::size_t count)
    : count_(count),
      updates_(updates),
      beamRows_(maps.beamRows),
      beamColumns_(maps.beamColumns),
      firstRow_(area.firstRow),
      lastRow_(area.lastRow - 1) {
  const std::size_t width = area.lastColumn - area.firstColumn;
  for (std::size_t p = 0; p < count; ++p) {
    const auto row = static_cast<std::int64_t>(beamRows_ / 2) - updates[p].row + area.firstRow;
    const auto column = static_cast<std::int64_t>(beamColumns_ / 2) - updates[p].column + area.firstColumn;
    row_[p] = wrapped(row, beamRows_);
    column_[p] = wrapped(column, beamColumns_);
    straight_[p] = static_cast<std::uint32_t>(std::min(width, beamColumns_ - column_[p]));
    wraps_ = wraps_ || straight_[p] < width;
  }
}

std::uint32_t BeamPlacement::elementBelow(std::size_t step, std::size_t row) const {
  const std::size_t beamRow = row_[step] + row;
  return static_cast<std::uint32_t>((beamRow >= beamRows_ ? beamRow - beamRows_ : beamRow) * beamColumns_ +
                                    column_[step]);
}

void BeamPlacement::enterRow(std::size_t row) {
  const std::size_t after = std::min(row + 1, lastRow_);
  for (std::size_t p = 0; p < count_; ++p) {
    element_[p] = elementBelow(p, row - firstRow_);
    next_[p] = elementBelow(p, after - firstRow_);
  }
}

}  // namespace lumo
