// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "clean/CleanObserver.h"
#include "clean/CleanWatcher.h"
#include "core/AMatrix.h"
#include "core/TMinMax.h"

namespace lumo {

/// What the preview of a paused CLEAN shows of term 0: the components so far restored with the restoring
/// beam, and the residual beside them; and how the CLEAN has gone on so far.
struct CleanViewModel {
  /// Axis names of both panels; the axis puts the angle's unit prefix in place of %s.
  static constexpr const char* kNameX = "Right ascent [%sas]";
  static constexpr const char* kNameY = "Declination [%sas]";

  /// Restores the scene's components, see restoreComponents(); the worker must be paused. Costs components x
  /// beam pixels.
  [[nodiscard]] static CleanViewModel prepare(const CleanScene& scene);

  /// Unit, beam and place on the sky of both maps.
  AMapHeader header;
  AMatrix<float> restored;
  /// The first dirty map's extent with the restored map's own values.
  TMinMax restoredRange;
  /// The scene's own map, not a copy: it must stay where it is and at rest while the model is in use.
  const AMatrix<float>* residual = nullptr;
  /// The first dirty map's ranges as they stand: on its value range the decline of the residual shows.
  TMinMax residualRange;
  /// The lines of the CLEAN's record, in their order; prepare() leaves them empty.
  std::vector<CleanProgress> record;
};

/// `range` with the value range of the map's pixels: the minimum takes every value smaller than itself, from
/// 1e38 on, the maximum every value that it is not at least as large as, from -1e38 on. So a value that is
/// not a number becomes the maximum until the next value; a map without pixels has an unset value range.
[[nodiscard]] TMinMax withValueRange(TMinMax range, const AMatrix<float>& map);

}  // namespace lumo
