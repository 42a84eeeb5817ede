// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamPlacement.h"

#include <hwy/cache_control.h>

#include <algorithm>

namespace lumo {

namespace {

std::uint32_t wrapped(std::int64_t index, std::size_t size) {
  const auto period = static_cast<std::int64_t>(size);
  return static_cast<std::uint32_t>(index < 0 ? index + period : index >= period ? index - period : index);
}

}  // namespace

BeamPlacement::BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                             std::size_t count, std::size_t group, std::size_t groupsAhead)
    : count_(count),
      updates_(updates),
      beamRows_(maps.beamRows),
      beamColumns_(maps.beamColumns),
      rowsLeft_(area.rows()),
      width_(static_cast<std::ptrdiff_t>(area.columns())) {
  const std::size_t width = area.columns();
  // A whole number of groups before the row's end, so that the next row is fetched from its first pixel on.
  distance_ = static_cast<std::ptrdiff_t>(std::min(groupsAhead * group + width % group, width));
  for (std::size_t p = 0; p < count; ++p) {
    const auto row = static_cast<std::int64_t>(beamRows_ / 2) - updates[p].row + area.firstRow;
    const auto column = static_cast<std::int64_t>(beamColumns_ / 2) - updates[p].column + area.firstColumn;
    const std::uint32_t beamColumn = wrapped(column, beamColumns_);
    next_[p] = static_cast<std::uint32_t>(wrapped(row, beamRows_) * beamColumns_ + beamColumn);
    straight_[p] = static_cast<std::uint32_t>(std::min(width, beamColumns_ - beamColumn));
    wraps_ = wraps_ || straight_[p] < width;
  }
  fetchFirst(maps);
}

void BeamPlacement::nextRow() {
  const auto columns = static_cast<std::uint32_t>(beamColumns_);
  const auto lastRow = static_cast<std::uint32_t>((beamRows_ - 1) * beamColumns_);
  std::copy(next_, next_ + count_, element_);
  if (--rowsLeft_ == 0) return;
  for (std::size_t p = 0; p < count_; ++p)
    next_[p] = element_[p] < lastRow ? element_[p] + columns : element_[p] - lastRow;
}

void BeamPlacement::fetchFirst(const CleanTileMaps& maps) const {
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps.terms - 1; ++m)
      for (std::size_t i = 0; i <= static_cast<std::size_t>(distance_); i += kFloatsPerLine)
        hwy::Prefetch(maps.beams[m] + next_[p] + i);
}

}  // namespace lumo
