// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvPlaneData.h"

#include <algorithm>

namespace lumo {

UvRange UvRange::mirrored() const {
  const double u = std::max(std::abs(uMin), std::abs(uMax));
  const double v = std::max(std::abs(vMin), std::abs(vMax));
  return {-u, u, -v, v};
}

UvRange UvPlaneData::range() const {
  constexpr double kRoom = 1.05;
  const double largest = std::max(uExtent, vExtent);
  // Before anything is selected the extents are -1e38.
  if (!(largest > 0.0) || !std::isfinite(kRoom * largest)) return {};
  const double half = kRoom * largest;
  return {-half, half, -half, half};
}

bool UvPlaneData::isSelected(std::int32_t file, std::int32_t row) const {
  return file < tables.count() && file < selections.count() && row >= 0 && row < tables[file].GetFreqSels() &&
         selections[file](row) != 0;
}

}  // namespace lumo
