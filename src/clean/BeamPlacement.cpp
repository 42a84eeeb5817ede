// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamPlacement.h"

#include <hwy/cache_control.h>

#include <algorithm>

#include "clean/PeriodicIndex.h"

namespace lumo {

BeamPlacement::BeamPlacement(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                             std::size_t count, std::size_t group, std::size_t delay)
    : maps_(maps),
      count_(count),
      updates_(updates),
      rows_(area.rows()),
      width_(static_cast<std::ptrdiff_t>(area.columns())),
      group_(static_cast<std::ptrdiff_t>(group)) {
  const std::size_t width = area.columns();
  for (std::size_t p = 0; p < count; ++p) {
    const auto row = static_cast<std::int64_t>(maps.beamRows / 2) - updates[p].row + area.firstRow;
    const auto column =
        static_cast<std::int64_t>(maps.beamColumns / 2) - updates[p].column + area.firstColumn;
    const std::size_t beamRow = periodicIndex(row, maps.beamRows);
    const std::size_t beamColumn = periodicIndex(column, maps.beamColumns);
    element_[p] = static_cast<std::int32_t>(beamRow * maps.beamColumns + beamColumn);
    wraps_ = wraps_ || beamRow + rows_ > maps.beamRows || beamColumn + width > maps.beamColumns;
  }
  if (count == 0) return;
  const std::size_t groups = std::min(delay / count, width / group);
  if (groups < width / group) turn_ = delay % count;
  // A whole number of groups before the row's end, so that the next row is fetched from its first pixel on.
  if (groups > 0 || width < group) distance_ = static_cast<std::ptrdiff_t>(groups * group + width % group);
  placeAhead();
  fetchFirst();
}

BeamPlacement::Parts BeamPlacement::parts(std::size_t step, std::size_t n) const {
  const auto first = static_cast<std::size_t>(element_[step]);
  const std::size_t column = first % maps_.beamColumns;
  const std::size_t row = (first / maps_.beamColumns + n) % maps_.beamRows;
  const auto shift = static_cast<std::ptrdiff_t>(row * maps_.beamColumns + column - first);
  return {{shift, true},
          {shift - static_cast<std::ptrdiff_t>(maps_.beamColumns), true},
          std::min(static_cast<std::size_t>(width_), maps_.beamColumns - column)};
}

void BeamPlacement::placeAhead() {
  const std::size_t same = count_ - turn_;
  const auto place = [&](std::int32_t* ahead, std::ptrdiff_t group, std::ptrdiff_t nextGroup) {
    for (std::size_t p = 0; p < same; ++p) ahead[p] = element_[p + turn_] + static_cast<std::int32_t>(group);
    for (std::size_t p = 0; p < turn_; ++p)
      ahead[same + p] = element_[p] + static_cast<std::int32_t>(nextGroup);
  };
  const auto nextRow = static_cast<std::ptrdiff_t>(maps_.beamColumns);
  const std::ptrdiff_t last = distance_ > 0 ? width_ - group_ : (width_ - 1) / group_ * group_;
  place(inRow_, 0, group_);
  if (distance_ < width_) place(atEnd_, 0, nextRow - last);
  if (distance_ > 0) place(inNextRow_, nextRow, nextRow + group_);
}

void BeamPlacement::fetchFirst() const {
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps_.terms - 1; ++m)
      for (std::ptrdiff_t i = 0; i <= distance_ + group_; i += kFloatsPerLine)
        hwy::Prefetch(maps_.beams[m] + element_[p] + i);
}

void BeamPlacement::fetchNextRowStart(const Row& row) const {
  if (row.last) return;
  const std::ptrdiff_t shift = row.shift + static_cast<std::ptrdiff_t>(maps_.beamColumns);
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps_.terms - 1; ++m)
      hwy::Prefetch(maps_.beams[m] + element_[p] + shift);
}

}  // namespace lumo
