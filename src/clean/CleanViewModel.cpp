// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanViewModel.h"

#include <cstddef>

#include "clean/Restoration.h"

namespace lumo {

CleanViewModel CleanViewModel::prepare(const CleanScene& scene) {
  CleanViewModel view;
  view.header = scene.header();
  view.restored = restoreComponents(scene.component(), scene.restoringBeam());
  view.restoredRange = withValueRange(scene.range(), view.restored);
  view.residual = &scene.residual();
  view.residualRange = scene.range();
  return view;
}

TMinMax withValueRange(TMinMax range, const AMatrix<float>& map) {
  range.vMin = TMinMax::kUnsetMin;
  range.vMax = TMinMax::kUnsetMax;
  for (std::size_t i = 0; i < map.size(); ++i) {
    const double value = map.data()[i];
    if (value < range.vMin) range.vMin = value;
    if (!(range.vMax >= value)) range.vMax = value;
  }
  return range;
}

}  // namespace lumo
