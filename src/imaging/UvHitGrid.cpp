// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvHitGrid.h"

#include <algorithm>

namespace lumo {

UvHitGrid::UvHitGrid(const UvFrame& frame) : frame_(frame) {
  frame_.width = std::clamp(frame.width, 1, kMostPixels);
  frame_.height = std::clamp(frame.height, 1, kMostPixels);
  frame_.pixelsPerUnit = std::max(frame.pixelsPerUnit, 1);
  columnsPerU_ = frame_.width / (frame_.visible.uMax - frame_.visible.uMin);
  rowsPerV_ = frame_.height / (frame_.visible.vMax - frame_.visible.vMin);
  hits_.resize(static_cast<std::size_t>(frame_.width) * static_cast<std::size_t>(frame_.height));
}

void UvHitGrid::hit(double u, double v) {
  const UvRange& visible = frame_.visible;
  if (!(visible.uMin <= u && u <= visible.uMax && visible.vMin <= v && v <= visible.vMax)) return;
  const double x = (frame_.uDirection < 0 ? visible.uMax - u : u - visible.uMin) * columnsPerU_;
  const double y = (frame_.vDirection < 0 ? v - visible.vMin : visible.vMax - v) * rowsPerV_;
  const auto column = std::min(static_cast<std::size_t>(x), static_cast<std::size_t>(frame_.width) - 1);
  const auto row = std::min(static_cast<std::size_t>(y), static_cast<std::size_t>(frame_.height) - 1);
  std::uint32_t& count = hits_[row * static_cast<std::size_t>(frame_.width) + column];
  if (count < UINT32_MAX) ++count;
  ++crosses_;
}

void UvHitGrid::add(const UvPoint& point) {
  hit(point.u, point.v);
  hit(-point.u, -point.v);
}

std::uint32_t UvHitGrid::largest() const {
  return *std::max_element(hits_.begin(), hits_.end());
}

int UvHitGrid::markSize() const {
  const int unit = frame_.pixelsPerUnit;
  const int columns = (frame_.width + unit - 1) / unit;
  const int rows = (frame_.height + unit - 1) / unit;
  std::vector<std::uint8_t> marked(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
  for (int row = 0; row < frame_.height; ++row) {
    std::uint8_t* const line =
        marked.data() + static_cast<std::size_t>(row / unit) * static_cast<std::size_t>(columns);
    for (int column = 0; column < frame_.width; ++column)
      if ((*this)(row, column) != 0) line[column / unit] = 1;
  }
  return uvMarkSize(static_cast<std::size_t>(std::count(marked.begin(), marked.end(), 1)), marked.size());
}

int uvMarkSize(std::size_t occupied, std::size_t area) {
  constexpr double kShare = 0.1;
  if (occupied == 0) return kUvCrossSize;
  const double size = kShare * static_cast<double>(area) / (2.0 * static_cast<double>(occupied));
  if (size >= kUvCrossSize) return kUvCrossSize;
  return std::max(static_cast<int>(size), 1);
}

}  // namespace lumo
