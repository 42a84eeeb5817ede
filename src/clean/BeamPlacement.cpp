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
                             std::size_t count, std::size_t group, std::size_t delay)
    : maps_(maps),
      count_(count),
      updates_(updates),
      rowsLeft_(area.rows()),
      width_(static_cast<std::ptrdiff_t>(area.columns())),
      group_(static_cast<std::ptrdiff_t>(group)) {
  const std::size_t width = area.columns();
  for (std::size_t p = 0; p < count; ++p) {
    const auto row = static_cast<std::int64_t>(maps.beamRows / 2) - updates[p].row + area.firstRow;
    const auto column =
        static_cast<std::int64_t>(maps.beamColumns / 2) - updates[p].column + area.firstColumn;
    const std::uint32_t beamColumn = wrapped(column, maps.beamColumns);
    next_[p] = static_cast<std::uint32_t>(wrapped(row, maps.beamRows) * maps.beamColumns + beamColumn);
    straight_[p] = static_cast<std::uint32_t>(std::min(width, maps.beamColumns - beamColumn));
    wraps_ = wraps_ || straight_[p] < width;
  }
  if (count == 0) return;
  const std::size_t groups = std::min(delay / count, width / group);
  if (groups < width / group) turn_ = delay % count;
  // A whole number of groups before the row's end, so that the next row is fetched from its first pixel on.
  if (groups > 0 || width < group) distance_ = static_cast<std::ptrdiff_t>(groups * group + width % group);
  fetchFirst();
}

void BeamPlacement::nextRow() {
  const auto columns = static_cast<std::uint32_t>(maps_.beamColumns);
  const auto lastRow = static_cast<std::uint32_t>((maps_.beamRows - 1) * maps_.beamColumns);
  std::copy(next_, next_ + count_, element_);
  if (--rowsLeft_ != 0)
    for (std::size_t p = 0; p < count_; ++p)
      next_[p] = element_[p] < lastRow ? element_[p] + columns : element_[p] - lastRow;
  placeAhead();
}

void BeamPlacement::placeAhead() {
  const std::size_t same = count_ - turn_;
  const auto place = [&](std::int32_t* ahead, const std::uint32_t* group, const std::uint32_t* nextGroup,
                         std::ptrdiff_t shift) {
    for (std::size_t p = 0; p < same; ++p) ahead[p] = static_cast<std::int32_t>(group[p + turn_]);
    for (std::size_t p = 0; p < turn_; ++p)
      ahead[same + p] = static_cast<std::int32_t>(nextGroup[p]) + static_cast<std::int32_t>(shift);
  };
  const std::ptrdiff_t last = distance_ > 0 ? width_ - group_ : (width_ - 1) / group_ * group_;
  if (distance_ + group_ < width_) place(inRow_, element_, element_, group_);
  if (distance_ < width_) place(atEnd_, element_, next_, -last);
  if (distance_ > 0) place(inNextRow_, next_, next_, group_);
}

void BeamPlacement::fetchFirst() const {
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps_.terms - 1; ++m)
      for (std::ptrdiff_t i = 0; i <= distance_ + group_; i += kFloatsPerLine)
        hwy::Prefetch(maps_.beams[m] + next_[p] + i);
}

void BeamPlacement::fetchNextRowStart() const {
  for (std::size_t p = 0; p < count_; ++p)
    for (std::int32_t m = 0; m < 2 * maps_.terms - 1; ++m) hwy::Prefetch(maps_.beams[m] + next_[p]);
}

}  // namespace lumo
