// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ARPTrackerArray.h"

namespace lumo {

void ARPTrackerArray::EndWorking() {
  if (editor_.busy() && !editor_.closePolygon()) editor_.abandon();
}

int ARPTrackerArray::FillMatrixForItem(std::size_t k, ABitMatrix& mask, std::uint32_t rows,
                                       std::uint32_t cols, const TMinMax& range) const {
  if (k >= areas().shapes().size() || mask.rows() != rows || mask.columns() != cols) return 0;
  fillMask(areas().shapes()[k], mask, range);
  return 1;
}

}  // namespace lumo
