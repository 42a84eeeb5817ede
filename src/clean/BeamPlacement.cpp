// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamPlacement.h"

#include <hwy/cache_control.h>

#include <algorithm>

namespace lumo {

namespace {

/// Of a cache line.
constexpr std::ptrdiff_t kFloatsPerLine = 16;

std::uint32_t wrapped(std::int64_t index, std::size_t size) {
  const auto period = static_cast<std::int64_t>(size);
  return static_cast<std::uint32_t>(index < 0 ? index + period : index >= period ? index - period : index);
}

}  // namespace

BeamPlacement::BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                             std::size_t count, std::size_t group, std::size_t groupsAhead)
    : maps_(maps),
      count_(count),
      updates_(updates),
      rowsLeft_(area.rows()),
      width_(static_cast<std::ptrdiff_t>(area.columns())) {
  const std::size_t width = area.columns();
  // A whole number of groups before the row's end, so that the next row is fetched from its first pixel on.
  distance_ = static_cast<std::ptrdiff_t>(std::min(groupsAhead * group + width % group, width));
  for (std::size_t p = 0; p < count; ++p) {
    const auto row = static_cast<std::int64_t>(maps.beamRows / 2) - updates[p].row + area.firstRow;
    const auto column =
        static_cast<std::int64_t>(maps.beamColumns / 2) - updates[p].column + area.firstColumn;
    const std::uint32_t beamColumn = wrapped(column, maps.beamColumns);
    next_[p] = static_cast<std::uint32_t>(wrapped(row, maps.beamRows) * maps.beamColumns + beamColumn);
    straight_[p] = static_cast<std::uint32_t>(std::min(width, maps.beamColumns - beamColumn));
    wraps_ = wraps_ || straight_[p] < width;
  }
}

void BeamPlacement::nextRow() {
  const auto columns = static_cast<std::uint32_t>(maps_.beamColumns);
  const auto lastRow = static_cast<std::uint32_t>((maps_.beamRows - 1) * maps_.beamColumns);
  std::copy(next_, next_ + count_, element_);
  if (!started_) fetchFirst();
  started_ = true;
  if (--rowsLeft_ == 0) return;
  for (std::size_t p = 0; p < count_; ++p)
    next_[p] = element_[p] < lastRow ? element_[p] + columns : element_[p] - lastRow;
}

void BeamPlacement::fetchFirst() const {
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps_.terms - 1; ++m)
      for (std::ptrdiff_t i = 0; i <= distance_; i += kFloatsPerLine)
        hwy::Prefetch(maps_.beams[m] + element_[p] + i);
}

}  // namespace lumo
